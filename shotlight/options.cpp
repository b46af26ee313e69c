#include "shotlight/options.h"

#include <charconv>
#include <functional>
#include <map>

#include "shotlight/errors.h"

namespace shotlight {

const char helpText[] =
    R"(shotlight: searches files by their metadata, through the plug-in's classes.

usage: shotlight find QUERY [--in FOLDER]... [--show KEY,...] [--limit N]
       shotlight --help

  --in FOLDER     search this folder and all below it; may be given several
                  times (default: the current folder)
  --show KEY,...  the columns: any of kMDItemDisplayName, kMDItemFSName,
                  kMDItemPath, kMDItemFSSize
                  (default: kMDItemDisplayName,kMDItemFSSize,kMDItemPath)
  --limit N       print the first N results only
  --plugin FILE   load this plug-in, a Mach-O dylib or an ELF library
                  (default: the dylib that was built with this program)
  --              what follows is no option, whatever it starts with
  --help          print this text

An option's value may also be joined to it: --limit=10.

A query compares metadata attributes: KEY == "text", KEY > number, joined by
&&, || and parentheses. In text, * stands for any characters and ? for one; the
letters c, d and w after it ignore case, ignore accents and match whole words.

examples:
  shotlight find 'kMDItemFSName == "*.txt"c'
  shotlight find 'kMDItemFSSize > 1000000' --in ~/Documents --in ~/Downloads
  shotlight find 'kMDItemDisplayName == "cafe*"cd' --show kMDItemPath
  shotlight find 'InRange(kMDItemFSSize, 1, 100) && kMDItemFSInvisible == false'

Results go to standard output: an aligned table on a terminal, otherwise one
line each with tabs between the columns. In both, tabs, newlines and other
control characters of a name are printed as \t, \n, \x1B or \u0085, and a
backslash as \\. Counts, times and errors go to standard error. The exit status
is 0 when there are results, 1 when there are none, and 2 after an error.
)";

namespace {

std::vector<std::string> splitAtCommas(const std::string& text) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == ',') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

int32_t parseLimit(const std::string& text) {
  int32_t limit = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), limit);
  if (error != std::errc() || end != text.data() + text.size() || limit < 1) {
    throw UsageError("--limit '" + text + "': a whole number from 1 to 2147483647 is needed");
  }
  return limit;
}

void addKeys(FindOptions& options, const std::string& text) {
  for (const std::string& key : splitAtCommas(text)) {
    if (key.empty()) throw UsageError("--show '" + text + "': a key is empty; write --show KEY,KEY");
    options.keys.push_back(key);
  }
}

const std::string& nonEmpty(const std::string& option, const std::string& value) {
  if (value.empty()) throw UsageError(option + " '': the name is empty; see shotlight --help");
  return value;
}

using Setter = std::function<void(FindOptions&, const std::string&)>;

const std::map<std::string, Setter>& setters() {
  static const std::map<std::string, Setter> table = {
      {"--in", [](FindOptions& options,
                  const std::string& value) { options.folders.push_back(nonEmpty("--in", value)); }},
      {"--show", addKeys},
      {"--limit", [](FindOptions& options, const std::string& value) { options.limit = parseLimit(value); }},
      {"--plugin",
       [](FindOptions& options, const std::string& value) { options.plugin = nonEmpty("--plugin", value); }},
  };
  return table;
}

// Takes the option at `at` with its value, which is joined to it by "=" or is the next argument. `at` is then
// the last argument taken.
void takeOption(FindOptions& options, const std::vector<std::string>& arguments, size_t& at) {
  const std::string& argument = arguments[at];
  const size_t equals = argument.find('=');
  const std::string name = argument.substr(0, equals);
  const auto setter = setters().find(name);
  if (setter == setters().end()) throw UsageError("unknown option '" + name + "'; see shotlight --help");
  if (equals != std::string::npos) {
    setter->second(options, argument.substr(equals + 1));
  } else if (++at < arguments.size()) {
    setter->second(options, arguments[at]);
  } else {
    throw UsageError(name + " needs a value; see shotlight --help");
  }
}

const char kExample[] = "such as 'kMDItemFSName == \"*.txt\"'";

void takeQuery(FindOptions& options, bool& given, const std::string& query) {
  if (given) {
    throw UsageError("'" + query + "' is one argument too many; put the whole query in one pair of quotes");
  }
  if (query.find_first_not_of(" \t\n") == std::string::npos) {
    throw UsageError(std::string("the query is empty; write one, ") + kExample);
  }
  options.query = query;
  given = true;
}

FindOptions parseFind(const std::vector<std::string>& arguments) {
  FindOptions options;
  bool queryGiven = false;
  bool optionsEnded = false;
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (optionsEnded || !argument.starts_with('-')) {
      takeQuery(options, queryGiven, argument);
    } else if (argument == "--") {
      optionsEnded = true;
    } else if (argument == "--help" || argument == "-h") {
      options.help = true;
      return options;
    } else {
      takeOption(options, arguments, i);
    }
  }
  if (!queryGiven) throw UsageError(std::string("find needs a query, ") + kExample);
  return options;
}

}  // namespace

FindOptions parseCommandLine(const std::vector<std::string>& arguments) {
  if (arguments.empty()) throw UsageError("a command is missing; see shotlight --help");
  const std::string& command = arguments.front();
  if (command == "--help" || command == "-h" || command == "help") {
    FindOptions options;
    options.help = true;
    return options;
  }
  if (command != "find") throw UsageError("unknown command '" + command + "'; see shotlight --help");
  return parseFind({arguments.begin() + 1, arguments.end()});
}

}  // namespace shotlight
