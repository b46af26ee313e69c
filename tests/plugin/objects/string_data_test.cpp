// REALGetStringData: the bytes of a string, by the host's service or without it.
#include "host/string_data.h"

#include <cstring>

#include "tests/plugin/objects/fixture.h"

namespace {

class StringData : public ObjectsTest {
 protected:
  // A host that has neither the service nor its counterpart.
  void startWithoutService(std::set<std::string> hidden = {}) {
    host::Settings settings;
    hidden.insert({"PluginGetStringData", "PluginDisposeStringData"});
    settings.hidden = std::move(hidden);
    start(settings);
  }
};

const char kCafeUTF8[] = "caf\xC3\xA9";
const char kCafeLatin1[] = "caf\xE9";

TEST_F(StringData, IsTheServicesAnswerWhereTheHostHasIt) {
  start();
  const auto string = host::Value::string(kCafeUTF8, host::kEncodingUtf8);
  REALstringData data = {};
  EXPECT_EQ((std::vector<std::string>{"resolve PluginGetStringData", "PluginGetStringData"}), callsOf([&] {
              EXPECT_TRUE(REALGetStringData(handle(string), kCFStringEncodingWindowsLatin1, &data));
            }));
  EXPECT_EQ(kCafeLatin1, std::string(data.data, static_cast<size_t>(data.length)));
  EXPECT_EQ(host::kEncodingWindowsLatin1, data.encoding);
  REALDisposeStringData(&data);
}

TEST_F(StringData, WithoutTheServiceIsConvertedWhenAnotherEncodingIsAskedFor) {
  startWithoutService();
  const auto string = host::Value::string(kCafeUTF8, host::kEncodingUtf8);
  REALstringData data = {};
  EXPECT_EQ((std::vector<std::string>{"resolve PluginGetStringData", "resolve StringGetCString",
                                      "resolve REALLoadGlobalMethod", "REALLoadGlobalMethod",
                                      "resolve REALGetStringEncoding", "REALGetStringEncoding",
                                      "resolve REALConvertString", "REALConvertString", "LenB",
                                      "StringGetCString", "resolve REALUnlockString", "REALUnlockString"}),
            callsOf([&] {
              EXPECT_TRUE(REALGetStringData(handle(string), kCFStringEncodingWindowsLatin1, &data));
            }));
  EXPECT_EQ(4, data.length);
  EXPECT_EQ(host::kEncodingWindowsLatin1, data.encoding);
  EXPECT_EQ(0, memcmp(data.data, "caf\xE9\0\0\0\0", 8));  // four zero bytes end the text
  free(data.data);
}

TEST_F(StringData, WithoutTheServiceIsCopiedWhenItsOwnEncodingIsAskedForByNumber) {
  startWithoutService();
  const auto string = host::Value::string(kCafeUTF8, host::kEncodingUtf8);
  REALstringData data = {};
  EXPECT_TRUE(REALGetStringData(handle(string), kCFStringEncodingUTF8, &data));
  EXPECT_EQ(5, data.length);
  EXPECT_EQ(host::kEncodingUtf8, data.encoding);
  EXPECT_EQ(0, memcmp(data.data, "caf\xC3\xA9\0\0\0\0", 9));
  free(data.data);
}

TEST_F(StringData, WithoutTheServiceSizesTheBlockForTheOwnEncodingFromTheRecord) {
  startWithoutService();
  const auto string = host::Value::string(kCafeUTF8, host::kEncodingUtf8);
  REALstringData data = {nullptr, 100, 0};
  blocks.clear();
  EXPECT_TRUE(REALGetStringData(handle(string), kUnknownEncoding, &data));
  EXPECT_EQ(std::vector<size_t>{104}, blocks);
  EXPECT_EQ(5, data.length);
  EXPECT_EQ(0, memcmp(data.data, "caf\xC3\xA9\0\0\0\0", 9));
  free(data.data);
}

TEST_F(StringData, OfItsOwnEncodingGetsABlockOfItsLengthAnd4) {
  startWithoutService();
  for (const size_t length : {size_t{1}, size_t{4}, size_t{5}, size_t{1000}, size_t{100000}}) {
    const auto string = host::Value::string(std::string(length, 'x'), host::kEncodingUtf8);
    blocks.clear();
    const ScopedStringData data(handle(string));
    EXPECT_EQ(std::vector<size_t>{length + 4}, blocks);
    ASSERT_TRUE(data.bytes());
    EXPECT_EQ(static_cast<int32_t>(length), data.length());
    EXPECT_EQ(std::string(length, 'x'), data.bytes());
    EXPECT_EQ(0, memcmp(data.bytes() + length, "\0\0\0\0", 4));
  }
}

TEST_F(StringData, OfItsOwnEncodingIsSizedFirstAndThenCopied) {
  startWithoutService();
  const auto string = host::Value::string("text", host::kEncodingUtf8);
  EXPECT_EQ((std::vector<std::string>{
                "resolve PluginGetStringData", "resolve StringGetCString", "resolve REALLoadGlobalMethod",
                "REALLoadGlobalMethod", "LenB",                             // the record is sized
                "resolve PluginGetStringData", "LenB", "StringGetCString",  // the copy is made
                "resolve PluginDisposeStringData"}),                        // and freed
            callsOf([&] { const ScopedStringData data(handle(string)); }));
}

TEST_F(StringData, IsFalseForNullWithoutTheService) {
  startWithoutService();
  REALstringData data = {nullptr, 7, 8};
  EXPECT_FALSE(REALGetStringData(nullptr, kCFStringEncodingUTF8, &data));
  EXPECT_EQ(nullptr, data.data);
}

TEST_F(StringData, IsFalseWithoutTheBytes) {
  startWithoutService({"StringGetCString"});
  const auto string = host::Value::string("text", host::kEncodingUtf8);
  REALstringData data = {};
  EXPECT_FALSE(REALGetStringData(handle(string), kCFStringEncodingUTF8, &data));
  EXPECT_FALSE(ScopedStringData(handle(string)).bytes());
}

char* noBytes(REALstring) {
  return nullptr;
}
void* resolveWithoutBytes(const char* name) {
  return strcmp(name, "StringGetCString") == 0 ? reinterpret_cast<void*>(noBytes) : host::resolve(name);
}

TEST_F(StringData, IsFalseWhenTheHostTellsNoBytes) {
  startWithoutService();
  gResolver = resolveWithoutBytes;
  const auto string = host::Value::string("text", host::kEncodingUtf8);
  const size_t before = blocksKept();
  REALstringData data = {};
  EXPECT_FALSE(REALGetStringData(handle(string), kCFStringEncodingUTF8, &data));
  EXPECT_EQ(nullptr, data.data);
  EXPECT_FALSE(ScopedStringData(handle(string)).bytes());
  EXPECT_EQ(before, blocksKept());
}

int32_t lessThanNothing(REALstring) {
  return -1;
}
void* loadLessThanNothing(REALobject, const char*) {
  return reinterpret_cast<void*>(lessThanNothing);
}
void* resolveNegativeLength(const char* name) {
  return strcmp(name, "REALLoadGlobalMethod") == 0 ? reinterpret_cast<void*>(loadLessThanNothing)
                                                   : host::resolve(name);
}

TEST_F(StringData, OfANegativeLengthCopiesNothing) {
  startWithoutService();
  gResolver = resolveNegativeLength;
  const auto string = host::Value::string("text", host::kEncodingUtf8);
  REALstringData data = {};
  EXPECT_TRUE(REALGetStringData(handle(string), kCFStringEncodingUTF8, &data));
  EXPECT_EQ(-1, data.length);
  EXPECT_EQ(0, memcmp(data.data, "\0\0\0", 3));
  free(data.data);
}

TEST_F(StringData, OfACopyIsFreedOnce) {
  startWithoutService();
  const auto string = host::Value::string("text", host::kEncodingUtf8);
  const size_t before = blocksKept();
  {
    ScopedStringData data(handle(string));
    EXPECT_EQ(before + 1, blocksKept());
    data.reset();
    EXPECT_EQ(before, blocksKept());
    EXPECT_EQ(nullptr, data.bytes());
    data.reset();
  }
  EXPECT_EQ(before, blocksKept());
}

// A host that throws when the bytes come back.
int givenBack = 0;
void throwOnReturn(REALstringData*) {
  ++givenBack;
  throw 7;
}
void* resolveThrowing(const char* name) {
  return strcmp(name, "PluginDisposeStringData") == 0 ? reinterpret_cast<void*>(throwOnReturn)
                                                      : host::resolve(name);
}

TEST_F(StringData, GoesBackOnceAlsoToAHostThatThrows) {
  startWithoutService();
  gResolver = resolveThrowing;
  const auto string = host::Value::string("text", host::kEncodingUtf8);
  char* bytes = nullptr;
  EXPECT_THROW(
      {
        ScopedStringData data(handle(string));
        bytes = const_cast<char*>(data.bytes());
        data.reset();
      },
      int);
  EXPECT_EQ(1, givenBack);
  free(bytes);
  EXPECT_THROW(
      {
        const ScopedStringData data(handle(string));
        bytes = const_cast<char*>(data.bytes());
      },
      int);
  EXPECT_EQ(2, givenBack);
  free(bytes);
}

TEST_F(StringData, IsFalseWithoutTheLength) {
  startWithoutService({"REALLoadGlobalMethod"});
  const auto string = host::Value::string("text", host::kEncodingUtf8);
  REALstringData data = {};
  EXPECT_FALSE(REALGetStringData(handle(string), kCFStringEncodingUTF8, &data));
  EXPECT_FALSE(ScopedStringData(handle(string)).bytes());
}

TEST_F(StringData, IsFalseWhenItCantBeConverted) {
  startWithoutService({"REALConvertString"});
  const auto string = host::Value::string("text", host::kEncodingUtf8);
  REALstringData data = {};
  const Calls calls = callsOf(
      [&] { EXPECT_FALSE(REALGetStringData(handle(string), kCFStringEncodingWindowsLatin1, &data)); });
  EXPECT_EQ(0, std::count(calls.begin(), calls.end(), "LenB"));
}

TEST_F(StringData, GoesBackToTheHostWhereItCameFromTheHost) {
  start();
  const auto string = host::Value::string("text", host::kEncodingUtf8);
  EXPECT_EQ((std::vector<std::string>{"resolve PluginGetStringData", "PluginGetStringData",
                                      "resolve PluginDisposeStringData", "PluginDisposeStringData"}),
            callsOf([&] { const ScopedStringData data(handle(string)); }));
}

}  // namespace
