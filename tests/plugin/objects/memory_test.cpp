// What the plug-in does when it gets no memory.
#include <cstring>

#include "bridge/strings.h"
#include "host/build_string.h"
#include "host/registration.h"
#include "host/startup.h"
#include "host/string_data.h"
#include "query/query.h"
#include "tests/plugin/objects/fixture.h"

namespace {

class OutOfMemory : public ObjectsTest {};

TEST_F(OutOfMemory, MakesALongCFStringANullStringWithoutAnException) {
  start();
  const auto text =
      adopt(CFStringCreateWithCString(nullptr, std::string(100, 'x').c_str(), kCFStringEncodingUTF8));
  outOfMemory = true;
  EXPECT_FALSE(CFString2RBString(text.get()));
}

TEST_F(OutOfMemory, OfACFStringOf100UnitsIsOf600BytesAndOneOf99TakesNone) {
  start();
  for (const size_t length : {99u, 100u, 101u, 100000u}) {
    const auto text =
        adopt(CFStringCreateWithCString(nullptr, std::string(length, 'x').c_str(), kCFStringEncodingUTF8));
    blocks.clear();
    const auto string = CFString2RBString(text.get());
    const auto taken = blocks;
    EXPECT_EQ(length == 99 ? std::vector<size_t>() : std::vector<size_t>{length * 6}, taken);
  }
}

TEST_F(OutOfMemory, OfUTF32Of800BytesIsOfHalfAsMuchAnd4AndShorterTextTakesNone) {
  start();
  for (const size_t length : {796u, 799u, 800u, 4000u}) {
    const std::string bytes(length, '\0');
    blocks.clear();
    const auto string =
        REALBuildUnicodeString(bytes.data(), static_cast<int64_t>(length), kCFStringEncodingUTF32);
    const auto taken = blocks;
    EXPECT_EQ(length < 800 ? std::vector<size_t>() : std::vector<size_t>{length / 2 + 4}, taken);
  }
}

class Memory : public ObjectsTest {};

TEST_F(Memory, OfLongTextsIsFreedOnceTheStringIsBuilt) {
  start();
  const size_t before = blocksKept();
  const std::string bytes(4000, '\0');
  blocks.clear();
  const auto fromUTF32 = REALBuildUnicodeString(bytes.data(), 4000, kCFStringEncodingUTF32);
  const auto text =
      adopt(CFStringCreateWithCString(nullptr, std::string(1000, 'x').c_str(), kCFStringEncodingUTF8));
  const auto fromCFString = CFString2RBString(text.get());
  EXPECT_TRUE(fromUTF32);
  EXPECT_TRUE(fromCFString);
  EXPECT_EQ((std::vector<size_t>{2004, 6000}), blocks);
  EXPECT_EQ(before, blocksKept());
}

TEST_F(Memory, IsNotAskedForWithoutASizeOrFrom2To31BytesOn) {
  blocks.clear();
  for (const int64_t size : {int64_t{0}, int64_t{-1}, INT64_MIN, int64_t{1} << 31, (int64_t{1} << 32) + 8}) {
    EXPECT_FALSE(allocateZeroed(size)) << size;
  }
  EXPECT_EQ(std::vector<size_t>(), blocks);
  outOfMemory = true;
  EXPECT_FALSE(allocateZeroed(INT32_MAX));
  outOfMemory = false;
  EXPECT_EQ(std::vector<size_t>{INT32_MAX}, blocks);
  blocks.clear();
  const auto one = allocateZeroed(1);
  ASSERT_TRUE(one);
  EXPECT_EQ(0, *one.get());
  EXPECT_EQ(std::vector<size_t>{1}, blocks);
}

TEST_F(OutOfMemory, DoesNotConcernAShortCFString) {
  start();
  const auto text =
      adopt(CFStringCreateWithCString(nullptr, std::string(99, 'x').c_str(), kCFStringEncodingUTF8));
  outOfMemory = true;
  const auto string = CFString2RBString(text.get());
  EXPECT_EQ(std::string(99, 'x'), stringOf(string.get()).bytes());
}

TEST_F(OutOfMemory, MakesLongUTF32ANullStringAndShortUTF32IsNotConcerned) {
  start();
  const std::string bytes(800, '\0');
  outOfMemory = true;
  EXPECT_FALSE(REALBuildUnicodeString(bytes.data(), 800, kCFStringEncodingUTF32));
  EXPECT_TRUE(REALBuildUnicodeString(bytes.data(), 796, kCFStringEncodingUTF32));
}

TEST_F(OutOfMemory, LeavesStringDataUnfilled) {
  host::Settings settings;
  settings.hidden = {"PluginGetStringData", "PluginDisposeStringData"};
  start(settings);
  const auto string = host::Value::string("text", host::kEncodingUtf8);
  outOfMemory = true;
  REALstringData data = {nullptr, 4, 0};
  EXPECT_FALSE(REALGetStringData(handle(string), kUnknownEncoding, &data));
  EXPECT_FALSE(REALGetStringData(handle(string), kCFStringEncodingUTF8, &data));
  EXPECT_FALSE(REALGetStringData(handle(string), kCFStringEncodingWindowsLatin1, &data));
  EXPECT_EQ(nullptr, data.data);
}

uint32_t registered[25];
void takeRecord(REALclassDefinition* record) {
  memcpy(registered, static_cast<void*>(record), sizeof registered);
}
void* resolveRegistration(const char* name) {
  return strcmp(name, "PluginRegisterClass") == 0 ? reinterpret_cast<void*>(takeRecord) : nullptr;
}

TEST_F(OutOfMemory, RegistersAnOldClassWithNullTablesAndTheirCounts) {
  gResolver = resolveRegistration;
  CurrentREALControlVersion = 9;
  REALclassDefinition record = MDQueryClass;
  outOfMemory = true;
  MyREALRegisterClass(&record);
  outOfMemory = false;
  EXPECT_STREQ("MDQueryZNK", reinterpret_cast<const char*>(registered[1]));
  for (const size_t table : {7, 9, 11, 18}) EXPECT_EQ(0u, registered[table]) << table;
  EXPECT_EQ(2u, registered[8]);
  EXPECT_EQ(3u, registered[12]);
  EXPECT_EQ(9u, registered[19]);
}

TEST_F(OutOfMemory, LeavesTheEventsOfAnOldClassWithoutHandlers) {
  gResolver = resolveRegistration;
  CurrentREALControlVersion = 9;
  REALevent events[] = {{"Opened()"}};
  REALclassDefinition record = REALclassDefinition("Sample", 8, nullptr).with(events);
  outOfMemory = true;
  MyREALRegisterClass(&record);
  EXPECT_EQ(nullptr, REALGetEventInstance(nullptr, &events[0]));
  record = MDQueryClass;
  MyREALRegisterClass(&record);
  for (const REALevent& event : MDQueryEvents) EXPECT_EQ(nullptr, REALGetEventInstance(nullptr, &event));
}

}  // namespace
