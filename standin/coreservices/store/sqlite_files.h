// The files that SQLite looks at.
#pragma once

namespace standin::metadata {

// From now on SQLite uses files of any date. Its library counts seconds in 32 bits here, and can't open a
// database whose file, or whose folder, is dated before 1901 or after 2038.
void letSQLiteUseFilesOfAnyDate();

}  // namespace standin::metadata
