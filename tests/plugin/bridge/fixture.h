// The value bridge of either binary, in a stand-in host.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "tests/plugin/cf_values.h"
#include "tests/plugin/fixture.h"

// A value as the plug-in gets it from host code, for the time of a scope: locked by the plug-in's side.
class Variant {
 public:
  explicit Variant(const host::Value& value);
  ~Variant();
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  void* handle() const { return handle_; }

 private:
  host::Value array_;
  void* handle_ = nullptr;
};

// The calls that reached the host and the platform while `act` ran, in order, without the requests for
// services; what is released comes with its type.
template <typename Act>
Calls conversionCallsOf(Act act) {
  Calls calls = detailedCallsOf(act);
  std::erase_if(calls, [](const std::string& call) { return call.starts_with("resolve "); });
  return calls;
}

class BridgeTest : public PluginTest {
 protected:
  // The ledger is where it was after start-up, also when the test has stopped the host.
  void TearDown() override;

  // GetCFTypeAsVariant; what it returned has gone to the host's side.
  host::Value toVariant(const void* value);
  // CopyVariantAsCFType of the value in a variant.
  CFOwner toCF(const host::Value& value);
  // The same with the nth call made to fail; whether there was one.
  bool toCFFails(const host::Value& value, int n);
  CFOwner toDate(const host::Value& date);
  CFOwner toURL(const host::Value& item);
  void addPair(const void* key, const void* value, const host::Value& dictionary);
  void* lastDictionary();

  // The two conversions alone: nothing but they reaches the gate. Results come with a reference of the
  // plug-in's side.
  void* toVariantAlone(const void* value);
  const void* toCFAlone(const Variant& variant);
  // What toVariantAlone returned, gone to the host's side.
  static host::Value fromPlugin(void* handle);
};
