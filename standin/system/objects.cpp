#include "standin/system/objects.h"

#include <string>

#include "standin/gate/gate.h"

namespace standin {

void checkObject(const char* call, CFTypeRef cf, CFTypeID type, const char* what) {
  if (!cf) die(call, std::string("the ") + what + " is null");
  if (CFGetTypeID(cf) != type) die(call, std::string("this is no ") + what);
}

}  // namespace standin
