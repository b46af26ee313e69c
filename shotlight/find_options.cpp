#include "shotlight/find_options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "shotlight/doubts.h"
#include "shotlight/errors.h"
#include "shotlight/text.h"
#include "shotlight/words.h"

namespace shotlight {
namespace {

const char kExample[] = "such as 'kMDItemFSName == \"*.txt\"'";
const char kExampleOrWords[] = "such as 'kMDItemFSName == \"*.txt\"', or words, such as harbour";
const char kDescending[] = ":desc";

template <class Number>
bool parseNumber(const std::string& text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

int32_t parseCount(const std::string& option, const std::string& text) {
  int32_t count = 0;
  if (!parseNumber(text, count) || count < 1)
    throw UsageError(option + " '" + text + "': a whole number from 1 to 2147483647 is needed");
  return count;
}

double parseSeconds(const std::string& text) {
  double seconds = 0;
  if (!parseNumber(text, seconds) || !std::isfinite(seconds) || seconds < 0)
    throw UsageError("--for '" + text + "': a number of seconds is needed, such as 10 or 0.5");
  return seconds;
}

std::vector<SortKey> parseSorting(const std::string& text) {
  std::vector<SortKey> sorting;
  for (std::string key : splitAtCommas(text)) {
    const bool descending = key.ends_with(kDescending);
    if (descending) key.erase(key.size() - (sizeof kDescending - 1));
    if (key.empty()) throw UsageError("--sort '" + text + "': a key is empty; write --sort KEY,KEY:desc");
    sorting.push_back({key, descending});
  }
  return sorting;
}

std::string scopeNamed(const std::string& name) {
  static constexpr std::pair<const char*, const char*> scopes[] = {
      {"home", "kMDQueryScopeHome"},
      {"computer", "kMDQueryScopeComputer"},
      {"network", "kMDQueryScopeNetwork"},
      {"all", "kMDQueryScopeAllIndexed"},
      {"computer-indexed", "kMDQueryScopeComputerIndexed"},
      {"network-indexed", "kMDQueryScopeNetworkIndexed"},
  };
  std::string known;
  for (const auto& [scope, constant] : scopes) {
    if (name == scope) return constant;
    known += (known.empty() ? "" : ", ") + std::string(scope);
  }
  throw UsageError("--scope '" + name + "': no such scope; there are " + known);
}

template <class Element>
void append(std::vector<Element>& all, const std::vector<Element>& more) {
  all.insert(all.end(), more.begin(), more.end());
}

void setLayout(FindOptions& options, Layout layout) {
  if (options.layout != Layout::rows && options.layout != layout)
    throw UsageError("--json, --jsonl and -0 don't go together; leave one out");
  options.layout = layout;
}

std::string queryOf(const std::string& text) {
  checkBytes(text);
  return isComparison(text) ? text : queryForWords(text);
}

// Words may be several arguments; a query that a shell has taken apart has lost its quotes.
std::string queryOf(const Arguments& operands) {
  if (operands.empty()) throw UsageError(std::string("find needs a query, ") + kExampleOrWords);
  if (operands.size() > 1 && std::any_of(operands.begin(), operands.end(), isComparison))
    throw UsageError("'" + operands[1] +
                     "' is one argument too many; put the whole query in one pair of quotes");
  std::string text;
  for (const std::string& operand : operands) text += (text.empty() ? "" : " ") + operand;
  std::string query = queryOf(text);
  if (query.empty()) throw UsageError(std::string("the query is empty; write one, ") + kExampleOrWords);
  return query;
}

// Paths of what is found have no part that is "..", and each has one that names it.
bool mayMatch(const std::string& glob) {
  bool names = false;
  for (size_t start = 0; start < glob.size();) {
    const size_t end = std::min(glob.find('/', start), glob.size());
    const std::string part = glob.substr(start, end - start);
    if (part == "..") return false;
    names = names || (!part.empty() && part != ".");
    start = end + 1;
  }
  return names;
}

std::vector<Option> optionsInto(FindOptions& options) {
  return {
      {"--in",
       [&options](const std::string& value) {
         if (value.empty()) throw UsageError("--in '': the name is empty; give one");
         options.folders.push_back(value);
       }},
      {"--scope",
       [&options](const std::string& value) {
         for (const std::string& name : splitAtCommas(value)) options.scopes.push_back(scopeNamed(name));
       }},
      {"--exclude",
       [&options](const std::string& value) {
         if (value.empty()) throw UsageError("--exclude '': the pattern is empty; write one, such as '*.o'");
         if (!mayMatch(value))
           throw UsageError("--exclude '" + value +
                            "': nothing has such a path; write one, such as 'build/*.o'");
         knowCharacters();  // of which `?` stands for one
         options.limits.excluded.push_back(value);
       }},
      {"--depth",
       [&options](const std::string& value) {
         options.limits.depth = static_cast<size_t>(parseCount("--depth", value));
       }},
      switchOption("--one-file-system", options.limits.oneFileSystem),
      {"--no-hidden", [&options](const std::string&) { options.limits.hidden = false; }, false},
      {"--within",
       [&options](const std::string& value) {
         options.within = queryOf(value);
         if (options.within.empty())
           throw UsageError(std::string("--within: the query is empty; write one, ") + kExample);
       }},
      keysOption("--show", options.keys),
      {"--sort", [&options](const std::string& value) { append(options.sorting, parseSorting(value)); }},
      {"--limit", [&options](const std::string& value) { options.limit = parseCount("--limit", value); }},
      {"--json", [&options](const std::string&) { setLayout(options, Layout::jsonArray); }, false},
      {"--jsonl", [&options](const std::string&) { setLayout(options, Layout::jsonLines); }, false},
      {"-0", [&options](const std::string&) { setLayout(options, Layout::zeroEnded); }, false},
      {"--print0", [&options](const std::string&) { setLayout(options, Layout::zeroEnded); }, false},
      {"--color", [&options](const std::string& value) { options.color = colorUseNamed(value); }},
      switchOption("--count", options.count),
      nameOption("--values", options.valuesOf),
      switchOption("--live", options.live),
      switchOption("--explain", options.explain),
      {"--for", [&options](const std::string& value) { options.seconds = parseSeconds(value); }},
      switchOption("--no-store", options.noStore),
      nameOption("--plugin", options.plugin),
  };
}

void refuseTogether(const std::vector<std::pair<const char*, bool>>& options) {
  const char* first = nullptr;
  for (const auto& [name, given] : options) {
    if (!given) continue;
    if (first) throw UsageError(std::string(first) + " and " + name + " don't go together; leave one out");
    first = name;
  }
}

void checkCombination(const FindOptions& options) {
  const std::pair<const char*, bool> printsRows[] = {{"--show", !options.keys.empty()},
                                                     {"--sort", !options.sorting.empty()},
                                                     {"--limit", options.limit > 0},
                                                     {"--json", options.layout == Layout::jsonArray},
                                                     {"--jsonl", options.layout == Layout::jsonLines},
                                                     {"-0", options.layout == Layout::zeroEnded}};
  for (const auto& row : printsRows)
    refuseTogether(
        {{"--count", options.count}, {"--values", !options.valuesOf.empty()}, {"--live", options.live}, row});
  if (options.seconds && !options.live) throw UsageError("--for needs --live; add it");
}

}  // namespace

FindOptions parseFind(const Arguments& arguments) {
  FindOptions options;
  options.query = queryOf(takeOptions("find", arguments, optionsInto(options)));
  checkCombination(options);
  return options;
}

}  // namespace shotlight
