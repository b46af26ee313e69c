// The members of the language's own types and classes.
#include "standin/host/interpreter/class_members.h"

#include <dirent.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>

#include "standin/host/host.h"
#include "standin/host/interpreter/callable.h"
#include "standin/host/interpreter/types.h"
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

int64_t wholeAt(const Call& call, size_t index) {
  return call.arguments[index].integer();
}

// --- Variant and Color ---

template <TypeKind kind>
Value as(Call& call) {
  return converted(call.self, {kind, "", false});
}

Value asDate(Call& call) {
  return converted(call.self, {TypeKind::object, "Date", false});
}

Value asObject(Call& call) {
  if (call.self.kind() == Kind::nil || call.self.kind() >= Kind::object) return call.self;
  raise("TypeMismatchException", "expected an object, not " + call.self.describe());
}

Value typeCode(Call& call) {
  const Ref variant = boxed(call.self);
  return variant.isNull() ? 0 : variantType(thingOf(variant));
}

Value isNull(Call& call) {
  return call.self.kind() == Kind::nil;
}

template <int32_t code>
Value number(Call&) {
  return code;
}

template <int shift>
Value part(Call& call) {
  return static_cast<int32_t>(call.self.integer() >> shift & 0xFF);
}

// --- Date ---

using std::chrono::days;
using std::chrono::sys_days;

constexpr int64_t kSecondsOfDay = 24 * 60 * 60;

sys_days dayOf(const DateFields& fields) {
  // Months are counted from year 0, so that one of 13 is the first of the next year.
  const int64_t months = int64_t{fields.year} * 12 + fields.month - 1;
  const auto year =
      static_cast<int>(std::clamp<int64_t>(months >= 0 ? months / 12 : -((11 - months) / 12), -9999, 9999));
  const auto month = static_cast<unsigned>((months % 12 + 12) % 12 + 1);
  return sys_days(std::chrono::year(year) / static_cast<int>(month) / 1) + days(int64_t{fields.day} - 1);
}

sys_days firstDay() {
  return sys_days(std::chrono::year(1904) / 1 / 1);
}

int64_t secondsOf(const DateFields& fields) {
  return int64_t{(dayOf(fields) - firstDay()).count()} * kSecondsOfDay + int64_t{fields.hour} * 3600 +
         int64_t{fields.minute} * 60 + fields.second;
}

DateFields fieldsOf(double total) {
  constexpr double kMost = 2.5e11;  // the year 9826
  const auto seconds =
      static_cast<int64_t>(std::isnan(total) ? 0 : std::clamp(std::floor(total), -kMost, kMost));
  const int64_t day =
      seconds >= 0 ? seconds / kSecondsOfDay : -((kSecondsOfDay - 1 - seconds) / kSecondsOfDay);
  const auto rest = static_cast<int32_t>(seconds - day * kSecondsOfDay);
  const std::chrono::year_month_day date(firstDay() + days(static_cast<int>(day)));
  return {static_cast<int>(date.year()),
          static_cast<int32_t>(static_cast<unsigned>(date.month())),
          static_cast<int32_t>(static_cast<unsigned>(date.day())),
          rest / 3600,
          rest / 60 % 60,
          rest % 60};
}

void setTotal(const Call& call, double total) {
  instance<HostDate>(call).setFields(fieldsOf(total));
}

template <int32_t DateFields::*field>
Value dateField(Call& call) {
  return instance<HostDate>(call).fields().*field;
}

// What is too large for its field goes over to the next one: the 32nd of January is the first of February.
template <int32_t DateFields::*field>
Value setDateField(Call& call) {
  DateFields fields = instance<HostDate>(call).fields();
  fields.*field = static_cast<int32_t>(wholeAt(call, 0));
  setTotal(call, static_cast<double>(secondsOf(fields)));
  return {};
}

Value total(Call& call) {
  return totalSeconds(call.self);
}

Value setTotal(Call& call) {
  setTotal(call, call.arguments[0].number());
  return {};
}

std::string sqlDateOf(const DateFields& fields) {
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", fields.year, fields.month, fields.day);
  return text;
}

Value sqlDate(Call& call) {
  return sqlDateOf(fields(call.self));
}
Value sqlTime(Call& call) {
  return sqlDateTime(call.self);
}

Value dayOfWeek(Call& call) {
  const std::chrono::weekday day(dayOf(fields(call.self)));
  return static_cast<int32_t>(day.c_encoding() + 1);  // Sunday is 1
}

DateFields localTime(time_t when) {
  tm local{};
  ::localtime_r(&when, &local);
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

Value dateNow(Call& call) {
  instance<HostDate>(call).setFields(localTime(::time(nullptr)));
  return {};
}

Value dateOfFields(Call& call) {
  const auto field = [&call](size_t index) { return static_cast<int32_t>(wholeAt(call, index)); };
  setTotal(call,
           static_cast<double>(secondsOf({field(0), field(1), field(2), field(3), field(4), field(5)})));
  return {};
}

Value dateOfDate(Call& call) {
  if (call.arguments[0].isNil()) raise("NilObjectException", "the date is Nil");
  instance<HostDate>(call).setFields(fields(call.arguments[0]));
  return {};
}

// --- Dictionary ---

Value lookUpOrRaise(Call& call) {
  if (auto found = instance<HostDictionary>(call).find(call.arguments[0])) return *found;
  raise("KeyNotFoundException", "the dictionary has no key " + call.arguments[0].describe());
}

Value setEntry(Call& call) {
  instance<HostDictionary>(call).set(call.arguments[0], call.arguments[1]);
  return {};
}

Value lookUpOrElse(Call& call) {
  return instance<HostDictionary>(call).find(call.arguments[0]).value_or(call.arguments[1]);
}

Value hasKey(Call& call) {
  return instance<HostDictionary>(call).find(call.arguments[0]).has_value();
}

Value keyAt(Call& call) {
  const auto& entries = instance<HostDictionary>(call).entries();
  const int64_t index = wholeAt(call, 0);
  if (index < 0 || index >= static_cast<int64_t>(entries.size()))
    raise("OutOfBoundsException", "no key " + std::to_string(index));
  return entries[static_cast<size_t>(index)].first;
}

Value entryParts(const Call& call, Value Entry::*part) {
  std::vector<Value> parts;
  for (const Entry& entry : instance<HostDictionary>(call).entries()) parts.push_back(entry.*part);
  return objectArray(parts);
}

Value keys(Call& call) {
  return entryParts(call, &Entry::first);
}
Value values(Call& call) {
  return entryParts(call, &Entry::second);
}

Value removeKey(Call& call) {
  if (instance<HostDictionary>(call).remove(call.arguments[0])) return {};
  raise("KeyNotFoundException", "the dictionary has no key " + call.arguments[0].describe());
}

Value clearEntries(Call& call) {
  instance<HostDictionary>(call).clear();
  return {};
}

// --- FolderItem ---

const std::string& pathOf(const Call& call) {
  return instance<HostFolderItem>(call).path;
}

// False, and a record of zeros, where nothing is there.
bool recordOf(const std::string& path, struct stat& record) {
  record = {};
  return ::stat(path.c_str(), &record) == 0;
}

Value itemName(Call& call) {
  return textOfBytes(pathOf(call).substr(pathOf(call).rfind('/') + 1));
}
Value nativePath(Call& call) {
  return textOfBytes(pathOf(call));
}

Value itemExists(Call& call) {
  struct stat record;
  return recordOf(pathOf(call), record);
}

Value itemIsFolder(Call& call) {
  return isFolder(pathOf(call));
}

Value itemLength(Call& call) {
  struct stat record;
  const bool isFile = recordOf(pathOf(call), record) && S_ISREG(record.st_mode);
  return int64_t{isFile ? record.st_size : 0};
}

Value itemModified(Call& call) {
  struct stat record;
  if (!recordOf(pathOf(call), record)) return {};
  const DateFields at = localTime(record.st_mtime);
  return date(at.year, at.month, at.day, at.hour, at.minute, at.second);
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(::opendir(folder.c_str()), ::closedir);
  while (const dirent* const entry = stream ? ::readdir(stream.get()) : nullptr) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

Value itemCount(Call& call) {
  return static_cast<int32_t>(namesIn(pathOf(call)).size());
}

std::string below(const std::string& folder, const std::string& name) {
  return (folder == "/" ? "" : folder) + '/' + name;
}

Value itemAt(Call& call) {
  const std::vector<std::string> names = namesIn(pathOf(call));
  const int64_t number = wholeAt(call, 0);
  if (number < 1 || number > static_cast<int64_t>(names.size()))
    raise("OutOfBoundsException",
          "no item " + std::to_string(number) + "; there are " + std::to_string(names.size()));
  return folderItem(below(pathOf(call), names[static_cast<size_t>(number - 1)]));
}

Value itemChild(Call& call) {
  return folderItem(below(pathOf(call), utf8Of(call.arguments[0])));
}

Value itemParent(Call& call) {
  return pathOf(call).size() <= 1 ? Value() : folderItem(parentPath(pathOf(call)));
}

Value itemOfPath(Call& call) {
  instance<HostFolderItem>(call).path = path(folderItemAt(utf8Of(call.arguments[0])));
  return {};
}

// --- MemoryBlock ---

std::vector<char>& bytesOf(const Call& call) {
  return instance<HostMemoryBlock>(call).bytes;
}

Value blockSize(Call& call) {
  return static_cast<int32_t>(bytesOf(call).size());
}

Value setBlockSize(Call& call) {
  constexpr int64_t kMostBytes = 64 << 20;
  if (wholeAt(call, 0) < 0) raise("OutOfBoundsException", "a size below 0");
  if (wholeAt(call, 0) > kMostBytes) raise("OutOfMemoryException", "a memory block of more than 64 MB");
  bytesOf(call).resize(static_cast<size_t>(wholeAt(call, 0)));
  return {};
}

size_t checkedOffset(const Call& call, int64_t count) {
  const int64_t offset = wholeAt(call, 0);
  const auto size = static_cast<int64_t>(bytesOf(call).size());
  if (offset < 0 || count < 0 || offset > size || count > size - offset)
    raise("OutOfBoundsException", "the memory block has " + std::to_string(size) + " bytes");
  return static_cast<size_t>(offset);
}

Value byteAt(Call& call) {
  return static_cast<int32_t>(static_cast<unsigned char>(bytesOf(call)[checkedOffset(call, 1)]));
}

Value setByte(Call& call) {
  bytesOf(call)[checkedOffset(call, 1)] = static_cast<char>(wholeAt(call, 1));
  return {};
}

Value stringAt(Call& call) {
  const size_t offset = checkedOffset(call, wholeAt(call, 1));
  return textOfBytes(std::string(bytesOf(call).data() + offset, static_cast<size_t>(wholeAt(call, 1))));
}

Value setStringAt(Call& call) {
  const std::string text = call.arguments[2].isNil() ? std::string() : call.arguments[2].bytes();
  const auto length =
      static_cast<size_t>(std::clamp<int64_t>(wholeAt(call, 1), 0, static_cast<int64_t>(text.size())));
  const size_t offset = checkedOffset(call, static_cast<int64_t>(length));
  std::copy_n(text.begin(), length, bytesOf(call).begin() + static_cast<std::ptrdiff_t>(offset));
  return {};
}

// --- Exceptions and the application ---

Value describeException(Call& call) {
  set(call.self, "Message", call.arguments[0]);
  set(call.self, "ErrorNumber", call.arguments[1]);
  return {};
}

Value doEvents(Call& call) {
  call.machine.askWhetherToGoOn();
  call.machine.surroundings.waitForEvents(static_cast<double>(std::max<int64_t>(wholeAt(call, 0), 0)) / 1000);
  rethrowHandlerError();
  passOnExceptions();
  call.machine.askWhetherToGoOn();
  return {};
}

constexpr NativeMember kMembers[] = {
    {"App", "DoEvents(milliseconds As Integer = 0)", doEvents, nullptr, true},
    {"Color", "Red As Integer", part<16>},
    {"Color", "Green As Integer", part<8>},
    {"Color", "Blue As Integer", part<0>},
    {"Variant", "BooleanValue As Boolean", as<TypeKind::boolean>},
    {"Variant", "IntegerValue As Integer", as<TypeKind::int32>},
    {"Variant", "Int32Value As Int32", as<TypeKind::int32>},
    {"Variant", "UInt32Value As UInt32", as<TypeKind::uint32>},
    {"Variant", "Int64Value As Int64", as<TypeKind::int64>},
    {"Variant", "SingleValue As Single", as<TypeKind::single>},
    {"Variant", "DoubleValue As Double", as<TypeKind::number>},
    {"Variant", "ColorValue As Color", as<TypeKind::color>},
    {"Variant", "StringValue As String", as<TypeKind::string>},
    {"Variant", "DateValue As Date", asDate},
    {"Variant", "ObjectValue As Object", asObject},
    {"Variant", "Type As Integer", typeCode},
    {"Variant", "IsNull As Boolean", isNull},
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
    {"Date", "Constructor(other As Date)", dateOfDate},
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
    {"Date", "DayOfWeek As Integer", dayOfWeek},
    {"Date", "TotalSeconds As Double", total, setTotal},
    {"Date", "SQLDate As String", sqlDate},
    {"Date", "SQLDateTime As String", sqlTime},
    {"Dictionary", "Value(key As Variant) As Variant", lookUpOrRaise, setEntry},
    {"Dictionary", "Lookup(key As Variant, otherwise As Variant) As Variant", lookUpOrElse},
    {"Dictionary", "HasKey(key As Variant) As Boolean", hasKey},
    {"Dictionary", "Key(index As Integer) As Variant", keyAt},
    {"Dictionary", "Keys As Variant()", keys},
    {"Dictionary", "Values As Variant()", values},
    {"Dictionary", "Remove(key As Variant)", removeKey},
    {"Dictionary", "Clear()", clearEntries},
    {"FolderItem", "Constructor(path As String)", itemOfPath},
    {"FolderItem", "Name As String", itemName},
    {"FolderItem", "NativePath As String", nativePath},
    {"FolderItem", "Exists As Boolean", itemExists},
    {"FolderItem", "Directory As Boolean", itemIsFolder},
    {"FolderItem", "Length As Int64", itemLength},
    {"FolderItem", "ModificationDate As Date", itemModified},
    {"FolderItem", "Count As Integer", itemCount},
    {"FolderItem", "Item(number As Integer) As FolderItem", itemAt},
    {"FolderItem", "Child(name As String) As FolderItem", itemChild},
    {"FolderItem", "Parent As FolderItem", itemParent},
    {"MemoryBlock", "Constructor(size As Integer)", setBlockSize},
    {"MemoryBlock", "Size As Integer", blockSize, setBlockSize},
    {"MemoryBlock", "Byte(offset As Integer) As Integer", byteAt, setByte},
    {"MemoryBlock", "StringValue(offset As Integer, size As Integer) As String", stringAt, setStringAt},
    {"RuntimeException", "Constructor(message As String = \"\", errorNumber As Integer = 0)",
     describeException},
};

// --- Arrays ---

Value upperBound(Call& call, const Type&) {
  return arrayIn(call.self).count() - 1;
}

Value append(Call& call, const Type&) {
  insertElement(call.self, arrayIn(call.self).count(), call.arguments[0]);
  return {};
}

Value insert(Call& call, const Type&) {
  insertElement(call.self, wholeAt(call, 0), call.arguments[1]);
  return {};
}

Value removeAt(Call& call, const Type& element) {
  return removeElement(call.self, wholeAt(call, 0), element);
}

Value pop(Call& call, const Type& element) {
  return removeElement(call.self, int64_t{arrayIn(call.self).count()} - 1, element);
}

Value indexOf(Call& call, const Type& element) {
  for (int32_t i = 0; i < arrayIn(call.self).count(); ++i) {
    if (computedOfVariants(Operator::equal, elementAt(call.self, i, element), call.arguments[0]).boolean())
      return i;
  }
  return -1;
}

Value sort(Call& call, const Type&) {
  arrayIn(call.self);
  std::vector<Value> sorted = elements(call.self);
  std::stable_sort(sorted.begin(), sorted.end(), [](const Value& one, const Value& other) {
    return computedOfVariants(Operator::less, one, other).boolean();
  });
  for (size_t i = 0; i < sorted.size(); ++i) setElement(call.self, static_cast<int64_t>(i), sorted[i]);
  return {};
}

// Of an array of any type, which stands where Element does.
struct ArrayMember {
  const char* declaration;
  Value (*run)(Call& call, const Type& element);
  bool needsOrder = false;  // only where elements are texts or numbers
};
constexpr ArrayMember kArrayMembers[] = {
    {"Ubound As Integer", upperBound},
    {"Append(value As Element)", append},
    {"Insert(index As Integer, value As Element)", insert},
    {"Remove(index As Integer) As Element", removeAt},
    {"Pop As Element", pop},
    {"IndexOf(value As Element) As Integer", indexOf},
    {"Sort()", sort, true},
};

}  // namespace

double totalSeconds(const Value& date) {
  return static_cast<double>(secondsOf(fields(date)));
}

Value sqlDateTime(const Value& date) {
  const DateFields at = fields(date);
  char time[64];
  std::snprintf(time, sizeof time, " %02d:%02d:%02d", at.hour, at.minute, at.second);
  return sqlDateOf(at) + time;
}

Value folderItemAt(const std::string& path) {
  if (path.empty() || path.find('\0') != std::string::npos) return {};
  if (path.front() == '/') return folderItem(path);
  const std::unique_ptr<char, decltype(&std::free)> current(::getcwd(nullptr, 0), &std::free);
  return folderItem(below(current ? current.get() : "/", path));
}

std::vector<Callable> nativeMembersOf(std::string_view className) {
  std::vector<Callable> members;
  for (const NativeMember& row : kMembers) {
    if (sameName(row.className, className)) members.push_back(callableOf(row));
  }
  return members;
}

std::vector<Callable> arrayMembers(const Type& element) {
  std::vector<Callable> members;
  for (const ArrayMember& row : kArrayMembers) {
    if (row.needsOrder && !isText(element) && !isNumber(element)) continue;
    Declaration declaration = parseMethod(row.declaration);
    const auto fill = [&element](Type& type) {
      if (type.className == "Element") type = element;
    };
    fill(declaration.result);
    for (Parameter& parameter : declaration.parameters) fill(parameter.type);
    members.push_back({std::move(declaration), row.declaration,
                       [row, element](Call& call) { return row.run(call, element); }});
  }
  return members;
}

}  // namespace standin::host
