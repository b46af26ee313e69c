// The results of a query as item objects, and the values of their attributes.
#include "bridge/cf_to_variant.h"
#include "bridge/strings.h"
#include "bridge/variant_to_cf.h"
#include "host/array_before_guard.h"
#include "item/item.h"
#include "query.h"

namespace {

MDItemRef resultAt(MDQueryRef query, CFIndex index) {
  return static_cast<MDItemRef>(const_cast<void*>(MDQueryGetResultAtIndex(query, index)));
}

}  // namespace

// The index is passed on unchecked; the service has no result for one out of range.
REALobject rbMDQueryGetResultAtIndex(REALobject self, int32_t index) {
  const MDQueryRef query = queryOrRaise(self);
  if (!query) return nullptr;
  const MDItemRef item = resultAt(query, index);
  return item ? newItem(item).leak() : nullptr;
}

// A result that is missing, or for which the host makes no instance, is a nil element: an element's index is
// always that of its result.
REALobject rbMDQueryGetResultArray(REALobject self, int32_t limit) {
  const auto [made, query] = newArrayBeforeGuard(kObjectElements, queryOrRaise, self);
  if (!query) return nullptr;
  auto array = adopt(made);
  const CFIndex total = MDQueryGetResultCount(query);
  const CFIndex count = limit > 0 && limit < total ? limit : total;
  for (CFIndex i = 0; i < count; ++i) {
    // Each way has its own insertion: an owner that may be empty would cost each item a test.
    if (const MDItemRef item = resultAt(query, i)) {
      const auto object = newItem(item);
      REALInsertArrayValueObject(array.get(), i, object.get());
    } else {
      REALInsertArrayValueObject(array.get(), i, nullptr);
    }
  }
  return array.leak();
}

int32_t rbMDQueryGetIndexOfResult(REALobject self, REALobject result) {
  const MDItemRef item = result ? itemData(result)->item : nullptr;
  const MDQueryRef query = queryOrRaise(self);
  if (!query) return 0;
  if (!item) {
    raiseNilItem();
    return 0;
  }
  return MDQueryGetIndexOfResult(query, item);
}

REALobject rbMDQueryGetAttributeValueOfResultAtIndex(REALobject self, REALstring name, uint32_t index) {
  const MDQueryRef query = queryOrRaise(self);
  if (!query) return nullptr;
  const auto key = RBString2CFString(name);
  if (!key) return nullptr;
  const auto borrowed =
      MDQueryGetAttributeValueOfResultAtIndex(query, key.get(), static_cast<CFIndex>(index));
  return GetCFTypeAsVariant(borrowed).leak();
}

// A null value is left out; a value that converts to nil is a nil element.
REALobject rbMDQueryCopyValuesOfAttribute(REALobject self, REALstring name) {
  const auto [made, query] = newArrayBeforeGuard(kObjectElements, queryOrRaise, self);
  if (!query) return nullptr;
  auto array = adopt(made);
  const auto key = RBString2CFString(name);
  if (!key) return array.leak();
  const auto values = adopt(MDQueryCopyValuesOfAttribute(query, key.get()));
  const CFIndex count = values ? CFArrayGetCount(values.get()) : 0;
  int32_t position = 0;
  for (CFIndex i = 0; i < count; ++i) {
    const CFTypeRef value = CFArrayGetValueAtIndex(values.get(), i);
    if (!value) continue;
    const auto variant = GetCFTypeAsVariant(value);
    REALInsertArrayValueObject(array.get(), position++, variant.get());
  }
  return array.leak();
}

uint32_t rbMDQueryGetCountOfResultsWithAttributeValue(REALobject self, REALstring name, REALobject value) {
  const MDQueryRef query = queryOrRaise(self);
  if (!query) return 0;
  auto key = RBString2CFString(name);
  const auto wanted = CopyVariantAsCFType(value);
  const CFIndex count =
      key && wanted ? MDQueryGetCountOfResultsWithAttributeValue(query, key.get(), wanted.get()) : 0;
  key.reset();  // the key is given back before the value
  return static_cast<uint32_t>(count);
}
