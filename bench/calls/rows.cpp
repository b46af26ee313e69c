#include "bench/calls/rows.h"

#include <stdlib.h>

#include <algorithm>
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
    {"`ResultCount`", "ResultCount"},
    {"`ResultAtIndex`", "ResultAtIndex"},
    {"`Results()`, an item", "Results of 20", "Results of 10", 10},
    {"`AttributeString`, 20 characters", "AttributeString"},
    {"`GetAttribute` of a number", "GetAttribute"},
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
    {"`REALPluginMain`", kStartUp},
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

// Nothing when the file isn't there or has no sum.
std::optional<int> sumIn(const std::string& file) {
  const std::string label = "totals: ";
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with(label)) return std::stoi(line.substr(label.size()));
  }
  return {};
}

typedef std::map<std::string, int> Counts;

// Of the calls, and of start-up, which each run begins with. Callgrind writes a file for each call of
// `measured`.
std::optional<Counts> countIn(const char* binary, const std::vector<std::string>& calls) {
  const Folder folder;
  const std::string output = folder.path() + "/calls";
  std::vector<std::string> command = {"valgrind",
                                      "--tool=callgrind",
                                      "--callgrind-out-file=" + output,
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
    const auto sum = sumIn(output + "." + std::to_string(i + 1));
    if (!sum) return {};
    counts[measured[i]] = *sum;
  }
  const int around = counts[kEmpty] - 1;  // the empty function returns
  for (auto& [name, count] : counts) count -= around;
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

int countOf(const Wanted& row, const Counts& counts) {
  const int count = counts.at(row.call);
  return row.less ? (count - counts.at(row.less)) / row.times : count;
}

typedef std::vector<std::string> Lines;

// What arrives at the stubs, each call after the name of what it belongs to. Preparations are left out: the
// twin finds its services all at once.
Lines callsIn(const char* binary, const std::vector<std::string>& calls) {
  std::vector<std::string> command = {CALLS_DRIVER_NOTED, binary};
  command.insert(command.end(), calls.begin(), calls.end());
  const Usage usage = run(command);
  Lines lines;
  std::string part;
  std::istringstream stream(usage.errors);
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with("# ")) part = line.substr(2);
    if (part != "preparation") lines.push_back(part + ": " + line);
  }
  if (usage.status != 0) lines.push_back(std::string(binary) + " failed");
  lines.push_back("nothing more");
  return lines;
}

std::string differenceBetween(const char* binary, const std::vector<std::string>& calls) {
  const Lines ours = callsIn(binary, calls), twins = callsIn(MEASURED_TWIN, calls);
  const auto [our, twin] = std::mismatch(ours.begin(), ours.end(), twins.begin(), twins.end());
  if (our == ours.end() || twin == twins.end()) return {};  // both are
  return std::string(binary) + " makes \"" + *our + "\", the twin \"" + *twin + "\"";
}

}  // namespace

std::optional<std::vector<Row>> countRows() {
  const auto plugin = countIn(MEASURED_PLUGIN, callsOf());
  const auto twin = countIn(MEASURED_TWIN, callsOf());
  const auto dylib = countInDylibs();
  if (!plugin || !twin || !dylib) return {};
  std::vector<Row> rows;
  for (const Wanted& row : kRows)
    rows.push_back({row.what, countOf(row, *plugin), countOf(row, *twin), countOf(row, *dylib)});
  return rows;
}

std::string differenceOfCalls() {
  std::string found = differenceBetween(MEASURED_PLUGIN, callsOf());
  if (found.empty()) found = differenceBetween(PLUGIN_DYLIB, callsOf(Kind::kMethod));
  if (found.empty()) found = differenceBetween(BRIDGE_DYLIB, callsOf(Kind::kConversion));
  return found;
}

}  // namespace bench::calls
