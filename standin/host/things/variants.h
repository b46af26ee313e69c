// Variants: what an array of variants, a dictionary or an argument "as variant" refers to.
#pragma once

#include <optional>
#include <string>

#include "standin/host/things/handles.h"

namespace standin::host {

// A boxed number, truth value, colour or string. Objects and arrays are their own variants.
class HostVariant : public Counted {
 public:
  using OfKind = HostVariant;
  static constexpr ThingKind kThing = ThingKind::variant;

  HostVariant(Value content, Side owner, std::optional<int32_t> reportedCode = {});
  std::string describe() const override { return "variant " + value.describe(); }
  BlockName blockName() const override { return {"variant"}; }

  const Value value;
  const std::optional<int32_t> code;  // reported instead of the value's own
};

// A reference of the host's side to the value as a variant: null for nil.
Ref boxed(const Value& value);
// The same for the plug-in, with a reference of its side.
ObjectHandle handOver(const Value& value);
// What a value is when it is read as another kind: a text by what it begins with, nil as 0 and as nothing. An
// object is none of these, and throws CallError.
double asNumber(const Value& value);
// Outside of 64 bits the nearest whole number, 0 for what is no number.
int64_t asWhole(const Value& value);
std::string asText(const Value& value);
// The code by which variants tell what they hold.
int32_t variantType(const Counted& thing);

}  // namespace standin::host
