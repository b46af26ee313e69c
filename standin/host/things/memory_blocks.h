// Memory blocks: bytes at an address that stays.
#pragma once

#include <vector>

#include "standin/host/things/objects.h"

namespace standin::host {

class HostMemoryBlock : public HostObject {
 public:
  HostMemoryBlock(const Class& cls, Side owner);

  std::vector<char> bytes;
};

}  // namespace standin::host
