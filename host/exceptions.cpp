#include "exceptions.h"

#include <string.h>

#include "build_string.h"
#include "owned.h"
#include "services.h"

namespace {

Owned<REALobject> newException(const char* className) {
  auto exception = adopt(REALnewInstance(className));
  if (exception) return exception;
  return adopt(REALnewInstance("RuntimeException"));
}

Owned<REALstring> messageText(const char* message) {
  if (!message) return {};
  return REALBuildUnicodeString(message, static_cast<int64_t>(strlen(message)), kCFStringEncodingASCII);
}

}  // namespace

void RaiseException(const char* className, const char* message) {
  const auto text = messageText(message);
  const auto exception = newException(className);
  if (!exception) return;
  REALSetPropValueString(exception.get(), "Message", text.get());
  REALSetPropValueInt32(exception.get(), "ErrorNumber", 0);
  REALRaiseException(exception.get());
}
