// What the search window was asked to show, for tests and host programs.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <optional>
#include <string>

#include "standin/gate/gate.h"

namespace standin {

struct SearchWindow {
  int shown = 0;                    // how many times
  std::optional<std::string> text;  // of the last time, in UTF-8; none for a null string
  OptionBits flags = 0;
};

// What was shown since the last call.
STANDIN_API SearchWindow takeSearchWindow();

// What HISearchWindowShow answers from now on; 0 at first.
STANDIN_API void setSearchWindowStatus(OSStatus status);

}  // namespace standin
