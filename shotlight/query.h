// The query that a command runs.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "shotlight/find_options.h"
#include "shotlight/interrupts.h"
#include "shotlight/progress.h"
#include "standin/host/host.h"

namespace shotlight {

// Queries that can't be understood are CommandErrors that show the place.

standin::host::Value newQuery(const std::string& text);

// With its attributes, its sorting and its parent.
standin::host::Value newQuery(const FindOptions& options);

// Folders are named as on the command line (see realFolders); scopes are constants of the query class.
void setSearchScope(const standin::host::Value& query, const std::vector<std::string>& folders,
                    const std::vector<std::string>& scopes);

// Absolute paths of folders that are there and may be read, in bytes. Throws CommandError for others.
std::vector<std::string> realFolders(const std::vector<std::string>& names);

// Throws CommandError where one of the scopes means the folder that HOME names, and that is none. (A system
// may know another home of the user, or none, and search nowhere.)
void checkScopes(const std::vector<std::string>& scopes);

// Called while results are gathered, when there may be new ones; never from an event. A line of progress may
// be shown.
using WhileGathering = std::function<void(Progress&)>;

// Runs the query on the run loop until the first gathering is complete. False when it was interrupted; the
// query is then stopped. `flags` as of Execute. What `more` throws comes out of it.
bool gather(const standin::host::Value& query, int32_t flags, Interrupts& interrupts,
            const WhileGathering& more = {});

int32_t flag(const char* constant);  // of the query class

}  // namespace shotlight
