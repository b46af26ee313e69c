#include "standin/coreservices/metadata/planned_answers.h"

#include <map>
#include <utility>
#include <vector>

namespace standin {
namespace {

struct Plans {
  std::map<std::string, CFTypeRef, std::less<>> next;
  std::vector<CFTypeRef> lent;
};

Plans& plans() {
  static Plans made;
  return made;
}

}  // namespace

void planAnswer(const std::string& call, CFTypeRef value) {
  if (const CFTypeRef unused = std::exchange(plans().next[call], value)) CFRelease(unused);
}

void clearAnswers() {
  for (const auto& [call, value] : std::exchange(plans().next, {})) CFRelease(value);
  for (const CFTypeRef value : std::exchange(plans().lent, {})) CFRelease(value);
}

CFTypeRef metadata::takePlannedAnswer(const char* call) {
  const auto found = plans().next.find(call);
  if (found == plans().next.end()) return nullptr;
  const CFTypeRef value = found->second;
  plans().next.erase(found);
  return value;
}

CFTypeRef metadata::borrowPlannedAnswer(const char* call) {
  const CFTypeRef value = takePlannedAnswer(call);
  if (value) plans().lent.push_back(value);
  return value;
}

}  // namespace standin
