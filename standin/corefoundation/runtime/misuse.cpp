#include "standin/corefoundation/runtime/misuse.h"

#include <cstdio>
#include <cstring>

#include "standin/corefoundation/runtime/quarantine.h"
#include "standin/gate/gate.h"

namespace cf {
namespace {

std::string address(const void* pointer) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", pointer);
  return text;
}

}  // namespace

void misuse(const char* call, const std::string& what) {
  const char* const outermost = standin::currentCall();
  if (std::strcmp(outermost, call) == 0 || outermost[0] == '(') standin::die(call, what);
  standin::die(call, what + " (inside " + outermost + ")");
}

void misuseOfReference(const char* call, CFTypeRef cf, const char* wanted) {
  const std::string need = std::string(" where ") + wanted + " is needed";
  if (cf == nullptr) misuse(call, "null" + need);
  const std::string at = " at " + address(cf);
  if ((reinterpret_cast<uintptr_t>(cf) & 3) != 0) misuse(call, "no object" + at + need);
  const Header* const object = static_cast<const Header*>(cf);
  if (const ClassEntry* freed = freedClass(object)) {
    misuse(call, std::string("a freed ") + freed->cls->className + at + need);
  }
  const ClassEntry* const entry = findEntry(reinterpret_cast<uintptr_t>(object->isa));
  if (entry == nullptr) misuse(call, "no object" + at + need);
  misuse(call, std::string("a ") + entry->cls->className + at + need);
}

void misuseOfType(const char* call, CFTypeRef cf, CFTypeID wanted) {
  const std::string name = std::string("a ") + classTable[wanted].cls->className;
  misuseOfReference(call, cf, name.c_str());
}

void checkBuffer(const void* buffer, CFIndex length, const char* what, const char* call) {
  if (length < 0) misuse(call, "a length below 0");
  if (length > 0 && buffer == nullptr) misuse(call, std::string("null ") + what + " with a length");
}

}  // namespace cf
