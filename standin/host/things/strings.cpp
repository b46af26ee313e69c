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

}  // namespace

HostString::HostString(std::string content, uint32_t encodingOfIt, Side owner)
    : Counted(kRecordSize, owner), bytes(std::move(content)), encoding(encodingOfIt) {
  words()[0] = kStringMark;
  hide();
}

void HostString::hide() {
  words()[1] = wordOf(unreadableAddress());
  words()[3] = kWrongLength;
  buffer_ = {};
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
  if (locks_ > 0 && --locks_ == 0) hide();
}

HostString& stringAt(StringHandle handle) {
  return thingAs<HostString>(thingAt(handle), "a string");
}

StringHandle newString(std::string_view bytes, uint32_t encoding, Side owner) {
  return static_cast<StringHandle>(added(new HostString(std::string(bytes), encoding, owner)).block());
}

}  // namespace standin::host
