#include "shotlight/live.h"

#include <iterator>
#include <string>

#include "shotlight/incomplete.h"
#include "shotlight/names.h"
#include "shotlight/output.h"
#include "shotlight/session.h"
#include "shotlight/table.h"
#include "standin/coreservices/metadata/control.h"

namespace shotlight {
namespace {

namespace host = standin::host;
using host::Value;

const double kLongTime = 1e9;  // seconds

void printPaths(const char* sign, const Value& items, const FileColors* colors) {
  for (const Value& item : host::elements(items)) {
    if (item.isNil()) continue;
    const std::string path = pathOf(item);
    const std::string color = colors ? colors->colorOf(path) : "";
    print(std::string(sign) + ' ' + painted(printable(path), color) + '\n');
  }
}

// Prints the updates of a query while it is alive. Each ends the run of the run loop, so that an error in
// printing comes out of it.
class Printer {
 public:
  Printer(const Value& query, const FileColors* colors) : query_(query) {
    host::setEventHandler(query, "Update", [colors](const std::vector<Value>& lists) {
      CFRunLoopStop(CFRunLoopGetCurrent());
      const char* const signs[] = {"+", "~", "-"};
      for (size_t i = 0; i < std::size(signs); ++i) printPaths(signs[i], lists[i], colors);
      finishOutput();
    });
  }
  ~Printer() { host::setEventHandler(query_, "Update", nullptr); }
  Printer(const Printer&) = delete;
  Printer& operator=(const Printer&) = delete;

 private:
  const Value& query_;
};

// Says once what keeps changes from being told.
void reportProblem(std::string& reported) {
  tellUnseen();
  const std::string problem = standin::liveUpdateProblem();
  if (!problem.empty() && problem != reported) {
    complain("not every change can be told: " + problem);
    noteMissing();
  }
  reported = problem;
}

}  // namespace

void follow(const Value& query, std::optional<double> seconds, Interrupts& interrupts,
            const FileColors* colors) {
  printPaths("+", host::call(query, "Results"), colors);
  finishOutput();
  const Printer printer(query, colors);
  const CFAbsoluteTime end = CFAbsoluteTimeGetCurrent() + seconds.value_or(kLongTime);
  std::string reported;
  while (interrupts.signal() == 0) {
    reportProblem(reported);
    const double left = end - CFAbsoluteTimeGetCurrent();
    if (left <= 0) break;
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, left, false);
    host::rethrowHandlerError();
    checkExceptions();
  }
  host::call(query, "Stop");
}

}  // namespace shotlight
