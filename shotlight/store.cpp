// What is kept of the contents of files.
#include <cstdio>
#include <stdexcept>

#include "shotlight/commands.h"
#include "shotlight/errors.h"
#include "shotlight/output.h"
#include "shotlight/store_options.h"
#include "shotlight/table.h"
#include "standin/coreservices/metadata/content_control.h"

namespace shotlight {
namespace {

std::string megabytes(uint64_t bytes) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f MB", static_cast<double>(bytes) / 1e6);
  return text;
}

int report(const std::string& folder) {
  const standin::ContentStoreReport report = standin::contentStoreIn(folder);
  const uint64_t lookups = report.hits + report.reads;
  const uint64_t percent = lookups > 0 ? report.hits * 100 / lookups : 0;
  print("store  " + printable(report.path) + (report.exists ? "" : " (nothing is kept yet)") + '\n' +
        "size   " + megabytes(report.bytes) + ", at the most " + megabytes(report.limit) + '\n' + "files  " +
        std::to_string(report.files) + '\n' + "hits   " + std::to_string(report.hits) + " of " +
        std::to_string(lookups) + " (" + std::to_string(percent) + " %)\n");
  return kFound;
}

int check(const std::string& folder) {
  const std::vector<std::string> faults = standin::checkContentStore(folder);
  for (const std::string& fault : faults) print("damaged: " + printable(fault) + '\n');
  if (faults.empty()) print("every entry is as it was written\n");
  finishOutput();
  if (!faults.empty())
    throw CommandError(
        "the store is damaged; it is made anew when that is met, or by shotlight store --clear");
  return kFound;
}

int clear(const std::string& folder) {
  standin::clearContentStore(folder);
  return kFound;
}

}  // namespace

int store(const Arguments& arguments) {
  bool clears = false, checks = false;
  const Arguments operands =
      takeOptions("store", arguments, {switchOption("--clear", clears), switchOption("--check", checks)});
  if (!operands.empty())
    throw UsageError("'" + operands.front() + "': store takes no arguments; leave it out");
  if (clears && checks) throw UsageError("--clear and --check don't go together; leave one out");
  const std::string folder = storeFolder();
  if (folder.empty())
    throw CommandError(
        "there is no folder for the store; set HOME or XDG_CACHE_HOME to a path that starts with /");
  try {
    const int status = clears ? clear(folder) : checks ? check(folder) : report(folder);
    finishOutput();
    return status;
  } catch (const CommandError&) {
    throw;
  } catch (const std::runtime_error& error) {
    throw CommandError(
        "the store " + shellWord(folder, Reader::person) + ": " + error.what() +
        "; see that its folder is yours and writable, or take it away with shotlight store --clear");
  }
}

}  // namespace shotlight
