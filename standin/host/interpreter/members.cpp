// The members of the language's own types and classes.
#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "standin/host/interpreter/classes.h"
#include "standin/host/interpreter/values.h"
#include "standin/host/things/dates.h"
#include "standin/host/things/dictionaries.h"
#include "standin/host/things/folder_items.h"
#include "standin/host/things/memory_blocks.h"
#include "standin/host/things/variants.h"
#include "standin/system/paths.h"

namespace standin::host {
namespace {

// The object is of the class that the table says, or of one that inherits it.
template <class Instance>
Instance& instance(const Call& call) {
  return static_cast<Instance&>(thingOf(call.self.reference()));
}

// --- Arrays ---

Value removeAt(Call& call) {
  Value removed = elementAt(call.self, call.whole(0), call.callable.declaration.result);
  arrayIn(call.self).remove(static_cast<int32_t>(call.whole(0)));
  return removed;
}

Value indexOf(Call& call) {
  const Type& element = call.callable.declaration.parameters[0].type;
  for (int32_t i = 0; i < arrayIn(call.self).count(); ++i) {
    if (holds("=", elementAt(call.self, i, element), call.arguments[0])) return i;
  }
  return -1;
}

Value sort(Call& call) {
  arrayIn(call.self);
  std::vector<Value> sorted = elements(call.self);
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const Value& one, const Value& other) { return holds("<", one, other); });
  for (size_t i = 0; i < sorted.size(); ++i) setElement(call.self, static_cast<int64_t>(i), sorted[i]);
  return {};
}

// --- Variant and Color ---

// As what the member's name says.
Value content(Call& call) {
  return converted(call.self, call.callable.declaration.result);
}

template <int32_t code>
Value number(Call&) {
  return code;
}

template <int shift>
Value part(Call& call) {
  return static_cast<int32_t>(call.self.integer() >> shift & 0xFF);
}

// --- Date: its clock is that of no time zone ---

constexpr double kSecondsTo1970 = 2082844800;  // from 1904

void setTotal(const Call& call, double total) {
  constexpr double kMost = 2.5e11;  // the year 9826
  const double seconds = std::isnan(total) ? 0 : std::clamp(std::floor(total), -kMost, kMost);
  const auto time = static_cast<time_t>(seconds - kSecondsTo1970);
  tm at{};
  ::gmtime_r(&time, &at);
  instance<HostDate>(call).setFields(
      {at.tm_year + 1900, at.tm_mon + 1, at.tm_mday, at.tm_hour, at.tm_min, at.tm_sec});
}

// What is too large for its field goes over to the next one: the 32nd of January is the first of February.
double secondsOf(const DateFields& of) {
  static constexpr int32_t kMost = 100'000'000;
  const auto field = [](int32_t number) { return std::clamp(number, -kMost, kMost); };
  tm at{};
  at.tm_year = field(of.year) - 1900;
  at.tm_mon = field(of.month) - 1;
  at.tm_mday = field(of.day);
  at.tm_hour = field(of.hour);
  at.tm_min = field(of.minute);
  at.tm_sec = field(of.second);
  return static_cast<double>(::timegm(&at)) + kSecondsTo1970;
}

template <int32_t DateFields::*field>
Value dateField(Call& call) {
  return instance<HostDate>(call).fields().*field;
}

template <int32_t DateFields::*field>
Value setDateField(Call& call) {
  DateFields fields = instance<HostDate>(call).fields();
  fields.*field = static_cast<int32_t>(call.whole(0));
  setTotal(call, secondsOf(fields));
  return {};
}

Value dateNow(Call& call) {
  const time_t now = ::time(nullptr);
  tm local{};
  ::localtime_r(&now, &local);
  setTotal(call, static_cast<double>(now + local.tm_gmtoff) + kSecondsTo1970);
  return {};
}

Value dateOfFields(Call& call) {
  const auto field = [&call](size_t index) { return static_cast<int32_t>(call.whole(index)); };
  setTotal(call, secondsOf({field(0), field(1), field(2), field(3), field(4), field(5)}));
  return {};
}

// --- Dictionary ---

HostDictionary& entriesOf(const Call& call) {
  return instance<HostDictionary>(call);
}

[[noreturn]] void failWithoutKey(const Value& key) {
  raise("KeyNotFoundException", "the dictionary has no key " + key.describe());
}

Value lookUpOrRaise(Call& call) {
  if (auto found = entriesOf(call).find(call.arguments[0])) return *found;
  failWithoutKey(call.arguments[0]);
}

template <Value Entry::*part>
Value entryParts(Call& call) {
  std::vector<Value> parts;
  for (const Entry& entry : entriesOf(call).entries()) parts.push_back(entry.*part);
  return objectArray(parts);
}

Value removeKey(Call& call) {
  if (!entriesOf(call).remove(call.arguments[0])) failWithoutKey(call.arguments[0]);
  return {};
}

// --- FolderItem ---

const std::string& pathOf(const Call& call) {
  return instance<HostFolderItem>(call).path;
}

// Of zeros where nothing is there.
struct stat recordOf(const Call& call) {
  struct stat record {};
  return ::stat(pathOf(call).c_str(), &record) == 0 ? record : (struct stat){};
}

// --- MemoryBlock ---

std::vector<char>& bytesOf(const Call& call) {
  return instance<HostMemoryBlock>(call).bytes;
}

Value setBlockSize(Call& call) {
  constexpr int64_t kMostBytes = 64 << 20;
  if (call.whole(0) < 0) raise("OutOfBoundsException", "a size below 0");
  if (call.whole(0) > kMostBytes) raise("OutOfMemoryException", "a memory block of more than 64 MB");
  bytesOf(call).resize(static_cast<size_t>(call.whole(0)));
  return {};
}

// The so many bytes that are asked for.
char* bytesAt(const Call& call, int64_t count) {
  std::vector<char>& bytes = bytesOf(call);
  const auto size = static_cast<int64_t>(bytes.size());
  if (call.whole(0) < 0 || count < 0 || call.whole(0) > size - count)
    raise("OutOfBoundsException", "the memory block has " + std::to_string(size) + " bytes");
  return bytes.data() + call.whole(0);
}

// --- Exceptions and the application ---

Value describeException(Call& call) {
  set(call.self, "Message", call.arguments[0]);
  set(call.self, "ErrorNumber", call.arguments[1]);
  return {};
}

Value doEvents(Call& call) {
  call.machine.askWhetherToGoOn();
  call.machine.surroundings.waitForEvents(static_cast<double>(std::max<int64_t>(call.whole(0), 0)) / 1000);
  rethrowHandlerError();
  passOnExceptions();
  call.machine.askWhetherToGoOn();
  return {};
}

constexpr NativeMember kMembers[] = {
    {"App", "DoEvents(milliseconds As Integer = 0)", doEvents, nullptr, true},
    {"()", "Ubound As Integer", [](Call& c) -> Value { return arrayIn(c.self).count() - 1; }},
    {"()", "Append(value As Element)",
     [](Call& c) { return insertElement(c.self, arrayIn(c.self).count(), c.arguments[0]), Value(); }},
    {"()", "Insert(index As Integer, value As Element)",
     [](Call& c) { return insertElement(c.self, c.whole(0), c.arguments[1]), Value(); }},
    {"()", "Remove(index As Integer) As Element", removeAt},
    {"()", "IndexOf(value As Element) As Integer", indexOf},
    {"()", "Redim(upperBound As Integer)", [](Call& c) { return resize(c.self, c.whole(0)), Value(); }},
    {"()", "Sort()", sort},
    {"Color", "Red As Integer", part<16>},
    {"Color", "Green As Integer", part<8>},
    {"Color", "Blue As Integer", part<0>},
    {"Variant", "BooleanValue As Boolean", content},
    {"Variant", "IntegerValue As Integer", content},
    {"Variant", "Int32Value As Int32", content},
    {"Variant", "UInt32Value As UInt32", content},
    {"Variant", "Int64Value As Int64", content},
    {"Variant", "SingleValue As Single", content},
    {"Variant", "DoubleValue As Double", content},
    {"Variant", "ColorValue As Color", content},
    {"Variant", "StringValue As String", content},
    {"Variant", "DateValue As Date", content},
    {"Variant", "ObjectValue As Object", content},
    {"Variant", "Type As Integer",
     [](Call& c) -> Value {
       return c.self.isNil() && c.self.kind() != Kind::string ? 0 : variantType(thingOf(boxed(c.self)));
     }},
    {"Variant", "IsNull As Boolean", [](Call& c) -> Value { return c.self.kind() == Kind::nil; }},
    {"Variant", "TypeNil As Integer", number<0>, nullptr, true},
    {"Variant", "TypeInteger As Integer", number<2>, nullptr, true},
    {"Variant", "TypeLong As Integer", number<3>, nullptr, true},
    {"Variant", "TypeSingle As Integer", number<4>, nullptr, true},
    {"Variant", "TypeDouble As Integer", number<5>, nullptr, true},
    {"Variant", "TypeDate As Integer", number<7>, nullptr, true},
    {"Variant", "TypeString As Integer", number<8>, nullptr, true},
    {"Variant", "TypeObject As Integer", number<9>, nullptr, true},
    {"Variant", "TypeBoolean As Integer", number<11>, nullptr, true},
    {"Variant", "TypeColor As Integer", number<16>, nullptr, true},
    {"Variant", "TypeArray As Integer", number<4096>, nullptr, true},
    {"Date", "Constructor()", dateNow},
    {"Date", "Constructor(other As Date)",
     [](Call& c) { return setTotal(c, totalSeconds(c.arguments[0])), Value(); }},
    {"Date",
     "Constructor(year As Integer, month As Integer = 1, day As Integer = 1, hour As Integer = 0, "
     "minute As Integer = 0, second As Integer = 0)",
     dateOfFields},
    {"Date", "Year As Integer", dateField<&DateFields::year>, setDateField<&DateFields::year>},
    {"Date", "Month As Integer", dateField<&DateFields::month>, setDateField<&DateFields::month>},
    {"Date", "Day As Integer", dateField<&DateFields::day>, setDateField<&DateFields::day>},
    {"Date", "Hour As Integer", dateField<&DateFields::hour>, setDateField<&DateFields::hour>},
    {"Date", "Minute As Integer", dateField<&DateFields::minute>, setDateField<&DateFields::minute>},
    {"Date", "Second As Integer", dateField<&DateFields::second>, setDateField<&DateFields::second>},
    {"Date", "TotalSeconds As Double", [](Call& c) -> Value { return totalSeconds(c.self); },
     [](Call& c) { return setTotal(c, c.number(0)), Value(); }},
    {"Date", "SQLDateTime As String", [](Call& c) { return sqlDateTime(c.self); }},
    {"Dictionary", "Value(key As Variant) As Variant", lookUpOrRaise,
     [](Call& c) { return entriesOf(c).set(c.arguments[0], c.arguments[1]), Value(); }},
    {"Dictionary", "Lookup(key As Variant, otherwise As Variant) As Variant",
     [](Call& c) { return entriesOf(c).find(c.arguments[0]).value_or(c.arguments[1]); }},
    {"Dictionary", "HasKey(key As Variant) As Boolean",
     [](Call& c) -> Value { return entriesOf(c).find(c.arguments[0]).has_value(); }},
    {"Dictionary", "Key(index As Integer) As Variant",
     [](Call& c) {
       const auto& entries = entriesOf(c).entries();
       return entries[static_cast<size_t>(checkedIndex(c.whole(0), static_cast<int64_t>(entries.size())))]
           .first;
     }},
    {"Dictionary", "Keys As Variant()", entryParts<&Entry::first>},
    {"Dictionary", "Values As Variant()", entryParts<&Entry::second>},
    {"Dictionary", "Remove(key As Variant)", removeKey},
    {"Dictionary", "Clear()", [](Call& c) { return entriesOf(c).clear(), Value(); }},
    {"FolderItem", "Name As String",
     [](Call& c) { return textOfBytes(pathOf(c).substr(pathOf(c).rfind('/') + 1)); }},
    {"FolderItem", "NativePath As String", [](Call& c) { return textOfBytes(pathOf(c)); }},
    {"FolderItem", "Exists As Boolean", [](Call& c) -> Value { return recordOf(c).st_mode != 0; }},
    {"FolderItem", "Directory As Boolean", [](Call& c) -> Value { return S_ISDIR(recordOf(c).st_mode); }},
    {"FolderItem", "Length As Int64",
     [](Call& c) -> Value { return int64_t{S_ISREG(recordOf(c).st_mode) ? recordOf(c).st_size : 0}; }},
    {"FolderItem", "Child(name As String) As FolderItem",
     [](Call& c) {
       const std::string name = utf8Of(c.arguments[0]);
       if (name.find('\0') != std::string::npos) return Value();
       return folderItem((pathOf(c) == "/" ? "" : pathOf(c)) + '/' + name);
     }},
    {"FolderItem", "Parent As FolderItem",
     [](Call& c) { return pathOf(c).size() <= 1 ? Value() : folderItem(parentPath(pathOf(c))); }},
    {"MemoryBlock", "Constructor(size As Integer)", setBlockSize},
    {"MemoryBlock", "Size As Integer",
     [](Call& c) -> Value { return static_cast<int32_t>(bytesOf(c).size()); }, setBlockSize},
    {"MemoryBlock", "Byte(offset As Integer) As Integer",
     [](Call& c) -> Value { return int32_t{static_cast<unsigned char>(*bytesAt(c, 1))}; },
     [](Call& c) { return *bytesAt(c, 1) = static_cast<char>(c.whole(1)), Value(); }},
    {"MemoryBlock", "StringValue(offset As Integer, size As Integer) As String",
     [](Call& c) {
       return textOfBytes({bytesAt(c, c.whole(1)), static_cast<size_t>(c.whole(1))});
     }},
    {"RuntimeException", "Constructor(message As String = \"\", errorNumber As Integer = 0)",
     describeException},
};

}  // namespace

double totalSeconds(const Value& date) {
  if (date.isNil()) raise("NilObjectException", "the date is Nil");
  return secondsOf(fields(date));
}

Value sqlDateTime(const Value& date) {
  const DateFields at = fields(date);
  char text[100];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", at.year, at.month, at.day, at.hour,
                at.minute, at.second);
  return text;
}

std::span<const NativeMember> nativeMembers() {
  return kMembers;
}

}  // namespace standin::host
