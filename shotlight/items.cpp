#include "shotlight/items.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>

#include "shotlight/errors.h"
#include "shotlight/names.h"
#include "shotlight/query.h"
#include "shotlight/session.h"
#include "shotlight/text.h"
#include "standin/coreservices/metadata/control.h"
#include "standin/system/paths.h"

namespace shotlight {
namespace {

namespace host = standin::host;
namespace fs = std::filesystem;

// While one is alive, a query looks at the files of its scope, and not below them.
class LookAtFilesAlone {
 public:
  LookAtFilesAlone() { standin::setLooksAtScopesAlone(true); }
  ~LookAtFilesAlone() { standin::setLooksAtScopesAlone(false); }
  LookAtFilesAlone(const LookAtFilesAlone&) = delete;
  LookAtFilesAlone& operator=(const LookAtFilesAlone&) = delete;
};

// The real path of the folder with the file's own name, which may be that of a link. Nothing, and errno,
// where no file is there.
std::optional<std::string> realPathOf(const std::string& file) {
  const std::string name = fs::path(file).filename();
  if (name.empty() || name == "." || name == "..") return standin::realPath(file);
  const std::string parent = fs::path(file).parent_path();
  std::optional<std::string> path = standin::realPath(parent.empty() ? "." : parent);
  if (!path) return {};
  *path += (path->ends_with('/') ? "" : "/") + name;
  if (!standin::OpenFile(standin::openLongPath(*path, O_PATH | O_NOFOLLOW))) return {};
  return path;
}

}  // namespace

std::string itemPath(const std::string& file) {
  const std::optional<std::string> path = realPathOf(file);
  if (!path) {
    const bool mayBeThere = errno == EACCES;
    throw FileError(quotedName(file) + ": " + std::strerror(errno) +
                    (mayBeThere ? "; name a file whose folder you may search" : "; name a file that exists"));
  }
  return *path;
}

host::Value itemOf(const std::string& file, Interrupts& interrupts) {
  const std::string path = itemPath(file);
  const host::Value query = newQuery("kMDItemFSName == \"*\"");
  setSearchScope(query, {path}, {});
  const LookAtFilesAlone alone;
  if (!gather(query, 0, interrupts)) return {};
  for (const host::Value& item : host::elements(host::call(query, "Results"))) {
    if (!item.isNil() && pathOf(item) == path) return item;
  }
  checkExceptions();
  throw FileError(quotedName(file) + ": there is no metadata of it; see that it is still there");
}

}  // namespace shotlight
