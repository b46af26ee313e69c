// The entry points of variants, and what each kind of value is when it is read as another.
#include "standin/host/things/variants.h"
#include "standin/gate/gate.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/language/encodings.h"
#include "standin/host/things/objects.h"
#include "standin/host/things/strings.h"

namespace standin::host {
namespace {

// The value in a variant. Nil for an object, which is no number and no text, and when the call was chosen to
// fail.
const Value& contentOf(const Gate& gate, ObjectHandle handle) {
  static const Value nothing;
  const auto* const variant = asKind<HostVariant>(objectThingAt(handle));
  return variant && !gate.fails() ? variant->value : nothing;
}

ObjectHandle newVariant(const Gate& gate, Value value) {
  return gate.fails() ? nullptr : handleOf(added(new HostVariant(std::move(value), Side::plugin)));
}

}  // namespace

namespace entry {

StringHandle VariantToString(ObjectHandle handle) {
  const Gate gate(__func__);
  const Value& content = contentOf(gate, handle);
  if (gate.fails()) return nullptr;
  if (content.kind() == Kind::string) {
    retain(content.handle(), Side::plugin);
    return content.reference().string();
  }
  return newString(asText(content), kEncodingUtf8, Side::plugin);
}

int32_t VariantToInt32(ObjectHandle handle) {
  const Gate gate(__func__);
  return static_cast<int32_t>(asWhole(contentOf(gate, handle)));
}

int64_t VariantToInt64(ObjectHandle handle) {
  const Gate gate(__func__);
  return asWhole(contentOf(gate, handle));
}

float VariantToSingle(ObjectHandle handle) {
  const Gate gate(__func__);
  return static_cast<float>(asNumber(contentOf(gate, handle)));
}

double VariantToDouble(ObjectHandle handle) {
  const Gate gate(__func__);
  return asNumber(contentOf(gate, handle));
}

ObjectHandle StringToVariant(StringHandle string) {
  const Gate gate(__func__);
  if (string) stringAt(string);
  return newVariant(gate, Value::string(Ref::share(string)));
}

ObjectHandle Int32ToVariant(int32_t value) {
  const Gate gate(__func__);
  return newVariant(gate, value);
}

ObjectHandle Int64ToVariant(int64_t value) {
  const Gate gate(__func__);
  return newVariant(gate, value);
}

ObjectHandle DoubleToVariant(double value) {
  const Gate gate(__func__);
  return newVariant(gate, value);
}

ObjectHandle BooleanToVariant(bool value) {
  const Gate gate(__func__);
  return newVariant(gate, value);
}

}  // namespace entry
}  // namespace standin::host
