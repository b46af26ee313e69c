#include "standin/host/things/strings.h"

#include <utility>

#include "standin/host/machine/machine_call.h"
#include "standin/host/machine/memory.h"
#include "standin/host/state/runtime.h"

namespace standin::host {
namespace {

constexpr uint32_t kStringMark = 0x48535452;  // 'HSTR'
constexpr uint32_t kWrongLength = 0x7FFFFFFF;
constexpr size_t kRecordSize = 5 * sizeof(uint32_t);

HostString& requireString(Counted& thing) {
  HostString* const string = asKind<HostString>(thing);
  if (!string) dieOfWrongThing(thing, "a string");
  return *string;
}

}  // namespace

HostString::HostString(std::string content, uint32_t encodingOfIt, Side owner)
    : Counted(kThing, kRecordSize, owner), bytes(std::move(content)), encoding(encodingOfIt) {
  words()[0] = kStringMark;
  hide();
}

void HostString::hide() {
  words()[1] = wordOf(unreadableAddress());
  words()[3] = kWrongLength;
}

void HostString::locked() {
  if (++locks_ > 1 || !hasOldStrings()) return;
  buffer_.assign(1, '\x7F');  // the byte before the text means nothing to the plug-in
  buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
  buffer_.push_back('\0');
  words()[1] = wordOf(buffer_.data());
  words()[3] = bytes.size();
}

void HostString::unlocked() {
  if (locks_ == 0 || --locks_ > 0) return;
  hide();
  buffer_ = {};
}

HostString& stringAt(StringHandle handle) {
  return requireString(thingAt(handle));
}

HostString& stringOf(const Ref& reference) {
  return requireString(thingOf(reference));
}

HostString& newHostString(std::string bytes, uint32_t encoding, Side owner) {
  return added(new HostString(std::move(bytes), encoding, owner));
}

StringHandle newString(std::string bytes, uint32_t encoding, Side owner) {
  return static_cast<StringHandle>(newHostString(std::move(bytes), encoding, owner).block());
}

}  // namespace standin::host
