#include "tests/plugin/bridge/fixture.h"

namespace {

// On the plug-in's side, and no call of its own: none that is logged, or made to fail.
void unlockObject(void* object) {
  const standin::Inside test("the test");
  reinterpret_cast<void (*)(void*)>(host::resolve("REALUnlockObject"))(object);
}

}  // namespace

Variant::Variant(const host::Value& value) : array_(host::objectArray({value})) {
  typedef void Get(void* array, int32_t index, void** out);
  const auto procedure = reinterpret_cast<Get* (*)(void*)>(host::resolve("RuntimeArrayDirectGetGetProc"));
  procedure(array_.handle())(array_.handle(), 0, &handle_);
}

Variant::~Variant() {
  if (handle_) unlockObject(handle_);
}

void BridgeTest::TearDown() {
  standin::clearFailures();
  if (plugin()) {
    EXPECT_EQ(nullptr, lastDictionary()) << "a dictionary is remembered after its conversion";
  }
  PluginTest::TearDown();
  if (plugin()) expectLedgerOfStart();
}

void* BridgeTest::toVariantAlone(const void* value) {
  return reinterpret_cast<void* (*)(const void*)>(plugin()->symbol("toVariant"))(value);
}

const void* BridgeTest::toCFAlone(const Variant& variant) {
  return reinterpret_cast<const void* (*)(void*)>(plugin()->symbol("toCF"))(variant.handle());
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

bool BridgeTest::toCFFails(const host::Value& value, int n) {
  const Variant variant(value);
  standin::failCall(n);
  const CFOwner result(toCFAlone(variant));
  standin::clearFailures();
  host::takeExceptions();  // a host raises, too, for a key or an index that it could not read
  return standin::failuresFired() > 0;
}

CFOwner BridgeTest::toDate(const host::Value& date) {
  return own(reinterpret_cast<const void* (*)(void*)>(plugin()->symbol("toDate"))(date.handle()));
}

CFOwner BridgeTest::toURL(const host::Value& item) {
  return own(reinterpret_cast<const void* (*)(void*)>(plugin()->symbol("toURL"))(item.handle()));
}

void BridgeTest::addPair(const void* key, const void* value, const host::Value& dictionary) {
  const auto function = plugin()->symbol("addPair");
  reinterpret_cast<void (*)(const void*, const void*, void*)>(function)(key, value, dictionary.handle());
}

void* BridgeTest::lastDictionary() {
  return reinterpret_cast<void* (*)()>(plugin()->symbol("lastDictionary"))();
}
