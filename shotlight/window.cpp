// The system's search window.
#include "shotlight/commands.h"
#include "shotlight/errors.h"
#include "shotlight/output.h"
#include "shotlight/session.h"
#include "shotlight/text.h"
#include "standin/carbon/control.h"
#include "standin/gate/shown_text.h"
#include "standin/host/host.h"

namespace shotlight {

namespace host = standin::host;

int window(const Arguments& arguments) {
  std::string plugin;
  const Arguments operands = takeOptions("window", arguments, {nameOption("--plugin", plugin)});
  if (operands.empty()) throw UsageError("window needs a text, such as harbour");
  if (operands.size() > 1)
    throw UsageError("'" + operands[1] +
                     "' is one argument too many; put the whole text in one pair of quotes");
  if (!utf16(operands.front())) throw UsageError("the text is not valid UTF-8; write it in UTF-8");
  Session session(plugin);
  const int64_t status = host::callGlobal("ShotlightZNK", operands.front()).integer();
  checkExceptions();
  const standin::SearchWindow shown = standin::takeSearchWindow();
  if (status != 0 || shown.shown == 0 || !shown.text)
    throw CommandError("the search window did not open: status " + std::to_string(status));
  print("the search window would show: " + standin::shownText(*shown.text) + '\n');
  finishOutput();
  session.close();
  return kFound;
}

}  // namespace shotlight
