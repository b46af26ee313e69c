// The entry points of strings.
#include <CoreFoundation/CoreFoundation.h>

#include <cstdlib>
#include <cstring>
#include <unordered_set>

#include "standin/gate/gate.h"
#include "standin/gate/memory.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/host.h"
#include "standin/host/language/encodings.h"
#include "standin/host/things/strings.h"

namespace standin::host {
namespace {

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

namespace entry {

// Locks and unlocks can't fail; a null string is ignored.
void REALLockString(StringHandle string) {
  const Gate gate(__func__);
  if (!string) return;
  stringAt(string).locked();
  retain(string, Side::plugin);
}

void REALUnlockString(StringHandle string) {
  const Gate gate(__func__);
  if (!string) return;
  stringAt(string).unlocked();
  release(string, Side::plugin);
}

StringHandle REALBuildString(const char* bytes, int32_t length) {
  const Gate gate(__func__);
  if (length < 0) die(__func__, "a negative length");
  if (length > 0 && !bytes) die(__func__, "null bytes with a length of " + std::to_string(length));
  if (gate.fails() || length == 0) return nullptr;
  return newString({bytes, static_cast<size_t>(length)}, kEncodingUnknown, Side::plugin);
}

uint32_t REALGetStringEncoding(StringHandle string) {
  const Gate gate(__func__);
  const HostString& read = stringAt(string);
  return gate.fails() ? 0 : read.encoding;
}

void REALSetStringEncoding(StringHandle string, uint32_t encoding) {
  const Gate gate(__func__);
  HostString& changed = stringAt(string);
  if (!gate.fails()) changed.encoding = encoding;
}

StringHandle REALConvertString(StringHandle string, uint32_t encoding) {
  const Gate gate(__func__);
  const HostString& read = stringAt(string);
  if (gate.fails()) return nullptr;
  const auto converted = convert(read.bytes, read.encoding, encoding);
  return converted ? newString(*converted, encoding, Side::plugin) : nullptr;
}

const void* REALGetStringCFString(StringHandle string, bool external) {
  const Gate gate(__func__);
  if (external) die(__func__, "the second argument must be false");
  const HostString& read = stringAt(string);
  if (gate.fails()) return nullptr;
  if (isAsciiText(read.bytes, read.encoding)) {
    return CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(read.bytes.data()),
                                   static_cast<CFIndex>(read.bytes.size()), kCFStringEncodingASCII, false);
  }
  // Made of the host's own UTF-16, so that both sides take the bytes for the same text.
  const auto units = convert(read.bytes, read.encoding, kEncodingUtf16);
  if (!units) return nullptr;
  return CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(units->data()),
                                      static_cast<CFIndex>(units->size() / 2));
}

bool PluginGetStringData(StringHandle string, uint32_t encoding, StringData* data) {
  const Gate gate(__func__);
  if (!data) die(__func__, "a null record");
  const HostString& read = stringAt(string);
  if (gate.fails()) return false;
  const bool asItIs = encoding == kEncodingUnknown || encoding == read.encoding;
  const auto bytes = asItIs ? read.bytes : convert(read.bytes, read.encoding, encoding);
  if (!bytes) return false;
  // Four zero bytes behind the text end it in every encoding.
  auto* const block = static_cast<char*>(takeMemory([&] { return std::calloc(bytes->size() + 4, 1); }));
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
  const Gate gate(__func__);
  const HostString& read = stringAt(string);
  return gate.fails() ? nullptr : read.bytes.c_str();
}

void PluginDisposeStringData(StringData* data) {
  const Gate gate(__func__);
  if (!data) die(__func__, "a null record");
  if (!data->data) return;
  // A block that the plug-in made itself is given back here as well, and is not in the ledger.
  if (blocksGivenOut().erase(data->data) != 0) --blockLine();
  std::free(data->data);
  *data = {nullptr, 0, 0};
}

}  // namespace entry
}  // namespace standin::host
