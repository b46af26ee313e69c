#include "shotlight/live.h"

#include <cstdio>
#include <iterator>
#include <string>

#include "shotlight/incomplete.h"
#include "shotlight/output.h"
#include "shotlight/session.h"
#include "shotlight/table.h"
#include "standin/coreservices/metadata/control.h"

namespace shotlight {
namespace {

namespace host = standin::host;
using host::Value;

const double kLongTime = 1e9;  // seconds

void printPaths(const char* sign, const Value& items) {
  for (const Value& item : host::elements(items)) {
    if (!item.isNil()) print(std::string(sign) + ' ' + printable(host::get(item, "Path").text()) + '\n');
  }
}

// Prints the updates of a query while it is alive. Each ends the run of the run loop, so that an error in
// printing comes out of it.
class Printer {
 public:
  explicit Printer(const Value& query) : query_(query) {
    host::setEventHandler(query, "Update", [](const std::vector<Value>& lists) {
      CFRunLoopStop(CFRunLoopGetCurrent());
      const char* const signs[] = {"+", "~", "-"};
      for (size_t i = 0; i < std::size(signs); ++i) printPaths(signs[i], lists[i]);
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
    std::fprintf(stderr, "shotlight: not every change can be told: %s\n", problem.c_str());
    noteMissing();
  }
  reported = problem;
}

}  // namespace

void follow(const Value& query, std::optional<double> seconds, Interrupts& interrupts) {
  printPaths("+", host::call(query, "Results"));
  finishOutput();
  const Printer printer(query);
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
