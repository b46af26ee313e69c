// What `shotlight find` was asked to do.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "shotlight/arguments.h"
#include "shotlight/color.h"
#include "standin/coreservices/metadata/control.h"

namespace shotlight {

struct SortKey {
  std::string key;
  bool descending = false;
};

enum class Layout { rows, jsonArray, jsonLines, zeroEnded };

struct FindOptions {
  std::string query;                 // made of plain words, if they were given
  std::string within;                // empty: among all files
  std::vector<std::string> folders;  // to look in; empty, with no scopes: the current folder
  std::vector<std::string> scopes;   // constants of the query class
  standin::WalkLimits limits;        // of what is in the folders and scopes
  std::vector<std::string> keys;     // the columns; empty: the default ones
  std::vector<SortKey> sorting;
  Layout layout = Layout::rows;
  ColorUse color = ColorUse::automatic;
  int32_t limit = 0;   // 0: all results
  bool count = false;  // at most one of `count`, `live` and `valuesOf` is asked for
  bool live = false;
  bool explain = false;  // print what would be searched for, and don't
  std::string valuesOf;
  std::optional<double> seconds;  // for how long to be live; otherwise until interrupted
  bool noStore = false;           // keep nothing of what is read in files
  std::string plugin;             // empty: the dylib built with this program
};

// Throws UsageError.
FindOptions parseFind(const Arguments& arguments);

}  // namespace shotlight
