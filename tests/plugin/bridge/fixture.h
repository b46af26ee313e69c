// The value bridge of either binary, in a stand-in host.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "standin/gate/gate.h"
#include "standin/host/host.h"
#include "standin/plugin/plugin_file.h"

namespace host = standin::host;

extern std::string bridgePath;  // what --bridge named

struct CFReleaser {
  void operator()(const void* value) const { CFRelease(value); }
};
typedef std::unique_ptr<const void, CFReleaser> CFOwner;  // of one reference

bool isMachO();  // whether the binary is the dylib

inline CFOwner own(const void* value) {
  return CFOwner(value);
}

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

typedef std::vector<std::string> Calls;

// The calls that reached the host and the platform while `act` ran, in order, without the requests for
// services; what is released comes with its type.
template <typename Act>
Calls detailedCallsOf(Act act) {
  standin::startDetailedLog();
  act();
  Calls calls = standin::stopLog();
  std::erase_if(calls, [](const std::string& call) { return call.starts_with("resolve "); });
  return calls;
}

class BridgeTest : public testing::Test {
 protected:
  // `absent` names platform functions that this plug-in does not find (dylib only).
  void start(const host::Settings& settings = {}, const std::set<std::string>& absent = {},
             standin::PluginFile::Resolver* resolver = host::resolve);
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

  // What the plug-in abandons on purpose.
  void expectLeftBehind(std::vector<std::string> objects) { leftBehind_ = std::move(objects); }

 private:
  std::optional<standin::PluginFile> plugin_;
  std::vector<std::string> afterStart_;
  std::vector<std::string> leftBehind_;
};

// Core Foundation values for tests.
CFOwner number(int32_t value);
CFOwner number64(int64_t value);
CFOwner real(double value);
CFOwner text(const std::string& utf8);
CFOwner cfArray(const std::vector<const void*>& values);
CFOwner cfDictionary(const std::vector<std::pair<const void*, const void*>>& pairs);
std::string utf8(const void* string);
