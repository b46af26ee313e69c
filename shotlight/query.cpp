#include "shotlight/query.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "shotlight/doubts.h"
#include "shotlight/errors.h"
#include "shotlight/progress.h"
#include "shotlight/session.h"
#include "shotlight/text.h"
#include "standin/coreservices/metadata/control.h"
#include "standin/gate/shown_text.h"
#include "standin/system/paths.h"

namespace shotlight {
namespace {

namespace host = standin::host;
using standin::shownText;

const char kClass[] = "MDQueryZNK";
const double kProgressInterval = 0.1;  // seconds

// The query with a mark under the place where it stops making sense.
[[noreturn]] void reportBadQuery(const std::string& query) {
  const auto units = utf16(query);
  const auto error = standin::checkQuery(*units);
  if (!error) throw CommandError("the plug-in made no query of '" + query + "'; try another --plugin");
  const std::string indent = "  ";
  const std::string before = utf8(std::u16string_view(*units).substr(0, error->position));
  throw CommandError(
      "the query can't be understood: " + error->reason,
      {indent + shownText(query), indent + std::string(displayWidth(shownText(before)), ' ') + '^',
       "see shotlight find --help for the form of a query"});
}

host::Value made(const host::Value& query, const std::string& text) {
  checkExceptions();
  if (host::get(query, "Handle").integer() == 0) reportBadQuery(text);
  warnOfDoubts(text);
  return query;
}

void reverse(const host::Value& query, const std::string& key) {
  const int32_t reversed = flag("kMDQueryReverseSortOrderFlag");
  if (!host::call(query, "SetSortOptionFlagsForAttribute", key, static_cast<uint32_t>(reversed)).boolean())
    throw CommandError("--sort '" + key + ":desc': the system can't reverse the order; leave out :desc");
}

// Stops the run of the run loop when the query raises the event.
class StopAtEvent {
 public:
  StopAtEvent(const host::Value& query, const char* event) : query_(query), event_(event) {
    host::setEventHandler(query, event,
                          [](const std::vector<host::Value>&) { CFRunLoopStop(CFRunLoopGetCurrent()); });
  }
  ~StopAtEvent() { host::setEventHandler(query_, event_, nullptr); }
  StopAtEvent(const StopAtEvent&) = delete;
  StopAtEvent& operator=(const StopAtEvent&) = delete;

 private:
  const host::Value& query_;
  const char* const event_;
};

std::string realFolder(const std::string& name) {
  const std::string what = "--in " + quotedName(name) + ": ";
  const std::optional<std::string> path = standin::realPath(name);
  if (!path)
    throw CommandError(
        what + std::strerror(errno) +
        (errno == ENOENT ? "; name a folder that exists" : "; name a folder that can be read"));
  if (!standin::isFolder(*path)) throw CommandError(what + "not a folder; name the folder it is in");
  const standin::OpenFile folder(standin::openLongPath(*path, O_RDONLY | O_DIRECTORY));
  if (!folder || faccessat(folder.get(), ".", X_OK, 0) != 0)
    throw CommandError(what + std::strerror(errno) + "; name a folder that you may read");
  return *path;
}

}  // namespace

int32_t flag(const char* constant) {
  return static_cast<int32_t>(host::constant(kClass, constant).integer());
}

host::Value newQuery(const std::string& text) {
  return made(host::construct(kClass, text), text);
}

host::Value newQuery(const FindOptions& options) {
  std::vector<std::string> sortingKeys;
  for (const SortKey& each : options.sorting) sortingKeys.push_back(each.key);
  const host::Value sorting = host::stringArray(sortingKeys);
  // What is shown of every result may take a reader, and is best read while the results are gathered.
  Arguments valueKeys = options.limit > 0 ? Arguments{} : options.keys;
  if (!options.valuesOf.empty()) valueKeys = {options.valuesOf};
  const host::Value valueList = host::stringArray(valueKeys);
  host::Value query;
  if (options.within.empty()) {
    query = made(host::construct(kClass, options.query, valueList, sorting), options.query);
  } else {
    const host::Value parent = newQuery(options.within);
    query = made(host::construct(kClass, parent, options.query, valueList, sorting), options.query);
  }
  for (const SortKey& each : options.sorting) {
    if (each.descending) reverse(query, each.key);
  }
  return query;
}

void setSearchScope(const host::Value& query, const std::vector<std::string>& folders,
                    const std::vector<std::string>& scopes) {
  std::vector<host::Value> items;
  for (const std::string& folder : folders) items.push_back(host::folderItem(folder));
  std::vector<std::string> options;
  for (const std::string& scope : scopes) options.push_back(host::constant(kClass, scope).text());
  host::call(query, "SetSearchScope", host::objectArray(items), host::stringArray(options));
  checkExceptions();
}

std::vector<std::string> realFolders(const std::vector<std::string>& names) {
  std::vector<std::string> paths;
  for (const std::string& name : names) paths.push_back(realFolder(name));
  return paths;
}

void checkScopes(const std::vector<std::string>& scopes) {
  if (std::find(scopes.begin(), scopes.end(), "kMDQueryScopeHome") == scopes.end()) return;
  const char* const variable = std::getenv("HOME");
  const std::string home = variable ? variable : "";
  const std::string toDo = "; set it to the path of your folder, or name the folder with --in";
  if (home.empty()) throw CommandError("--scope home: HOME is not set" + toDo);
  const std::string what = "--scope home: HOME is '" + home + "', which ";
  if (!home.starts_with('/')) throw CommandError(what + "does not start with /" + toDo);
  if (!standin::isFolder(home)) throw CommandError(what + "is no folder" + toDo);
}

bool gather(const host::Value& query, int32_t flags, Interrupts& interrupts, const WhileGathering& more) {
  const StopAtEvent end(query, "Finish");
  std::optional<StopAtEvent> batch;
  if (more) batch.emplace(query, "Progress");
  if (!host::call(query, "Execute", flags).boolean())
    throw CommandError("the plug-in could not execute the query; try another --plugin");
  Progress progress;
  while (!host::call(query, "IsGatheringComplete").boolean()) {
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, kProgressInterval, false);
    checkExceptions();
    if (interrupts.signal() != 0) {
      host::call(query, "Stop");
      return false;
    }
    if (more) more(progress);
    const standin::SearchProgress search = standin::currentSearch();
    progress.showLooked(search.looked, search.waiting, search.walked);
  }
  checkExceptions();
  return true;
}

}  // namespace shotlight
