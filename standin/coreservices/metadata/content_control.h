// What a host program sets and asks about the store of what is in files, beside the public functions.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "standin/gate/gate.h"

namespace standin {

struct ContentOptions {
  std::string folder;  // of the store; empty: what is read is kept in memory, for this process
  // That a reader is missing, or what is read can't be kept: each once. (Which files can't be read is told by
  // takeUnseen().) Not called from another thread.
  std::function<void(const std::string& message)> complain;
};

// To be said before anything is asked of a file; later it changes nothing. Unless it is said, nothing is kept
// on disk, and complaints go to standard error.
STANDIN_API void setContentOptions(ContentOptions options);

struct ContentStoreReport {
  std::string path;               // of the database
  bool exists = false;            // the rest is 0 otherwise
  uint64_t bytes = 0, limit = 0;  // that it takes on disk, and may take
  uint64_t files = 0;             // that something is known of
  uint64_t reads = 0, hits = 0;   // of files, and what needed none, since it was made
};

// About the store in a folder. They throw std::runtime_error, with a text for people, where the store can't
// be opened, read or taken away.
STANDIN_API ContentStoreReport contentStoreIn(const std::string& folder);
// What is wrong with it, entry by entry: empty when all is well, also where there is none.
STANDIN_API std::vector<std::string> checkContentStore(const std::string& folder);
STANDIN_API void clearContentStore(const std::string& folder);

}  // namespace standin
