// Arrays made and read by host code.
#include "standin/host/host.h"
#include "standin/host/things/arrays.h"
#include "standin/host/things/dates.h"
#include "standin/host/things/objects.h"
#include "standin/host/things/variants.h"

namespace standin::host {
namespace {

template <class Numbers>
Value numberArray(ElementKind kind, const Numbers& numbers) {
  HostArray& array = newArray(kind, static_cast<int32_t>(numbers.size()), Side::host);
  int32_t index = 0;
  for (const typename Numbers::value_type number : numbers) array.write(index++, &number);
  return Value::object(Ref::adopt(array.block()));
}

// `elementOf` gives the reference that stands for a value in the array.
template <class ElementOf>
Value handleArray(ElementKind kind, const std::vector<Value>& values, ElementOf elementOf) {
  HostArray& array = newArray(kind, static_cast<int32_t>(values.size()), Side::host);
  const Value made = Value::object(Ref::adopt(array.block()));
  int32_t index = 0;
  for (const Value& value : values) array.setHandle(index++, elementOf(value).get());
  return made;
}

HostArray& arrayOf(const Value& value) {
  if (value.kind() != Kind::array || value.isNil()) throwMismatch(value, "an array");
  return arrayAt(value.reference().object());
}

}  // namespace

Value stringArray(const std::vector<std::string>& texts) {
  return stringArrayOf({texts.begin(), texts.end()});
}

Value stringArrayOf(const std::vector<Value>& strings) {
  return handleArray(ElementKind::string, strings, [](const Value& value) {
    const bool fits = value.kind() == Kind::string || value.kind() == Kind::nil;
    if (!fits) throwMismatch(value, "a string");
    return value.reference();
  });
}

Value objectArray(const std::vector<Value>& values) {
  return handleArray(ElementKind::object, values, boxed);
}

Value dateArray(const std::vector<Value>& dates) {
  return handleArray(ElementKind::date, dates, [](const Value& value) {
    const bool fits =
        value.kind() == Kind::nil || (value.kind() == Kind::object && isDate(thingAt(value.handle())));
    if (!fits) throwMismatch(value, "a Date");
    return value.reference();
  });
}

Value int32Array(const std::vector<int32_t>& numbers) {
  return numberArray(ElementKind::int32, numbers);
}

Value int64Array(const std::vector<int64_t>& numbers) {
  return numberArray(ElementKind::int64, numbers);
}

Value singleArray(const std::vector<float>& numbers) {
  return numberArray(ElementKind::single, numbers);
}

Value doubleArray(const std::vector<double>& numbers) {
  return numberArray(ElementKind::number, numbers);
}

Value booleanArray(const std::vector<bool>& values) {
  return numberArray(ElementKind::boolean, std::vector<uint8_t>(values.begin(), values.end()));
}

std::vector<Value> elements(const Value& value) {
  HostArray& array = arrayOf(value);
  std::vector<Value> result;
  result.reserve(static_cast<size_t>(array.count()));
  for (int32_t i = 0; i < array.count(); ++i) result.push_back(array.valueAt(i));
  return result;
}

std::vector<std::string> texts(const Value& value) {
  std::vector<std::string> result;
  for (const Value& element : elements(value)) result.push_back(element.text());
  return result;
}

}  // namespace standin::host
