// Searching for files.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <functional>

#include "shotlight/commands.h"
#include "shotlight/errors.h"
#include "shotlight/find_options.h"
#include "shotlight/interrupts.h"
#include "shotlight/keys.h"
#include "shotlight/live.h"
#include "shotlight/output.h"
#include "shotlight/progress.h"
#include "shotlight/query.h"
#include "shotlight/session.h"
#include "shotlight/store_options.h"
#include "shotlight/table.h"
#include "shotlight/values.h"
#include "standin/coreservices/metadata/control.h"

namespace shotlight {
namespace {

namespace host = standin::host;
using Rows = std::vector<std::vector<std::string>>;

const std::vector<std::string> kDefaultKeys = {"kMDItemDisplayName", "kMDItemFSSize", "kMDItemPath"};

struct Interrupted {};

std::string titleOf(const std::string& key) {
  static constexpr std::pair<const char*, const char*> short_[] = {
      {"kMDItemDisplayName", "Name"}, {"kMDItemFSName", "File"}, {"kMDItemFSSize", "Size"}};
  for (const auto& [each, title] : short_) {
    if (key == each) return title;
  }
  const std::string prefix = "kMDItem";
  return key.starts_with(prefix) ? key.substr(prefix.size()) : key;
}

std::string countText(int64_t count) {
  return std::to_string(count) + (count == 1 ? " result" : " results");
}

// One run of the command, between the loading of the plug-in and its end.
class Find {
 public:
  Find(const FindOptions& options, const std::vector<std::string>& folders)
      : options_(options), query_(newQuery(options)) {
    setSearchScope(query_, folders, options.scopes);
  }

  // Answers the exit status.
  int run() {
    if (!gather(query_, options_.live ? flag("kMDQueryWantsUpdates") : 0, interrupts_)) throw Interrupted();
    if (options_.live) return runLive();
    if (options_.count) return runCount();
    return options_.valuesOf.empty() ? runRows() : runValues();
  }

  // Answers the exit status.
  int endInterrupted() {
    interrupts_.tell();
    return kInterrupted + interrupts_.signal();
  }

 private:
  int64_t count() const { return host::call(query_, "ResultCount").integer(); }
  int status() const { return count() > 0 ? kFound : kNothing; }

  int runLive() {
    follow(query_, options_.seconds, interrupts_);
    if (interrupts_.signal() == SIGPIPE) throw Interrupted();  // the others are how people end it
    summarise(countText(count()), "after");
    interrupts_.setStatus(status());
    return status();
  }

  int runCount() {
    print(std::to_string(count()) + '\n');
    finishOutput();
    summarise(countText(count()), "in");
    return status();
  }

  int runValues() {
    Rows rows;
    for (const host::Value& value :
         host::elements(host::call(query_, "ValuesOfAttribute", options_.valuesOf))) {
      if (interrupts_.signal() != 0) throw Interrupted();
      const host::Value having =
          host::call(query_, "CountOfResultsWithAttributeValue", options_.valuesOf, value);
      rows.push_back({plainText(having), joinedText(value)});
    }
    checkExceptions();
    std::sort(rows.begin(), rows.end(), [](const auto& left, const auto& right) {
      const auto leftCount = std::stoul(left[0]), rightCount = std::stoul(right[0]);
      return leftCount != rightCount ? leftCount > rightCount : left[1] < right[1];
    });
    const size_t values = rows.size();
    printRows({{"Results", true}, {titleOf(options_.valuesOf)}}, std::move(rows));
    summarise(std::to_string(values) + (values == 1 ? " value" : " values") + " in " + countText(count()),
              "in");
    return status();
  }

  int runRows() {
    const auto& keys = options_.keys.empty() ? kDefaultKeys : options_.keys;
    const size_t shown = isatty(STDOUT_FILENO) ? printAsTable(keys) : printAsLines(keys);
    const int64_t all = count();
    summarise((static_cast<int64_t>(shown) < all ? "the first " + std::to_string(shown) + " of " : "") +
                  countText(all),
              "in");
    return status();
  }

  // These two answer how many results were printed. A program that reads along gets each at once; the columns
  // of a table are as wide as the widest text in them. One in which only numbers stand is marked as one.
  size_t printAsLines(const std::vector<std::string>& keys) {
    std::vector<std::string> row(keys.size());
    const size_t printed = readResults(keys, [&](const std::vector<host::Value>& values) {
      std::transform(values.begin(), values.end(), row.begin(), joinedText);
      printRow(row);
    });
    finishOutput();
    return printed;
  }

  size_t printAsTable(const std::vector<std::string>& keys) {
    std::vector<Column> columns;
    for (const std::string& key : keys) columns.push_back({titleOf(key)});
    std::vector<bool> hasOther(keys.size());
    Rows rows;
    const size_t printed = readResults(keys, [&](const std::vector<host::Value>& values) {
      auto& row = rows.emplace_back();
      for (size_t i = 0; i < keys.size(); ++i) {
        const Form form = formOf(values[i]);
        if (form == Form::number) columns[i].number = true;
        if (form != Form::number && form != Form::nothing) hasOther[i] = true;
        row.push_back(joinedText(values[i]));
      }
    });
    for (size_t i = 0; i < keys.size(); ++i) columns[i].number = columns[i].number && !hasOther[i];
    printRows(columns, std::move(rows));
    return printed;
  }

  // Hands over the values of each result, and answers how many results there were.
  size_t readResults(const std::vector<std::string>& keys,
                     const std::function<void(const std::vector<host::Value>&)>& take) {
    const host::Value items =
        options_.limit > 0 ? host::call(query_, "Results", options_.limit) : host::call(query_, "Results");
    checkExceptions();
    const std::vector<host::Value> names(keys.begin(), keys.end());  // made once, not for each result
    std::vector<host::Value> values(keys.size());
    size_t read = 0;
    Progress progress;
    for (const host::Value& item : host::elements(items)) {
      if (interrupts_.signal() != 0) throw Interrupted();
      if (item.isNil()) continue;
      std::transform(names.begin(), names.end(), values.begin(),
                     [&](const host::Value& name) { return host::call(item, "GetAttribute", name); });
      checkExceptions();
      take(values);
      ++read;
      if (!isReadAlong_) progress.show(read, "results read");
    }
    return read;
  }

  static void printRows(const std::vector<Column>& columns, Rows rows) {
    if (!rows.empty()) printTable(columns, std::move(rows), isatty(STDOUT_FILENO));
    finishOutput();
  }

  void summarise(const std::string& what, const char* word) const {
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start_;
    std::fprintf(stderr, "%s %s %.3f s\n", what.c_str(), word, time.count());
    if (const auto unread = standin::lastSearch().unreadableFolders; unread > 0)
      std::fprintf(stderr, "%zu %s could not be read\n", unread, unread == 1 ? "folder" : "folders");
  }

  const FindOptions& options_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  // What is read through a pipe may be on the terminal already, where a line of progress would break into it.
  const bool isReadAlong_ = outputIsPipe();
  Interrupts interrupts_;
  const host::Value query_;
};

void checkAllKeys(const FindOptions& options) {
  checkKeys("--show", options.keys);
  for (const SortKey& each : options.sorting) checkKeys("--sort", {each.key});
  if (!options.valuesOf.empty()) checkKeys("--values", {options.valuesOf});
}

}  // namespace

int find(const Arguments& arguments) {
  const FindOptions options = parseFind(arguments);
  const bool anywhere = options.folders.empty() && options.scopes.empty();
  const auto folders = realFolders(anywhere ? Arguments{"."} : options.folders);
  useStore(!options.noStore);
  Session session(options.plugin);
  checkAllKeys(options);
  int status = kError;
  {
    Find command(options, folders);
    try {
      status = command.run();
    } catch (const Interrupted&) {
      status = command.endInterrupted();
    }
  }
  session.close();
  return status;
}

}  // namespace shotlight
