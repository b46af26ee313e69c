#include "standin/host/program/conversions.h"

#include <cstring>
#include <utility>

#include "standin/host/program/fit.h"
#include "standin/host/things/handles.h"
#include "standin/host/things/plain_values.h"
#include "standin/host/things/variants.h"

namespace standin::host {
namespace {

void* handleIn(const void* memory) {
  void* handle = nullptr;
  std::memcpy(&handle, memory, sizeof handle);
  return handle;
}

bool isVariant(const Type& type) {
  return type.kind == TypeKind::variant && !type.array;
}

}  // namespace

Value handleValue(const Type& type, Ref reference) {
  if (type.kind == TypeKind::string && !type.array) return Value::string(std::move(reference));
  return Value::object(std::move(reference));
}

void appendWords(Words& words, const Type& type, const Value& value, std::vector<Ref>& variants) {
  if (type.isHandle()) {
    if (isVariant(type)) variants.push_back(boxed(value));
    words.push_back(wordOf(isVariant(type) ? variants.back().get() : value.handle()));
    return;
  }
  const uint64_t bits = bitsOf(type, value);
  words.push_back(static_cast<uint32_t>(bits));
  if (type.words() == 2) words.push_back(static_cast<uint32_t>(bits >> 32));
}

Value readField(const Type& type, const void* memory, const char* call) {
  if (!type.isHandle()) return plainValue(type.kind, memory);
  void* const handle = handleIn(memory);
  if (!handle) return emptyValue(type);
  requireType(thingAt(handle), type, call);
  return handleValue(type, Ref::share(handle));
}

void writeField(const Type& type, void* memory, const Value& value) {
  if (!type.isHandle()) {
    const uint64_t bits = bitsOf(type, value);
    std::memcpy(memory, &bits, static_cast<size_t>(type.size()));
    return;
  }
  const Ref reference = isVariant(type) ? boxed(value) : value.reference();
  void* const handle = reference.get();
  void* const before = handleIn(memory);
  retain(handle, Side::plugin);
  std::memcpy(memory, &handle, sizeof handle);
  release(before, Side::plugin);
}

}  // namespace standin::host
