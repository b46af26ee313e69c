// What a host program or a test sets and asks about the metadata stand-in, beside its public functions.
//
// Known difference for now: gathering happens in MDQueryExecute with kMDQuerySynchronous alone. There is no
// run loop yet, so a query that is executed without it answers true and stays incomplete, without results.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standin/gate/gate.h"

namespace standin {

// The folders that count as indexed: where a query looks that has no scope. At first everything, but for the
// contents of /proc, /sys and /dev. Folders that lie in others are looked through once.
STANDIN_API void setIndexedFolders(std::vector<std::string> folders,
                                   std::vector<std::string> excluded = {"/proc", "/sys", "/dev"});

struct QueryError {
  size_t position;  // in UTF-16 units from the start of the query string
  std::string reason;
};

// Why MDQueryCreate would answer null; nothing for a query string that it takes.
STANDIN_API std::optional<QueryError> checkQuery(std::u16string_view queryString);

// About the last synchronous gathering of this process.
struct SearchStatistics {
  size_t foldersSearched = 0;
  size_t unreadableFolders = 0;  // skipped for want of permission, or for an error of the disk
  size_t missingFolders = 0;     // counted as indexed, but not there
};
STANDIN_API SearchStatistics lastSearch();

}  // namespace standin
