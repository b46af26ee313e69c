#include "standin/host/program/gate_name.h"

#include <set>

namespace standin::host {

const char* gateName(const std::string& name) {
  static auto* const names = new std::set<std::string>;
  return names->insert(name).first->c_str();
}

}  // namespace standin::host
