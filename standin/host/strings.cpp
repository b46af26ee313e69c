#include "standin/host/strings.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstdlib>
#include <cstring>
#include <unordered_set>

#include "standin/gate/gate.h"
#include "standin/host/encodings.h"
#include "standin/host/entry_points.h"
#include "standin/host/host.h"
#include "standin/host/machine_call.h"
#include "standin/host/memory.h"
#include "standin/host/runtime.h"

namespace standin::host {
namespace {

constexpr uint32_t stringMark = 0x48535452;  // 'HSTR'
constexpr uint32_t nonsenseLength = 0x7FFFFFFF;
constexpr std::size_t recordSize = 5 * sizeof(uint32_t);

// Blocks given out as string data and not yet given back.
std::unordered_set<const void*>& blocksGivenOut() {
  static auto* const blocks = new std::unordered_set<const void*>;
  return *blocks;
}

// Where the host lacks "PluginDisposeStringData" the plug-in frees the block itself, unseen.
bool countsBlocks() {
  return settings().hidden.count("PluginDisposeStringData") == 0 &&
         settings().delayed.count("PluginDisposeStringData") == 0;
}

long& blockLine() {
  static long& line = ledgerLine("host string data");
  return line;
}

}  // namespace

HostString::HostString(std::string content, uint32_t encodingOfIt, Side owner)
    : Counted(recordSize, owner), bytes(std::move(content)), encoding(encodingOfIt) {
  words()[0] = stringMark;
  hide();
}

void HostString::hide() {
  words()[1] = wordOf(unreadableAddress());
  words()[3] = nonsenseLength;
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
  Counted& thing = thingAt(handle);
  if (!thing.isString())
    die(currentCall(), "the " + thing.describe() + " was passed where a string is expected");
  return static_cast<HostString&>(thing);
}

StringHandle newString(std::string_view bytes, uint32_t encoding, Side owner) {
  return static_cast<StringHandle>(enrol(new HostString(std::string(bytes), encoding, owner)).block());
}

namespace entry {

// Locks and unlocks can't fail; a null string is nobody's.
void REALLockString(StringHandle string) {
  const Gate gate("REALLockString");
  if (!string) return;
  stringAt(string).locked();
  retain(string, Side::plugin);
}

void REALUnlockString(StringHandle string) {
  const Gate gate("REALUnlockString");
  if (!string) return;
  stringAt(string).unlocked();
  release(string, Side::plugin);
}

StringHandle REALBuildString(const char* bytes, int32_t length) {
  const Gate gate("REALBuildString");
  if (length < 0) die("REALBuildString", "a negative length");
  if (length > 0 && !bytes) die("REALBuildString", "null bytes with a length of " + std::to_string(length));
  if (gate.fails() || length == 0) return nullptr;
  return newString({bytes, static_cast<std::size_t>(length)}, encodingUnknown, Side::plugin);
}

uint32_t REALGetStringEncoding(StringHandle string) {
  const Gate gate("REALGetStringEncoding");
  const HostString& read = stringAt(string);
  return gate.fails() ? 0 : read.encoding;
}

void REALSetStringEncoding(StringHandle string, uint32_t encoding) {
  const Gate gate("REALSetStringEncoding");
  HostString& changed = stringAt(string);
  if (!gate.fails()) changed.encoding = encoding;
}

StringHandle REALConvertString(StringHandle string, uint32_t encoding) {
  const Gate gate("REALConvertString");
  const HostString& read = stringAt(string);
  if (gate.fails()) return nullptr;
  const auto converted = convert(read.bytes, read.encoding, encoding);
  return converted ? newString(*converted, encoding, Side::plugin) : nullptr;
}

const void* REALGetStringCFString(StringHandle string, bool external) {
  const Gate gate("REALGetStringCFString");
  if (external) die("REALGetStringCFString", "the second argument must be false");
  const HostString& read = stringAt(string);
  if (gate.fails()) return nullptr;
  // By way of UTF-16, so that what the host takes for a text is what arrives.
  const auto units = convert(read.bytes, read.encoding, encodingUtf16);
  if (!units) return nullptr;
  return CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(units->data()),
                                      static_cast<CFIndex>(units->size() / 2));
}

bool PluginGetStringData(StringHandle string, uint32_t encoding, StringData* data) {
  const Gate gate("PluginGetStringData");
  if (!data) die("PluginGetStringData", "a null record");
  const HostString& read = stringAt(string);
  if (gate.fails()) return false;
  const bool asItIs = encoding == encodingUnknown || encoding == read.encoding;
  const auto bytes = asItIs ? read.bytes : convert(read.bytes, read.encoding, encoding);
  if (!bytes) return false;
  // Four zero bytes behind the text end it in every encoding.
  auto* const block = static_cast<char*>(std::calloc(bytes->size() + 4, 1));
  if (!block) return false;
  std::memcpy(block, bytes->data(), bytes->size());
  *data = {block, static_cast<int32_t>(bytes->size()), asItIs ? read.encoding : encoding};
  if (countsBlocks()) {
    blocksGivenOut().insert(block);
    ++blockLine();
  }
  return true;
}

const char* StringGetCString(StringHandle string) {
  const Gate gate("StringGetCString");
  const HostString& read = stringAt(string);
  return gate.fails() ? nullptr : read.bytes.c_str();
}

void PluginDisposeStringData(StringData* data) {
  const Gate gate("PluginDisposeStringData");
  if (!data) die("PluginDisposeStringData", "a null record");
  if (!data->data) return;
  // A block that the plug-in made itself is given back here as well, and is no business of the ledger.
  if (blocksGivenOut().erase(data->data) != 0) --blockLine();
  std::free(data->data);
  *data = {nullptr, 0, 0};
}

}  // namespace entry
}  // namespace standin::host
