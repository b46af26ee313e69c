#include "shotlight/items.h"

#include <filesystem>

#include "shotlight/errors.h"
#include "shotlight/query.h"
#include "shotlight/session.h"
#include "shotlight/text.h"

namespace shotlight {
namespace {

namespace host = standin::host;
namespace fs = std::filesystem;

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\' || c == '*' || c == '?') result += '\\';
    result += c;
  }
  return result + '"';
}

}  // namespace

std::string itemPath(const std::string& file) {
  std::error_code error;
  const fs::path name = fs::path(file).filename();
  const bool ownName = !name.empty() && name != "." && name != "..";
  const fs::path parent = fs::path(file).parent_path();
  const fs::path path =
      ownName ? fs::canonical(parent.empty() ? "." : parent, error) / name : fs::canonical(file, error);
  if (file.empty() || (!error && !fs::exists(fs::symlink_status(path, error)) && !error))
    error = std::make_error_code(std::errc::no_such_file_or_directory);
  if (error) throw FileError("'" + file + "': " + error.message() + "; name a file that exists");
  if (!path.has_relative_path())
    throw FileError("'" + file + "': the root has no folder in which to find it");
  if (!utf16(path.string())) throw FileError("'" + file + "': its path is not valid UTF-8; rename it");
  return path.string();
}

host::Value itemOf(const std::string& file, Interrupts& interrupts) {
  const fs::path path = itemPath(file);
  const host::Value query = newQuery("kMDItemFSName == " + quoted(path.filename().string()));
  setSearchScope(query, {path.parent_path().string()}, {});
  if (!gather(query, 0, interrupts)) return {};
  for (const host::Value& item : host::elements(host::call(query, "Results"))) {
    if (!item.isNil() && host::get(item, "Path").text() == path.string()) return item;
  }
  checkExceptions();
  throw FileError("'" + file + "': there is no metadata of it; name a file whose folder may be read");
}

}  // namespace shotlight
