// Searching for files.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>

#include "shotlight/color.h"
#include "shotlight/commands.h"
#include "shotlight/errors.h"
#include "shotlight/find_options.h"
#include "shotlight/incomplete.h"
#include "shotlight/interrupts.h"
#include "shotlight/keys.h"
#include "shotlight/listing.h"
#include "shotlight/live.h"
#include "shotlight/names.h"
#include "shotlight/output.h"
#include "shotlight/progress.h"
#include "shotlight/query.h"
#include "shotlight/session.h"
#include "shotlight/store_options.h"
#include "shotlight/table.h"
#include "shotlight/text.h"
#include "shotlight/values.h"

namespace shotlight {
namespace {

namespace host = standin::host;
using Rows = std::vector<Row>;

const std::vector<std::string> kDefaultKeys = {"kMDItemDisplayName", "kMDItemFSSize", "kMDItemPath"};
const std::vector<std::string> kDefaultKeysInZero = {"kMDItemPath"};

struct Interrupted {};

std::string countText(int64_t count) {
  return std::to_string(count) + (count == 1 ? " result" : " results");
}

// One run of the command, between the loading of the plug-in and its end.
class Find {
 public:
  Find(const FindOptions& options, const std::vector<std::string>& folders)
      : options_(options), query_(newQuery(options)) {
    setSearchScope(query_, folders, options.scopes);
    if (!isSorted() && options.limit > 0 && options.limit < INT32_MAX)
      host::call(query_, "SetMaxCount", options.limit + 1);
    if (usesColor(options.color)) colors_ = FileColors::ofEnvironment();
  }

  // Answers the exit status.
  int run() {
    if (isRows()) return runRows();
    if (!gather(query_, options_.live ? flag("kMDQueryWantsUpdates") : 0, interrupts_)) throw Interrupted();
    if (options_.live) return runLive();
    return options_.count ? runCount() : runValues();
  }

  // Prints what run() would search for, and where. Answers the exit status.
  int explain(const std::vector<std::string>& folders) const {
    const standin::WalkLimits& limits = options_.limits;
    printFact("query", host::call(query_, "QueryString").text());
    if (!options_.within.empty()) printFact("within", options_.within);
    for (const std::string& folder : folders) printFact("in", folder);
    for (const std::string& scope : options_.scopes) printFact("scope", scope);
    for (const std::string& glob : limits.excluded) printFact("exclude", glob);
    if (limits.depth != standin::WalkLimits().depth)
      printFact("limit", "depth " + std::to_string(limits.depth));
    if (limits.oneFileSystem) printFact("limit", "one file system");
    if (!limits.hidden) printFact("limit", "no hidden files");
    checkExceptions();
    finishOutput();
    return kFound;
  }

  // Answers the exit status.
  int endInterrupted() {
    interrupts_.tell();
    return kInterrupted + interrupts_.signal();
  }

 private:
  int64_t count() const { return host::call(query_, "ResultCount").integer(); }
  bool isRows() const { return !options_.live && !options_.count && options_.valuesOf.empty(); }
  int status() const { return count() > 0 ? kFound : kNothing; }

  int runLive() {
    follow(query_, options_.seconds, interrupts_, colors_ ? &*colors_ : nullptr);
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
    Rows rows = countValues();
    if (isFileName(options_.valuesOf) && std::any_of(rows.begin(), rows.end(), hasPercent))
      rows = countNames();
    std::sort(rows.begin(), rows.end(), [](const auto& left, const auto& right) {
      const auto leftCount = std::stoul(left[0].text), rightCount = std::stoul(right[0].text);
      return leftCount != rightCount ? leftCount > rightCount : left[1].text < right[1].text;
    });
    const size_t values = rows.size();
    printRows({{"Results", true}, {titleOf(options_.valuesOf)}}, std::move(rows));
    summarise(std::to_string(values) + (values == 1 ? " value" : " values") + " in " + countText(count()),
              "in");
    return status();
  }

  Rows countValues() {
    Rows rows;
    for (const host::Value& value :
         host::elements(host::call(query_, "ValuesOfAttribute", options_.valuesOf))) {
      if (interrupts_.signal() != 0) throw Interrupted();
      const host::Value having =
          host::call(query_, "CountOfResultsWithAttributeValue", options_.valuesOf, value);
      rows.push_back({plainText(having), joinedText(value)});
    }
    checkExceptions();
    return rows;
  }

  static bool hasPercent(const Row& row) { return row[1].text.find('%') != std::string::npos; }

  // Names that are told alike may be different ones.
  Rows countNames() {
    std::map<std::string, size_t> counts;
    for (const host::Value& item : host::elements(host::call(query_, "Results"))) {
      if (interrupts_.signal() != 0) throw Interrupted();
      if (item.isNil()) continue;
      const host::Value told = host::call(item, "GetAttribute", options_.valuesOf);
      ++counts[joinedText(exactName(item, options_.valuesOf, told))];
    }
    checkExceptions();
    Rows rows;
    for (const auto& [name, count] : counts) rows.push_back({std::to_string(count), name});
    return rows;
  }

  int runRows() {
    const auto& defaults = options_.layout == Layout::zeroEnded ? kDefaultKeysInZero : kDefaultKeys;
    const auto& keys = options_.keys.empty() ? defaults : options_.keys;
    const auto listing = newListing(options_.layout, keys);
    try {
      list(keys, *listing);
    } catch (const Interrupted&) {
      listing->finish();
      throw;
    }
    listing->finish();
    summarise(countOfListed(), "in");
    return status();
  }

  // Results that are in no order are listed while others are searched for.
  void list(const std::vector<std::string>& keys, Listing& listing) {
    const auto listNew = [&](Progress& progress) { listResults(keys, listing, progress); };
    if (!gather(query_, 0, interrupts_, isSorted() ? WhileGathering() : listNew)) throw Interrupted();
    Progress progress;
    listNew(progress);
  }

  // Those that there are and that haven't been listed.
  void listResults(const std::vector<std::string>& keys, Listing& listing, Progress& progress) {
    const int64_t end = options_.limit > 0 ? std::min<int64_t>(options_.limit, count()) : count();
    if (listed_ == end) return listing.pause();
    progress.clear();
    if (isReadAlong_) progress.mute();
    const std::vector<host::Value> names(keys.begin(), keys.end());  // made once, not for each result
    std::vector<host::Value> values(keys.size());
    std::vector<bool> isName(keys.size());
    std::transform(keys.begin(), keys.end(), isName.begin(), isFileName);
    for (; listed_ < end; ++listed_) {
      if (interrupts_.signal() != 0) throw Interrupted();
      const host::Value item = host::call(query_, "ResultAtIndex", static_cast<int32_t>(listed_));
      if (item.isNil()) continue;
      std::transform(names.begin(), names.end(), values.begin(),
                     [&](const host::Value& name) { return host::call(item, "GetAttribute", name); });
      checkExceptions();
      for (size_t i = 0; i < keys.size(); ++i) {
        if (isName[i] && mayBeInexact(values[i])) values[i] = exactName(item, keys[i], values[i]);
      }
      listing.add(values, colors_ ? colors_->colorOf(pathOf(item)) : std::string());
      if (isSorted()) progress.show(static_cast<size_t>(listed_), "results read");
    }
    listing.pause();
  }

  // A search without an order ends when it has found one more than it may list.
  std::string countOfListed() const {
    const int64_t all = count();
    if (listed_ == all) return countText(all);
    if (isSorted()) return "the first " + std::to_string(listed_) + " of " + countText(all);
    return countText(listed_) + ", and there are more,";
  }

  bool isSorted() const { return !options_.sorting.empty(); }

  static void printFact(std::string name, const std::string& value) {
    constexpr size_t kWidth = 9;
    name.resize(kWidth, ' ');
    print(name + printable(value) + '\n');
  }

  static void printRows(const std::vector<Column>& columns, Rows rows) {
    if (!rows.empty()) printTable(columns, std::move(rows), isatty(STDOUT_FILENO));
    finishOutput();
  }

  void summarise(const std::string& what, const char* word) const {
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start_;
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.3f s", time.count());
    printNote(what + ' ' + word + ' ' + seconds);
  }

  const FindOptions& options_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  // What is read through a pipe may be on the terminal already, where a line of progress would break into it.
  const bool isReadAlong_ = outputIsPipe();
  Interrupts interrupts_;
  int64_t listed_ = 0;
  const host::Value query_;
  std::optional<FileColors> colors_;
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
  checkScopes(options.scopes);
  useStore(!options.noStore);
  standin::setWalkLimits(options.limits);
  Session session(options.plugin);
  checkAllKeys(options);
  int status = kError;
  {
    Find command(options, folders);
    try {
      status = options.explain ? command.explain(folders) : command.run();
      tellUnseen();
    } catch (const Interrupted&) {
      status = command.endInterrupted();
    }
  }
  session.close();
  return completeStatus(status);
}

}  // namespace shotlight
