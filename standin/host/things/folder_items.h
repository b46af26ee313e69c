// Folder items: a path each.
#pragma once

#include <string>

#include "standin/host/things/objects.h"

namespace standin::host {

class HostFolderItem : public HostObject {
 public:
  using HostObject::HostObject;

  std::string path;  // absolute, without a slash at its end; empty of a fresh instance
};

std::string withoutEndSlash(std::string path);

}  // namespace standin::host
