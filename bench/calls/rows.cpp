#include "bench/calls/rows.h"

#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "bench/processes.h"

namespace bench::calls {
namespace {

enum class Kind { kMethod, kConversion };

// What the driver is asked to do.
struct Call {
  const char* name;
  Kind kind;
};
constexpr char kEmpty[] = "empty", kStartUp[] = "REALPluginMain";
const Call kCalls[] = {
    {"ResultCount", Kind::kMethod},
    {"ResultAtIndex", Kind::kMethod},
    {"AttributeString", Kind::kMethod},
    {"GetAttribute", Kind::kMethod},
    {"Results of 10", Kind::kMethod},
    {"Results of 20", Kind::kMethod},
    {"string to host", Kind::kConversion},
    {"number to host", Kind::kConversion},
    {"date to host", Kind::kConversion},
    {"array to host", Kind::kConversion},
    {"dictionary to host", Kind::kConversion},
    {"URL to host", Kind::kConversion},
    {"string to platform", Kind::kConversion},
    {"number to platform", Kind::kConversion},
    {"date to platform", Kind::kConversion},
    {"array to platform", Kind::kConversion},
    {"dictionary to platform", Kind::kConversion},
    {"URL to platform", Kind::kConversion},
};

struct Wanted {
  const char* what;
  const char* call;
  const char* less = nullptr;  // whose instructions are subtracted
  int times = 1;               // how many more there are in the call than in the lesser one
};
const Wanted kRows[] = {
    {"ResultCount", "ResultCount"},
    {"ResultAtIndex", "ResultAtIndex"},
    {"Results(), an item", "Results of 20", "Results of 10", 10},
    {"AttributeString, 20 characters", "AttributeString"},
    {"GetAttribute of a number", "GetAttribute"},
    {"to host: string of 20 characters", "string to host"},
    {"to host: number", "number to host"},
    {"to host: date", "date to host"},
    {"to host: array of 10 strings", "array to host"},
    {"to host: dictionary of 10 numbers", "dictionary to host"},
    {"to host: URL of a file", "URL to host"},
    {"to platform: string", "string to platform"},
    {"to platform: number", "number to platform"},
    {"to platform: date", "date to platform"},
    {"to platform: array of 10 strings", "array to platform"},
    {"to platform: dictionary of 10 numbers", "dictionary to platform"},
    {"to platform: folder item of a file", "URL to platform"},
    {"REALPluginMain", kStartUp},
};

std::vector<std::string> callsOf(std::optional<Kind> kind = {}) {
  std::vector<std::string> names;
  for (const Call& call : kCalls) {
    if (!kind || call.kind == *kind) names.push_back(call.name);
  }
  return names;
}

// Gone with all that is in it when this object goes.
class Folder {
 public:
  Folder() {
    std::string path = std::filesystem::temp_directory_path() / "bench-calls-XXXXXX";
    if (mkdtemp(path.data())) path_ = path;
  }
  ~Folder() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// Instructions of one call, and those of them that are in the stubs.
struct Count {
  int all = 0;
  int stubs = 0;
};

Count operator-(const Count& count, const Count& less) {
  return {count.all - less.all, count.stubs - less.stubs};
}

// A file of callgrind's: "ob=FILE" says where the functions are that follow, and a line of two numbers what a
// line of their source takes, or after "calls=" what the function takes that it calls.
std::optional<Count> countIn(std::ifstream file) {
  if (!file) return {};
  Count count;
  bool isStub = false, isOfCallee = false;
  for (std::string line; std::getline(file, line);) {
    int place, cost;
    if (line.starts_with("ob=")) {
      isStub = line.substr(3) == CALLS_DRIVER;
    } else if (!isOfCallee && std::sscanf(line.c_str(), "%d %d", &place, &cost) == 2) {
      count.all += cost;
      if (isStub) count.stubs += cost;
    }
    isOfCallee = line.starts_with("calls=");
  }
  return count;
}

typedef std::map<std::string, Count> Counts;

// Of the calls, and of start-up, which each run begins with. Callgrind writes a file for each call of
// measured.
std::optional<Counts> countIn(const char* binary, const std::vector<std::string>& calls) {
  const Folder folder;
  const std::string output = folder.path() + "/calls";
  std::vector<std::string> command = {"valgrind",
                                      "--tool=callgrind",
                                      "--callgrind-out-file=" + output,
                                      "--compress-strings=no",
                                      "--compress-pos=no",
                                      "--toggle-collect=measured",
                                      "--dump-after=measured",
                                      CALLS_DRIVER,
                                      binary};
  command.insert(command.end(), calls.begin(), calls.end());
  if (run(command).status != 0) return {};

  std::vector<std::string> measured = {kEmpty, kStartUp};
  measured.insert(measured.end(), calls.begin(), calls.end());
  Counts counts;
  for (size_t i = 0; i < measured.size(); ++i) {
    const auto count = countIn(std::ifstream(output + "." + std::to_string(i + 1)));
    if (!count) return {};
    counts[measured[i]] = *count;
  }
  // The driver's own, which are around each call. The empty function is one instruction.
  const int around = counts[kEmpty].all - 1;
  for (auto& [name, count] : counts) count = count - Count{around, around};
  return counts;
}

// The dylib that ships exports no conversions; what is linked of the same objects and exports them is
// measured for these.
std::optional<Counts> countInDylibs() {
  auto counts = countIn(PLUGIN_DYLIB, callsOf(Kind::kMethod));
  auto conversions = countIn(BRIDGE_DYLIB, callsOf(Kind::kConversion));
  if (!counts || !conversions) return {};
  counts->merge(*conversions);
  return counts;
}

Count countOf(const Wanted& row, const Counts& counts) {
  Count count = counts.at(row.call);
  if (!row.less) return count;
  count = count - counts.at(row.less);
  return {count.all / row.times, count.stubs / row.times};
}

// What arrives at the stubs, each call after the name of what it belongs to. Preparations are left out: the
// twin finds its services all at once.
std::vector<std::string> callsIn(const char* binary, const std::vector<std::string>& calls) {
  std::vector<std::string> command = {CALLS_DRIVER_NOTED, binary};
  command.insert(command.end(), calls.begin(), calls.end());
  const Usage usage = run(command);
  std::vector<std::string> arrived;
  std::string part, last;
  std::istringstream stream(usage.errors);
  for (std::string line; std::getline(stream, line); last = line) {
    if (line.starts_with("# ")) {
      part = line.substr(2);
    } else if (part != "preparation") {
      arrived.push_back(part + ": " + line);
    }
  }
  if (usage.status != 0) arrived.push_back(std::string(binary) + " failed after: " + last);
  return arrived;
}

void compareWithTwin(const char* binary, const std::vector<std::string>& calls, Comparison& comparison) {
  if (!comparison.difference.empty()) return;
  const auto ours = callsIn(binary, calls), twins = callsIn(MEASURED_TWIN, calls);
  const auto [our, twin] = std::mismatch(ours.begin(), ours.end(), twins.begin(), twins.end());
  comparison.calls += static_cast<size_t>(our - ours.begin());
  if (our == ours.end() && twin == twins.end()) return;
  const std::string end = "nothing more";
  comparison.difference = "with " + std::string(binary) + " comes \"" + (our == ours.end() ? end : *our) +
                          "\", with the twin \"" + (twin == twins.end() ? end : *twin) + '"';
}

}  // namespace

std::optional<std::vector<Row>> countRows() {
  const auto plugin = countIn(MEASURED_PLUGIN, callsOf());
  const auto twin = countIn(MEASURED_TWIN, callsOf());
  const auto dylib = countInDylibs();
  const auto dylibTwin = countIn(TWIN_DYLIB, callsOf());
  if (!plugin || !twin || !dylib || !dylibTwin) return {};
  std::vector<Row> rows;
  for (const Wanted& row : kRows) {
    const Count least = countOf(row, *twin);
    rows.push_back({row.what, least.stubs, countOf(row, *plugin).all, least.all, countOf(row, *dylib).all,
                    countOf(row, *dylibTwin).all});
  }
  return rows;
}

Comparison compareCalls() {
  Comparison comparison;
  compareWithTwin(MEASURED_PLUGIN, callsOf(), comparison);
  compareWithTwin(PLUGIN_DYLIB, callsOf(Kind::kMethod), comparison);
  compareWithTwin(BRIDGE_DYLIB, callsOf(Kind::kConversion), comparison);
  return comparison;
}

}  // namespace bench::calls
