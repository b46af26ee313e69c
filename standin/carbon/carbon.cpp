#include <Carbon/Carbon.h>

#include <string>
#include <utility>

#include "standin/carbon/control.h"

namespace {

standin::SearchWindow window;
OSStatus nextStatus = noErr;

std::string utf8(CFStringRef text) {
  const CFIndex size = CFStringGetMaximumSizeForEncoding(CFStringGetLength(text), kCFStringEncodingUTF8) + 1;
  std::string bytes(static_cast<size_t>(size), '\0');
  if (!CFStringGetCString(text, bytes.data(), size, kCFStringEncodingUTF8)) return {};
  bytes.resize(bytes.find('\0'));
  return bytes;
}

}  // namespace

OSStatus HISearchWindowShow(CFStringRef inSearchString, OptionBits inFlags) {
  const standin::Gate gate{"HISearchWindowShow"};
  const OSStatus failed = -50;  // paramErr, as the Mac's managers answer what they can't do
  if (gate.fails()) return failed;
  ++window.shown;
  window.text = inSearchString ? std::optional(utf8(inSearchString)) : std::nullopt;
  window.flags = inFlags;
  return nextStatus;
}

namespace standin {

SearchWindow takeSearchWindow() {
  return std::exchange(window, {});
}

void setSearchWindowStatus(OSStatus status) {
  nextStatus = status;
}

}  // namespace standin
