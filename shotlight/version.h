// Which version of the program this is.
#pragma once

namespace shotlight {

// "1.0.0 (commit 0123456789ab)"; the commit it was built from only where that is known, with ", changed"
// after it where the sources weren't those of the commit.
extern const char programVersion[];

}  // namespace shotlight
