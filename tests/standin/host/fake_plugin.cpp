#include "tests/standin/host/fake_plugin.h"
#include "tests/support/texts.h"

#include <cstring>
#include <memory>

namespace fake {
namespace {

std::unique_ptr<ClassRecords> things;
int destroyed = 0;

struct ThingData {
  int32_t handle;
  Object tag;
  int32_t level;
};

ThingData& dataOf(Object object) {
  return *reinterpret_cast<ThingData*>(static_cast<char*>(object) + thingDataOffset());
}

void destroyThing(Object self) {
  ++destroyed;
  unlockObject(dataOf(self).tag);
  dataOf(self).tag = nullptr;
}

void construct(Object self, String text) {
  dataOf(self).handle = static_cast<int32_t>(content(text).size());
}

void constructFromThing(Object self, Object thing, int32_t more) {
  dataOf(self).handle = dataOf(thing).handle + more;
}

String putText(Object, String text) {
  return build("text " + content(text));
}

String putNumber(Object, int32_t number) {
  return build("number " + std::to_string(number));
}

String putThing(Object, Object thing) {
  return build(thing ? "thing " + std::to_string(dataOf(thing).handle) : "no thing");
}

String putNames(Object, String text, Object names) {
  const int32_t upper = names ? entry<int32_t(Object)>("RuntimeUBound")(names) : -2;
  return build("names " + content(text) + " " + std::to_string(upper));
}

int32_t limit(Object, int32_t limit) {
  return limit;
}

int32_t pickVariant(Object, Object) {
  return 1;
}

int32_t pickInteger(Object, int32_t) {
  return 2;
}

int32_t pickDouble(Object, double) {
  return 3;
}

double half(Object, int32_t before, double x, int32_t after) {
  return x / 2 + before * 100 + after * 1000;
}

float third(Object, float x) {
  return x / 3;
}

int64_t wide(Object, int64_t x) {
  return x + 1;
}

uint32_t truth(Object, uint8_t x) {
  // Only the low byte of a register is a boolean: the rest may hold anything.
  return 0xABCDEF00u | (x ? 0u : 1u);
}

Object echo(Object, Object variant) {
  lockObject(variant);
  return variant;
}

Object names(Object) {
  const Object array = createArray(3, -1);
  for (int i = 0; i < 3; ++i) {
    const String text = build("name " + std::to_string(i));
    insertString(array, i, text);
    unlockString(text);
  }
  return array;
}

Object mode(Object self) {
  lockObject(dataOf(self).tag);
  return dataOf(self).tag;
}

void setMode(Object self, Object mode) {
  lockObject(mode);
  unlockObject(dataOf(self).tag);
  dataOf(self).tag = mode;
}

int32_t fail(Object) {
  raise("NilObjectException", "Thing is nil");
  return 5;
}

Object misbehave(Object self, int32_t how) {
  switch (how) {
    case 1:  // gives back a reference that is the caller's
      unlockObject(self);
      return nullptr;
    case 2:  // a result without a reference
      return self;
    case 3: {  // forgets what it made
      newInstance("ThingZNK");
      return nullptr;
    }
    default:  // writes past the instance data
      std::memset(&dataOf(self), 0, 32 + 1);
      return nullptr;
  }
}

void fire(Object self, int32_t event, int32_t count) {
  using Changed = void(Object, Object, int32_t);
  const auto handler = entry<void*(Object, uint32_t)>("GetEventInstance")(self, thingEvent(event));
  if (!handler) return;
  if (event == 1) return reinterpret_cast<void (*)(Object)>(handler)(self);
  const Object array = createArray(4, -1);
  for (int i = 0; i < count; ++i) {
    const Object thing = newInstance("ThingZNK");
    insertObject(array, i, thing);
    unlockObject(thing);
  }
  reinterpret_cast<Changed*>(handler)(self, array, count);
  unlockObject(array);
}

String label(Object self, uint32_t) {
  return dataOf(self).handle == 0 ? nullptr : build("label " + std::to_string(dataOf(self).handle));
}

int64_t size(Object self, uint32_t) {
  return int64_t{dataOf(self).handle} << 32;
}

int32_t level(Object self, uint32_t parameter) {
  return dataOf(self).level + static_cast<int32_t>(parameter);
}

void setLevel(Object self, uint32_t parameter, int32_t value) {
  dataOf(self).level = value - static_cast<int32_t>(parameter) * 2;
}

String key() {
  return build("kKey");
}

int32_t twice(int32_t x) {
  return x * 2;
}

int32_t globalLength(String text) {
  return static_cast<int32_t>(content(text).size());
}

template <class Function>
const void* at(Function* function) {
  return reinterpret_cast<const void*>(function);
}

template <class Function>
uintptr_t number(Function* function) {
  return reinterpret_cast<uintptr_t>(function);
}

}  // namespace

String build(const std::string& bytes, uint32_t encoding) {
  const String string = entry<String(const char*, int32_t)>("REALBuildString")(
      bytes.data(), static_cast<int32_t>(bytes.size()));
  if (string) entry<void(String, uint32_t)>("REALSetStringEncoding")(string, encoding);
  return string;
}

std::string content(String string) {
  if (!string) return "(null)";
  struct {
    char* data;
    int32_t length;
    uint32_t encoding;
  } data{};
  if (!entry<bool(String, uint32_t, void*)>("PluginGetStringData")(string, 0xFFFF, &data))
    return "(unreadable)";
  std::string text(data.data, static_cast<size_t>(data.length));
  entry<void(void*)>("PluginDisposeStringData")(&data);
  return text;
}

uint32_t encodingOf(String string) {
  return entry<uint32_t(String)>("REALGetStringEncoding")(string);
}

void lockObject(Object object) {
  entry<void(Object)>("REALLockObject")(object);
}

void unlockObject(Object object) {
  entry<void(Object)>("REALUnlockObject")(object);
}

void lockString(String string) {
  entry<void(String)>("REALLockString")(string);
}

void unlockString(String string) {
  entry<void(String)>("REALUnlockString")(string);
}

Object newInstance(const char* className) {
  return entry<Object(const char*)>("PluginNewInstance")(className);
}

Object createArray(int32_t elementType, int32_t upperBound) {
  return entry<Object(int32_t, int32_t)>("RuntimeArrayCreateSingleDimBoundedArray")(elementType, upperBound);
}

void insertObject(Object array, int32_t index, Object value) {
  void* const procedure = entry<void*(Object)>("RuntimeArrayDirectGetInsertProc")(array);
  if (procedure) reinterpret_cast<void (*)(Object, int32_t, Object)>(procedure)(array, index, value);
}

void insertString(Object array, int32_t index, String value) {
  insertObject(array, index, value);
}

void raise(const char* className, const char* message) {
  const String text = build(message, host::kEncodingAscii);
  const Object exception = newInstance(className);
  entry<bool(Object, const char*, String)>("REALSetPropValueString")(exception, "Message", text);
  entry<bool(Object, const char*, int32_t)>("REALSetPropValueInt")(exception, "ErrorNumber", 7);
  // Released first: the host may throw out of the call.
  struct Release {
    String text;
    Object exception;
    ~Release() {
      unlockObject(exception);
      unlockString(text);
    }
  } const release{text, exception};
  entry<void(Object)>("RuntimeRaiseException")(exception);
}

ClassRecords::ClassRecords(int32_t controlVersion, const char* name, uint32_t dataSize)
    : old_(controlVersion == 9), record_(old_ ? 25 : 29) {
  word(0) = static_cast<uint32_t>(controlVersion);
  word(1) = address(name);
  word(3) = dataSize;
  word(20) = 4;
}

void ClassRecords::fill(int at, size_t rowWords, const std::vector<std::vector<uint32_t>>& rows) {
  std::vector<uint32_t>& table = tables_[at];
  for (const auto& row : rows) {
    const size_t start = table.size();
    table.insert(table.end(), row.begin(), row.end());
    table.resize(start + rowWords);
  }
  word(at + 1) = rows.size();
}

void ClassRecords::methodTable(int at, const std::vector<Row>& rows) {
  std::vector<std::vector<uint32_t>> words;
  for (const Row& row : rows)
    words.push_back({address(row.first), address(row.second), address(row.text), 4});
  fill(at, old_ ? 4 : 6, words);
}

void ClassRecords::properties(const std::vector<PropertyRow>& rows) {
  std::vector<std::vector<uint32_t>> words;
  for (const PropertyRow& row : rows) {
    words.push_back({0, address(row.name), address(row.type), 6, static_cast<uint32_t>(row.getter),
                     static_cast<uint32_t>(row.setter), row.parameter});
  }
  fill(7, old_ ? 10 : 12, words);
}

void ClassRecords::methods(const std::vector<Row>& rows) {
  methodTable(9, rows);
}

void ClassRecords::sharedMethods(const std::vector<Row>& rows) {
  methodTable(23, rows);
}

void ClassRecords::events(const std::vector<const char*>& texts) {
  std::vector<std::vector<uint32_t>> words;
  for (const char* const text : texts) words.push_back({address(text)});
  fill(11, old_ ? 2 : 4, words);
}

void ClassRecords::constants(const std::vector<const char*>& texts) {
  std::vector<std::vector<uint32_t>> words;
  for (const char* const text : texts) words.push_back({address(text)});
  fill(18, old_ ? 3 : 5, words);
}

uint32_t* ClassRecords::record() {
  for (auto& [at, table] : tables_) word(at) = table.empty() ? 0 : address(table.data());
  return record_.data();
}

ClassRecords thingRecords(int32_t controlVersion) {
  ClassRecords records(controlVersion, "ThingZNK", 32);
  records.properties({{"Handle", "Integer", direct, direct, 0},
                      {"Tag", "Variant", direct, direct, 4},
                      {"Label", "String", number(label), 0, 0},
                      {"Size", "Int64", number(size), 0, 0},
                      {"Level", "Integer", number(level), number(setLevel), 7}});
  records.methods(
      {{at(construct), nullptr, "Constructor(text as string)"},
       {at(constructFromThing), nullptr, "Constructor(thing as ThingZNK, more as integer = 10)"},
       {at(putText), nullptr, "Put(text as string) as string"},
       {at(putNumber), nullptr, "Put(number as integer) as string"},
       {at(putThing), nullptr, "Put(it as ThingZNK) as string"},
       {at(putNames), nullptr, "Put(text as string, names() as string) as string"},
       {at(limit), nullptr, "Limit(limit as integer = -1) as integer"},
       {at(half), nullptr, "Half(before as integer, x as double, after as integer = 1) as double"},
       {at(third), nullptr, "Third(x as single) as single"},
       {at(wide), nullptr, "Wide(x as Int64) as Int64"},
       {at(truth), nullptr, "Truth(x as boolean) as Boolean"},
       {at(echo), nullptr, "Echo(v as variant) as variant"},
       {at(names), nullptr, "Names as string()"},
       {at(mode), at(setMode), "Mode as ThingZNK"},
       {at(fail), nullptr, "Fail as integer"},
       {at(misbehave), nullptr, "Misbehave(how as integer) as variant"},
       {at(fire), nullptr, "Fire(event as integer, count as integer)"},
       {at(pickVariant), nullptr, "Pick(x as variant) as integer"},
       {at(pickInteger), nullptr, "Pick(x as integer) as integer"},
       {at(pickDouble), nullptr, "Pick(x as double) as integer"},
       {at(pickInteger), nullptr, "Either(x as Int16)"},
       {at(pickInteger), nullptr, "Either(x as UInt32)"}});
  records.events({"Changed(Items() as ThingZNK, count as integer)", "Done()"});
  records.constants({"kOne=1", "kText=\"a \"\"b\"\"\"", "kHalf = 0.5"});
  records.sharedMethods(
      {{at(key), nullptr, "Key as string"}, {at(twice), nullptr, "Twice(x as integer) as integer"}});
  records.destructor(destroyThing);
  return records;
}

void loadPlugin(int32_t controlVersion) {
  destroyed = 0;
  entry<void(int32_t)>("RegisterPluginVersion")(controlVersion);
  things = std::make_unique<ClassRecords>(thingRecords(controlVersion));
  entry<void(void*)>("PluginRegisterClass")(things->record());
  static uint32_t global[6];
  global[0] = ClassRecords::address(at(globalLength));
  global[2] = ClassRecords::address("Length(text as string) as integer");
  global[3] = 4;
  entry<void(void*)>("PluginRegisterMethod")(global);
}

uint32_t thingDataOffset() {
  return things->word(4);
}

uint32_t thingEvent(size_t event) {
  return things->eventWord(event);
}

int destroyedThings() {
  return destroyed;
}

HostTest::~HostTest() {
  EXPECT_EQ(host::stop(), Texts{});
  EXPECT_EQ(standin::ledgerLine("host object"), 0);
  EXPECT_EQ(standin::ledgerLine("host object lock"), 0);
  EXPECT_EQ(standin::ledgerLine("host string"), 0);
  EXPECT_EQ(standin::ledgerLine("host string lock"), 0);
  EXPECT_EQ(standin::ledgerLine("host string data"), 0);
}

}  // namespace fake
