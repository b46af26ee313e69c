// Functions of somebody outside the stand-ins, as a collection runs them.
#pragma once

#include <cstring>
#include <optional>

#include "standin/gate/gate.h"

namespace cf {

// While it lives, a function of somebody outside the stand-ins runs: its calls count. When the outermost call
// is that of another stand-in library, the function is that library's own, and nothing changes.
class OutsideCall {
 public:
  OutsideCall() {
    if (std::strncmp(standin::currentCall(), "CF", 2) == 0) callout_.emplace();
  }

 private:
  std::optional<standin::Callout> callout_;
};

}  // namespace cf
