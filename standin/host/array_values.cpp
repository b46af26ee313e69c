// Arrays made and read by host code.
#include "standin/host/arrays.h"
#include "standin/host/host.h"
#include "standin/host/objects.h"

namespace standin::host {
namespace {

template <class Numbers>
Value numberArray(ElementKind kind, const Numbers& numbers) {
  HostArray& array = newArray(kind, static_cast<int32_t>(numbers.size()), Side::host);
  int32_t index = 0;
  for (const typename Numbers::value_type number : numbers) array.write(index++, &number);
  return Value::object(Ref::adopt(array.block()));
}

HostArray& arrayOf(const Value& value) {
  if (value.kind() != Kind::array || value.isNil()) throw CallError("not an array but " + value.describe());
  return arrayAt(value.reference().object());
}

}  // namespace

Value stringArray(const std::vector<std::string>& texts) {
  return stringArrayOf({texts.begin(), texts.end()});
}

Value stringArrayOf(const std::vector<Value>& strings) {
  HostArray& array = newArray(ElementKind::string, static_cast<int32_t>(strings.size()), Side::host);
  const Value made = Value::object(Ref::adopt(array.block()));
  for (std::size_t i = 0; i < strings.size(); ++i) {
    const bool fits = strings[i].kind() == Kind::string || strings[i].kind() == Kind::nil;
    if (!fits) throw CallError("not a string but " + strings[i].describe());
    array.setHandle(static_cast<int32_t>(i), strings[i].handle());
  }
  return made;
}

Value objectArray(const std::vector<Value>& values) {
  HostArray& array = newArray(ElementKind::object, static_cast<int32_t>(values.size()), Side::host);
  const Value made = Value::object(Ref::adopt(array.block()));
  for (std::size_t i = 0; i < values.size(); ++i) {
    array.setHandle(static_cast<int32_t>(i), boxed(values[i]).get());
  }
  return made;
}

Value dateArray(const std::vector<Value>& dates) {
  HostArray& array = newArray(ElementKind::date, static_cast<int32_t>(dates.size()), Side::host);
  const Value made = Value::object(Ref::adopt(array.block()));
  for (std::size_t i = 0; i < dates.size(); ++i) {
    const bool fits = dates[i].kind() == Kind::nil ||
                      (dates[i].kind() == Kind::object && isDate(thingAt(dates[i].handle())));
    if (!fits) throw CallError("not a Date but " + dates[i].describe());
    array.setHandle(static_cast<int32_t>(i), dates[i].handle());
  }
  return made;
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
  for (int32_t i = 0; i < array.count(); ++i) result.push_back(array.valueAt(i));
  return result;
}

std::vector<std::string> texts(const Value& value) {
  std::vector<std::string> result;
  for (const Value& element : elements(value)) result.push_back(element.text());
  return result;
}

}  // namespace standin::host
