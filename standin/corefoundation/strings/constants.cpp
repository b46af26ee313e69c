// Constant strings: one object for each text, for the life of the process.
#include <cstring>
#include <new>
#include <string_view>
#include <unordered_map>

#include "standin/corefoundation/strings/decode.h"

namespace cf {
namespace {

// Function-local and never destroyed: other libraries make constants from their own initialisers and use them
// in their own clean-up.
std::unordered_map<std::string_view, CFStringRef>& constants() {
  static auto* const table = new std::unordered_map<std::string_view, CFStringRef>;
  return *table;
}

}  // namespace
}  // namespace cf

// No gate: to the platform's compiler a constant string is data, not a call. Text beyond ASCII is UTF-8, as
// the compiler reads the source.
CFStringRef __CFStringMakeConstantString(const char* cStr) {
  if (cStr == nullptr) cf::misuse(__func__, "null text");
  const std::string_view text(cStr);
  auto& table = cf::constants();
  if (const auto found = table.find(text); found != table.end()) return found->second;

  const CFStringRef made = cf::stringOfUTF8(text);
  if (made == nullptr) cf::misuse(__func__, "the text isn't UTF-8");
  const_cast<__CFString*>(made)->count = cf::kConstantCount;
  --*made->isa->live;
  // The caller's text may lie in a library that is unloaded later.
  char* const key = new char[text.size()];
  std::memcpy(key, text.data(), text.size());
  table.emplace(std::string_view(key, text.size()), made);
  return made;
}
