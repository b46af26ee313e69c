// metadata/: the public functions of queries, items and the schema, with a query's scope, run, results and
// value lists. It may include every other room but filemanager/ and media/, the gate, Core Foundation's
// public headers and CFRuntime.h, and standin/system; nothing outside includes more of it than this header,
// content_control.h, unseen.h and planned_answers.h.
//
// Here: what a host program or a test sets and asks about the metadata stand-in, beside its public functions.
// The clock that batches of results are timed by is that of the run loops: standin/system/clock.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standin/coreservices/disk/walk_limits.h"
#include "standin/gate/gate.h"

namespace standin {

// The folders that count as indexed: where a query looks that has no scope. At first everything, but for the
// contents of /proc, /sys and /dev. Folders that lie in others are looked through once.
STANDIN_API void setIndexedFolders(std::vector<std::string> folders,
                                   std::vector<std::string> excluded = {"/proc", "/sys", "/dev"});

// From now on a query looks at the files and folders that its scope names themselves, and at nothing below
// them: what is at a known path is found without a walk. At first, and after false, it looks at what lies
// below the folders. Live updates are always of that.
STANDIN_API void setLooksAtScopesAlone(bool alone);

// What queries leave out that are executed from now on; at first nothing. Folders that a scope names are
// looked in all the same.
STANDIN_API void setWalkLimits(const WalkLimits& limits);

// What the service does where nothing is defined: a result or a value at an index out of range, values of an
// attribute that was named neither for value lists nor, for a value at an index, for sorting, and a maximum
// count that is set after the execution.
enum class Undefined {
  Nothing,  // null, 0, no effect; at first
  Garbage,  // something else, which is safe to use: an item of no file, a text, a number, an effect at once
  End,      // the process ends in the name of the call
};
STANDIN_API void setUndefined(Undefined answer);

struct QueryError {
  size_t position;  // in UTF-16 units from the start of the query string
  std::string reason;
};

// Why MDQueryCreate would answer null; nothing for a query string that it takes.
STANDIN_API std::optional<QueryError> checkQuery(std::u16string_view queryString);

// What is probably a mistake in a query string that is well formed: a comparison with a key that no file has,
// or with a value of another type, so that the query finds less than was meant, or with != or ! everything.
struct QueryDoubt {
  size_t position, length;  // of the comparison in the query string, in UTF-16 units
  std::string key;
  std::string
      reason;  // why the value doesn't suit the key, a clause after it; empty where there is no such key
};
// In the order of the string; none for one that isn't well formed.
STANDIN_API std::vector<QueryDoubt> queryDoubts(std::u16string_view queryString);

// The path of an item, an MDItemRef: absolute, and the very bytes. What the item tells of its path is text,
// in which a byte that is no UTF-8 reads "%FF".
STANDIN_API std::string pathOfItem(const void* item);

// About the last gathering that was finished in this process.
struct SearchStatistics {
  size_t foldersSearched = 0;
  size_t unreadableFolders = 0;  // skipped for want of permission, or for an error of the disk
  size_t missingFolders = 0;     // counted as indexed, but not there
};
STANDIN_API SearchStatistics lastSearch();

// About the gathering that went on last, while it goes on.
struct SearchProgress {
  size_t looked = 0;    // files and folders that were looked at
  size_t waiting = 0;   // of these, for what is in them to be read
  bool walked = false;  // there are no others
};
STANDIN_API SearchProgress currentSearch();

// The last scope that a query was given, as it was given.
struct SearchScope {
  int set = 0;                      // how many times
  std::vector<std::string> places;  // strings, and the texts of URLs, in UTF-8
  std::vector<bool> urls;           // which of them are URLs
  uint32_t options = 0;
};
// What was given since the last call.
STANDIN_API SearchScope takeSearchScope();

// Why live updates are incomplete, for people: of the last query that wanted them, or of any that could no
// longer follow a folder since. Empty when all is well.
STANDIN_API std::string liveUpdateProblem();

// Every query with live updates has to rescan its folders: what it wasn't told yet of the changes of files is
// dropped, as when the system's queue overflows.
STANDIN_API void forceRescan();

}  // namespace standin
