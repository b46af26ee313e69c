#include "bench/rows.h"

namespace bench {

const std::vector<Row>& rows() {
  static const char* const kAll = "kMDItemFSName == \"*\"";
  static const char* const kTenth = "kMDItemFSName == \"*7.txt\"c";
  static const char* const kPath = "kMDItemPath";
  static const std::vector<Row> kRows = {
      {"name, size, path",
       {"find", kAll},
       "find \"$1\" -mindepth 1 -printf '%f\\t%s\\t%p\\n'",
       "find -printf"},
      {"path", {"find", kAll, "--show", kPath}, "find \"$1\" -mindepth 1", "find"},
      {"count", {"find", kAll, "--count"}, "find \"$1\" -mindepth 1", "find"},
      {"a tenth by name, counted", {"find", kTenth, "--count"}, "find \"$1\" -iname '*7.txt'", "find -iname"},
      {"a tenth by name, path",
       {"find", kTenth, "--show", kPath},
       "find \"$1\" -iname '*7.txt'",
       "find -iname"},
      {"path, sorted by name",
       {"find", kAll, "--show", kPath, "--sort", "kMDItemFSName"},
       "find \"$1\" -mindepth 1 -printf '%f\\t%p\\n' | sort",
       "find | sort"},
  };
  return kRows;
}

Command shotlightIn(const std::string& shotlight, const Row& row, const std::string& folder) {
  Command command = {shotlight};
  command.insert(command.end(), row.shotlight.begin(), row.shotlight.end());
  command.insert(command.end(), {"--in", folder});
  return command;
}

Command otherIn(const Row& row, const std::string& folder) {
  return {"sh", "-c", row.other, "sh", folder};
}

}  // namespace bench
