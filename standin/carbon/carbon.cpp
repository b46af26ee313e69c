#include "standin/carbon/control.h"

#include <Carbon/Carbon.h>

#include <utility>

#include "standin/system/utf8.h"

namespace {

standin::SearchWindow window;
OSStatus nextStatus = noErr;

}  // namespace

OSStatus HISearchWindowShow(CFStringRef inSearchString, OptionBits inFlags) {
  const standin::Gate gate(__func__);
  constexpr OSStatus kParamErr = -50;  // what the Mac's managers answer when they can't do it
  if (gate.fails()) return kParamErr;
  ++window.shown;
  window.text = inSearchString ? std::optional(standin::utf8Of(inSearchString).value_or("")) : std::nullopt;
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
