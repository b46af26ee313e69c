#include "shotlight/find.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>

#include "shotlight/errors.h"
#include "shotlight/output.h"
#include "shotlight/session.h"
#include "shotlight/table.h"
#include "shotlight/text.h"
#include "standin/coreservices/control.h"

namespace shotlight {
namespace {

namespace host = standin::host;
namespace fs = std::filesystem;

// The attributes that an item offers as properties of its class.
struct Attribute {
  const char* key;
  const char* property;
  const char* title;
  bool number;
};
constexpr Attribute attributes[] = {
    {"kMDItemDisplayName", "DisplayName", "Name", false},
    {"kMDItemFSName", "FSName", "File", false},
    {"kMDItemFSSize", "FSSize", "Size", true},
    {"kMDItemPath", "Path", "Path", false},
};
const std::vector<std::string> defaultKeys = {"kMDItemDisplayName", "kMDItemFSSize", "kMDItemPath"};

const Attribute& attributeOf(const std::string& key) {
  std::string known;
  for (const Attribute& attribute : attributes) {
    if (key == attribute.key) return attribute;
    known += std::string(known.empty() ? "" : ", ") + attribute.key;
  }
  throw UsageError("--show '" + key + "': no such column; there are " + known);
}

std::vector<Attribute> columnsOf(const FindOptions& options) {
  std::vector<Attribute> columns;
  for (const auto& key : options.keys.empty() ? defaultKeys : options.keys)
    columns.push_back(attributeOf(key));
  return columns;
}

std::string folderPath(const std::string& name) {
  const std::string what = "--in '" + name + "': ";
  std::error_code error;
  const fs::path path = fs::canonical(name, error);
  if (error == std::errc::no_such_file_or_directory)
    throw CommandError(what + error.message() + "; name a folder that exists");
  if (error) throw CommandError(what + error.message() + "; name a folder that can be read");
  if (!fs::is_directory(path, error)) throw CommandError(what + "not a folder; name the folder it is in");
  if (access(path.c_str(), R_OK | X_OK) != 0)
    throw CommandError(what + std::strerror(errno) + "; name a folder that you may read");
  return path.string();
}

void setFolders(const std::vector<std::string>& names) {
  std::vector<std::string> paths;
  for (const auto& name : names) paths.push_back(folderPath(name));
  if (paths.empty()) paths.push_back(folderPath("."));
  standin::setIndexedFolders(paths);
}

// The query with a mark under the place where it stops making sense.
[[noreturn]] void reportBadQuery(const std::string& query) {
  const auto units = utf16(query);
  if (!units) throw CommandError("the query is not valid UTF-8; write it in UTF-8");
  const auto error = standin::checkQuery(*units);
  if (!error) throw CommandError("the plug-in made no query of '" + query + "'; try another --plugin");
  const std::string indent = "  ";
  const std::string before = utf8(std::u16string_view(*units).substr(0, error->position));
  throw CommandError("the query can't be understood: " + error->reason + "\n" + indent +
                     escapeControls(query) + "\n" + indent +
                     std::string(displayWidth(escapeControls(before)), ' ') +
                     "^\nsee shotlight --help for the form of a query");
}

host::Value newQuery(const std::string& text) {
  const host::Value query = host::construct("MDQueryZNK", text);
  checkExceptions();
  if (host::get(query, "Handle").integer() == 0) reportBadQuery(text);
  return query;
}

std::string textOf(const host::Value& value) {
  return value.kind() == host::Kind::int64 ? std::to_string(value.integer()) : value.text();
}

std::vector<std::vector<std::string>> rowsOf(const host::Value& items,
                                             const std::vector<Attribute>& columns) {
  std::vector<std::vector<std::string>> rows;
  for (const host::Value& item : host::elements(items)) {
    if (item.isNil()) continue;
    std::vector<std::string> row;
    for (const Attribute& column : columns) row.push_back(textOf(host::get(item, column.property)));
    rows.push_back(std::move(row));
  }
  checkExceptions();
  return rows;
}

void printSummary(size_t shown, int64_t all, std::chrono::duration<double> time) {
  const std::string count = std::to_string(all) + (all == 1 ? " result" : " results");
  const std::string part =
      static_cast<int64_t>(shown) < all ? "the first " + std::to_string(shown) + " of " : "";
  std::fprintf(stderr, "%s%s in %.3f s\n", part.c_str(), count.c_str(), time.count());
  if (const auto unread = standin::lastSearch().unreadableFolders; unread > 0) {
    std::fprintf(stderr, "%zu %s could not be read\n", unread, unread == 1 ? "folder" : "folders");
  }
}

}  // namespace

bool find(const FindOptions& options) {
  const auto columns = columnsOf(options);
  setFolders(options.folders);
  const Session session(options.plugin);

  const auto start = std::chrono::steady_clock::now();
  const host::Value query = newQuery(options.query);
  const host::Value executed =
      host::call(query, "Execute", host::constant("MDQueryZNK", "kMDQuerySynchronous"));
  checkExceptions();
  if (!executed.boolean())
    throw CommandError("the plug-in could not execute the query; try another --plugin");
  const int64_t all = host::call(query, "ResultCount").integer();
  const host::Value items =
      options.limit > 0 ? host::call(query, "Results", options.limit) : host::call(query, "Results");
  auto rows = rowsOf(items, columns);
  const size_t shown = rows.size();
  const auto time = std::chrono::steady_clock::now() - start;

  std::vector<Column> titles;
  for (const Attribute& column : columns) titles.push_back({column.title, column.number});
  if (shown > 0) printTable(titles, std::move(rows), isatty(STDOUT_FILENO));
  finishOutput();
  printSummary(shown, all, time);
  return shown > 0;
}

}  // namespace shotlight
