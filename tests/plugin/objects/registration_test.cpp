// The records that a host gets, word for word, in both layouts.
#include "host/registration.h"

#include <cstring>

#include "bridge/dictionary_methods.h"
#include "host/startup.h"
#include "query/query.h"
#include "tests/plugin/objects/fixture.h"

namespace {

typedef std::vector<uint32_t> Words;

Words words(const void* data, size_t count) {
  Words result(count);
  memcpy(result.data(), data, count * 4);
  return result;
}

uint32_t word(const void* pointer) {
  return reinterpret_cast<uint32_t>(pointer);
}

// A host that only takes down what it is given.
Words registered;
void takeRecord(REALclassDefinition* record) {
  registered = words(record, 29);
}
void* resolveRegistration(const char* name) {
  return strcmp(name, "PluginRegisterClass") == 0 ? reinterpret_cast<void*>(takeRecord) : nullptr;
}

class Registration : public testing::Test {
 protected:
  void SetUp() override {
    gResolver = resolveRegistration;
    registered.clear();
  }
};

int32_t method(REALobject) {
  return 0;
}

const REALproperty kProperties[] = {REALproperty::field("Handle", "Integer", 4),
                                    REALproperty::field("Tag", "Variant", 8)};
const REALmethodDefinition kMethods[] = {{method, "First as integer"}, {method, "Second as integer"}};
const REALmethodDefinition kThreeMethods[] = {
    {method, "First as integer"}, {method, "Second as integer"}, {method, "Third as integer"}};
const REALconstant kConstants[] = {{"one=1"}, {"two=2"}, {"three=3"}};

struct Class {
  REALevent events[2] = {{"Opened()"}, {"Closed()"}};
  REALclassDefinition record = REALclassDefinition("Sample", 8, nullptr)
                                   .with(kProperties)
                                   .with(kMethods)
                                   .with(events)
                                   .with(kConstants);
};

struct SizeCase {
  uint32_t size;
  uint32_t rounded;
};
void PrintTo(const SizeCase& row, std::ostream* out) {
  *out << row.size;
}
class DataSize : public Registration, public testing::WithParamInterface<SizeCase> {};

TEST_P(DataSize, IsRoundedUpTo16ForEveryControlVersion) {
  for (const int32_t version : {9, 10, 11, 12}) {
    CurrentREALControlVersion = version;
    REALclassDefinition record("Sample", GetParam().size, nullptr);
    MyREALRegisterClass(&record);
    EXPECT_EQ(GetParam().rounded, registered[3]) << version;
    EXPECT_EQ(GetParam().rounded, record.dataSize) << version;
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, DataSize,
                         testing::Values(SizeCase{0, 0}, SizeCase{1, 16}, SizeCase{8, 16}, SizeCase{16, 16},
                                         SizeCase{17, 32}, SizeCase{24, 32}));

TEST_F(Registration, AboveControlVersion9PassesTheRecordUnchangedButForVersionAndSize) {
  for (const int32_t version : {10, 11, 12}) {
    CurrentREALControlVersion = version;
    Class sample;
    Words expected = words(&sample.record, 29);
    expected[0] = static_cast<uint32_t>(version);
    expected[3] = 16;
    MyREALRegisterClass(&sample.record);
    EXPECT_EQ(expected, registered);
    EXPECT_EQ(0u, sample.events[0].systemUse);
  }
}

class OldLayout : public Registration {
 protected:
  void SetUp() override {
    Registration::SetUp();
    CurrentREALControlVersion = 9;
    memset(sample.record.unused, 0xAA, sizeof sample.record.unused);
    before = words(&sample.record, 29);
    MyREALRegisterClass(&sample.record);
  }

  const void* table(size_t index) const { return reinterpret_cast<const void*>(registered[index]); }

  Class sample;
  Words before;
};

TEST_F(OldLayout, KeepsTheWordsThatBothLayoutsHave) {
  Words expected = before;
  expected[0] = 9;
  expected[3] = 16;
  expected[16] = expected[17] = 0;
  for (const size_t replaced : {7, 9, 11, 18}) expected[replaced] = registered[replaced];
  EXPECT_EQ(expected, registered);
}

TEST_F(OldLayout, RewritesThePlugInsOwnRecord) {
  EXPECT_EQ(registered, words(&sample.record, 29));
}

TEST_F(OldLayout, DropsTheLastTwoWordsOfEveryProperty) {
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(words(&kProperties[i], 10), words(static_cast<const uint32_t*>(table(7)) + i * 10, 10));
  }
}

TEST_F(OldLayout, DropsTheLastTwoWordsOfEveryMethod) {
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(words(&kMethods[i], 4), words(static_cast<const uint32_t*>(table(9)) + i * 4, 4));
  }
}

TEST_F(OldLayout, DropsTheLastTwoWordsOfEveryConstant) {
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(words(&kConstants[i], 3), words(static_cast<const uint32_t*>(table(18)) + i * 3, 3));
  }
}

TEST_F(OldLayout, ReachesNoRowBehindATable) {
  REALevent events[] = {{"Opened()"}, {"Closed()"}, {"Behind()"}};
  REALclassDefinition record = REALclassDefinition("Sample", 8, nullptr).with(events);
  record.eventCount = 2;
  MyREALRegisterClass(&record);
  EXPECT_NE(0u, events[1].systemUse);
  EXPECT_EQ(0u, events[2].systemUse);
}

TEST_F(OldLayout, IsOneBlockForEachTableInTheRecordsOrder) {
  REALevent events[] = {{"Opened()"}};
  REALclassDefinition record = REALclassDefinition("Sample", 8, nullptr)
                                   .with(kProperties)
                                   .with(kMethods)
                                   .with(events)
                                   .with(kConstants);
  record = record.withShared(kThreeMethods);
  record.sharedProperties = kProperties;
  record.sharedPropertyCount = 1;
  blocks.clear();
  MyREALRegisterClass(&record);
  EXPECT_EQ((std::vector<size_t>{2 * 40, 2 * 16, 1 * 8, 3 * 12, 1 * 40, 3 * 16}), blocks);
}

TEST_F(OldLayout, LinksEveryEventToItsCopyOfTwoWords) {
  const auto copies = static_cast<const uint32_t*>(table(11));
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_EQ((Words{word(sample.events[i].declaration), 0}), words(copies + i * 2, 2));
    EXPECT_EQ(word(copies + i * 2), sample.events[i].systemUse);
  }
}

// The words of a class record that lead to a table; its count stands behind each.
const size_t kTables[] = {7, 9, 11, 18, 21, 23};

// Six tables with two rows each.
REALclassDefinition fullRecord(REALevent (&events)[2]) {
  static const REALconstant kTwo[] = {{"one=1"}, {"two=2"}};
  REALclassDefinition record = REALclassDefinition("Sample", 8, nullptr)
                                   .with(kProperties)
                                   .with(kMethods)
                                   .with(events)
                                   .with(kTwo)
                                   .withShared(kMethods);
  record.sharedProperties = kProperties;
  record.sharedPropertyCount = 2;
  return record;
}

TEST_F(Registration, LeavesAMissingTableNullWithItsCount) {
  CurrentREALControlVersion = 9;
  for (const size_t missing : kTables) {
    REALevent events[2] = {{"Opened()"}, {"Closed()"}};
    REALclassDefinition record = fullRecord(events);
    const uint32_t null = 0;
    memcpy(reinterpret_cast<uint32_t*>(&record) + missing, &null, sizeof null);
    MyREALRegisterClass(&record);
    for (const size_t table : kTables) {
      EXPECT_EQ(table == missing, registered[table] == 0) << table << " without " << missing;
      EXPECT_EQ(2u, registered[table + 1]) << table << " without " << missing;
    }
  }
}

TEST_F(Registration, LeavesAnEmptyTableNullWithItsCount) {
  CurrentREALControlVersion = 9;
  for (const size_t empty : kTables) {
    REALevent events[2] = {{"Opened()"}, {"Closed()"}};
    REALclassDefinition record = fullRecord(events);
    const uint32_t none = 0;
    memcpy(reinterpret_cast<uint32_t*>(&record) + empty + 1, &none, sizeof none);
    MyREALRegisterClass(&record);
    for (const size_t table : kTables) {
      EXPECT_EQ(table == empty, registered[table] == 0) << table << " with " << empty << " empty";
      EXPECT_EQ(table == empty ? 0u : 2u, registered[table + 1]) << table << " with " << empty << " empty";
    }
  }
}

TEST_F(Registration, ConvertsSharedPropertiesAndSharedMethodsToo) {
  CurrentREALControlVersion = 9;
  Class sample;
  sample.record.sharedProperties = kProperties;
  sample.record.sharedPropertyCount = 2;
  sample.record.sharedMethods = kMethods;
  sample.record.sharedMethodCount = 2;
  MyREALRegisterClass(&sample.record);
  EXPECT_EQ(words(&kProperties[1], 10), words(reinterpret_cast<const uint32_t*>(registered[21]) + 10, 10));
  EXPECT_EQ(2u, registered[22]);
  EXPECT_EQ(words(&kMethods[1], 4), words(reinterpret_cast<const uint32_t*>(registered[23]) + 4, 4));
  EXPECT_EQ(2u, registered[24]);
}

TEST_F(Registration, FixPropertiesOfNothingIsNull) {
  blocks.clear();
  EXPECT_EQ(nullptr, FixProperties(nullptr, 2));
  EXPECT_EQ(nullptr, FixProperties(kProperties, 0));
  EXPECT_EQ(nullptr, FixProperties(kProperties, -1));
  EXPECT_EQ(nullptr, FixProperties(kProperties, INT32_MIN));
  EXPECT_EQ(std::vector<size_t>(), blocks);
}

TEST_F(Registration, FixPropertiesDoesNotAllocate2To31BytesOrMore) {
  EXPECT_EQ(nullptr, FixProperties(kProperties, 0x7FFFFFFF / 40 + 1));
  EXPECT_EQ(nullptr, FixProperties(kProperties, INT32_MAX));
  blocks.clear();
  EXPECT_EQ(nullptr, FixProperties(kProperties, 107374183));  // 2^32 + 24 bytes
  EXPECT_EQ(nullptr, FixProperties(kProperties, 0x7FFFFFFF / 40 + 1));
  EXPECT_EQ(std::vector<size_t>(), blocks);
}

TEST(ClassRecords, HaveEventsThatNoHostHasWrittenTo) {
  for (const REALevent& event : MDQueryEvents) EXPECT_EQ(0u, event.systemUse);
}

TEST(ClassRecords, WithoutTablesAreZeroBeyondNameSizeAndFlags) {
  const REALclassDefinition record("Sample", 8, nullptr);
  Words expected(29);
  expected[0] = 12;
  expected[1] = word(record.name);
  expected[3] = 8;
  expected[20] = 4;
  EXPECT_EQ(expected, words(&record, 29));
}

TEST(BeforeStartUp, NothingIsKnownOfTheHostOrTheSystem) {
  EXPECT_EQ(nullptr, gResolver);
  EXPECT_EQ(0.0, rbversion);
  EXPECT_EQ(12, CurrentREALControlVersion);
  EXPECT_EQ(nullptr, myMDQueryGetSortOptionFlagsForAttribute);
  EXPECT_EQ(nullptr, myMDQuerySetSortOptionFlagsForAttribute);
  EXPECT_EQ(nullptr, myMDQuerySetSortOrder);
  EXPECT_EQ(nullptr, LastDictionary);
  EXPECT_EQ(nullptr, LastDictionarySetter);
  EXPECT_EQ(nullptr, LastDictionaryGetter);
  EXPECT_EQ(nullptr, LastDictionaryKeyGetter);
}

// The words that the plug-in's own classes are made of.
struct ClassCase {
  const REALclassDefinition* record;
  const char* name;
  uint32_t size;
  int32_t properties, methods, events, constants, sharedMethods;
};
TEST(ClassRecords, HaveTheirCountsFlagsAndSizes) {
  const ClassCase cases[] = {
      {&MDItemClass, "MDItemZNK", 8, 6, 8, 0, 0, 174},
      {&MDQueryClass, "MDQueryZNK", 8, 2, 27, 3, 9, 0},
      {&MDQueryBatchingParamsClass, "MDQueryBatchingParamsZNK", 24, 6, 0, 0, 0, 0},
  };
  for (const ClassCase& row : cases) {
    SCOPED_TRACE(row.name);
    EXPECT_STREQ(row.name, row.record->name);
    EXPECT_EQ(12, row.record->version);
    EXPECT_EQ(nullptr, row.record->superclassName);
    EXPECT_EQ(row.size, row.record->dataSize);
    EXPECT_EQ(nullptr, row.record->constructor);
    EXPECT_EQ(4u, row.record->flags);
    EXPECT_EQ(row.properties, row.record->propertyCount);
    EXPECT_EQ(row.methods, row.record->methodCount);
    EXPECT_EQ(row.events, row.record->eventCount);
    EXPECT_EQ(row.constants, row.record->constantCount);
    EXPECT_EQ(0, row.record->sharedPropertyCount);
    EXPECT_EQ(row.sharedMethods, row.record->sharedMethodCount);
    EXPECT_EQ(0u, row.record->dataOffset);
    EXPECT_EQ(row.properties == 0, row.record->properties == nullptr);
    EXPECT_EQ(row.methods == 0, row.record->methods == nullptr);
    EXPECT_EQ(row.events == 0, row.record->events == nullptr);
    EXPECT_EQ(row.constants == 0, row.record->constants == nullptr);
    EXPECT_EQ(row.sharedMethods == 0, row.record->sharedMethods == nullptr);
    EXPECT_EQ(nullptr, row.record->sharedProperties);
    EXPECT_EQ(nullptr, row.record->eventInstances);
    EXPECT_EQ(nullptr, row.record->interfaces);
    EXPECT_EQ((Words(2, 0)), words(row.record->unused, 2));
    EXPECT_EQ((Words(4, 0)), words(row.record->newer, 4));
    for (int32_t i = 0; i < row.record->propertyCount; ++i) {
      const REALproperty& property = row.record->properties[i];
      EXPECT_EQ(6u, property.flags);
      EXPECT_EQ(nullptr, property.group);
      EXPECT_EQ((Words(5, 0)), words(property.unused, 5));  // and the newer ones
      if (property.setter.hostAccess == HostAccess::kNone) {
        EXPECT_EQ(0u, property.parameter);
      }
    }
    for (int32_t i = 0; i < row.record->methodCount; ++i) {
      EXPECT_EQ(4u, row.record->methods[i].flags);
      EXPECT_EQ((Words(2, 0)), words(row.record->methods[i].newer, 2));
      const bool computed = strstr(row.record->methods[i].declaration, "BatchingParameters");
      EXPECT_EQ(computed, row.record->methods[i].setter != nullptr);
    }
    for (int32_t i = 0; i < row.record->sharedMethodCount; ++i) {
      EXPECT_EQ(4u, row.record->sharedMethods[i].flags);
      EXPECT_EQ(nullptr, row.record->sharedMethods[i].setter);
    }
  }
}

}  // namespace
