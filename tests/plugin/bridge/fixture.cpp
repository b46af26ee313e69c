#include "tests/plugin/bridge/fixture.h"

namespace {

std::vector<std::string> ledgerLines() {
  std::vector<std::string> lines;
  for (const auto& line : standin::ledger()) lines.push_back(std::to_string(line.count) + " " + line.kind);
  return lines;
}

// The plug-in's own entry, found before any failure is planned.
void (*unlockObject)(void*) = nullptr;

}  // namespace

Variant::Variant(const host::Value& value) : array_(host::objectArray({value})) {
  typedef void Get(void* array, int32_t index, void** out);
  const auto procedure = reinterpret_cast<Get* (*)(void*)>(host::resolve("RuntimeArrayDirectGetGetProc"));
  procedure(array_.handle())(array_.handle(), 0, &handle_);
}

Variant::~Variant() {
  if (handle_) unlockObject(handle_);
}

void BridgeTest::start(const host::Settings& settings, const std::set<std::string>& absent,
                       standin::PluginFile::Resolver* resolver) {
  host::start(settings);
  unlockObject = reinterpret_cast<void (*)(void*)>(host::resolve("REALUnlockObject"));
  plugin_.emplace(bridgePath, absent);
  plugin_->main()(resolver);
  afterStart_ = ledgerLines();
}

void BridgeTest::TearDown() {
  standin::clearFailures();
  if (!plugin_) return;
  EXPECT_EQ(nullptr, lastDictionary()) << "a dictionary is remembered after its conversion";
  if (host::running()) {
    EXPECT_EQ(0u, host::takeExceptions().size()) << "raised, and nobody looked";
    EXPECT_EQ(leftBehind_, host::stop());
  }
  EXPECT_EQ(afterStart_, ledgerLines());
}

void* BridgeTest::toVariantAlone(const void* value) {
  return reinterpret_cast<void* (*)(const void*)>(plugin_->symbol("toVariant"))(value);
}

const void* BridgeTest::toCFAlone(const Variant& variant) {
  return reinterpret_cast<const void* (*)(void*)>(plugin_->symbol("toCF"))(variant.handle());
}

host::Value BridgeTest::fromPlugin(void* handle) {
  if (!handle) return {};
  const host::Value value = host::Value::object(host::Ref::share(handle));
  unlockObject(handle);
  return value;
}

host::Value BridgeTest::toVariant(const void* value) {
  return fromPlugin(toVariantAlone(value));
}

CFOwner BridgeTest::toCF(const host::Value& value) {
  return own(toCFAlone(Variant(value)));
}

bool isMachO() {
  return bridgePath.ends_with(".dylib");
}

bool BridgeTest::toCFFails(const host::Value& value, int n) {
  const Variant variant(value);
  standin::failCall(n);
  const CFOwner result(toCFAlone(variant));
  standin::clearFailures();
  host::takeExceptions();  // a host raises, too, for a key or an index that it could not read
  return standin::failuresFired() > 0;
}

CFOwner BridgeTest::toDate(const host::Value& date) {
  return own(reinterpret_cast<const void* (*)(void*)>(plugin_->symbol("toDate"))(date.handle()));
}

CFOwner BridgeTest::toURL(const host::Value& item) {
  return own(reinterpret_cast<const void* (*)(void*)>(plugin_->symbol("toURL"))(item.handle()));
}

void BridgeTest::addPair(const void* key, const void* value, const host::Value& dictionary) {
  const auto function = plugin_->symbol("addPair");
  reinterpret_cast<void (*)(const void*, const void*, void*)>(function)(key, value, dictionary.handle());
}

void* BridgeTest::lastDictionary() {
  return reinterpret_cast<void* (*)()>(plugin_->symbol("lastDictionary"))();
}

CFOwner number(int32_t value) {
  return own(CFNumberCreate(nullptr, kCFNumberSInt32Type, &value));
}

CFOwner number64(int64_t value) {
  return own(CFNumberCreate(nullptr, kCFNumberSInt64Type, &value));
}

CFOwner real(double value) {
  return own(CFNumberCreate(nullptr, kCFNumberFloat64Type, &value));
}

CFOwner text(const std::string& utf8) {
  return own(CFStringCreateWithCString(nullptr, utf8.c_str(), kCFStringEncodingUTF8));
}

CFOwner cfArray(const std::vector<const void*>& values) {
  const auto array = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
  for (const void* value : values) CFArrayAppendValue(array, value);
  return own(array);
}

CFOwner cfDictionary(const std::vector<std::pair<const void*, const void*>>& pairs) {
  const auto dictionary =
      CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
  for (const auto& [key, value] : pairs) CFDictionarySetValue(dictionary, key, value);
  return own(dictionary);
}

std::string utf8(const void* string) {
  const auto text = static_cast<CFStringRef>(string);
  std::string bytes(static_cast<size_t>(CFStringGetLength(text)) * 3 + 1, '\0');
  EXPECT_TRUE(
      CFStringGetCString(text, bytes.data(), static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF8));
  return bytes.c_str();
}
