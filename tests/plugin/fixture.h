// A plug-in under test, loaded afresh into a stand-in host. The same tests run against the Mach-O dylib and
// against its ELF twin: they talk to either through the export and the registered tables alone.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "standin/gate/gate.h"
#include "standin/host/host.h"
#include "standin/plugin/plugin_file.h"
#include "tests/plugin/temp_tree.h"

namespace host = standin::host;

namespace standin {
inline bool operator==(const LedgerLine& a, const LedgerLine& b) {
  return a.kind == b.kind && a.count == b.count;
}
inline void PrintTo(const LedgerLine& line, std::ostream* out) {
  *out << line.count << " " << line.kind;
}
}  // namespace standin

namespace standin::host {
inline bool operator==(const Exception& a, const Exception& b) {
  return a.className == b.className && a.message == b.message && a.errorNumber == b.errorNumber;
}
inline void PrintTo(const Exception& exception, std::ostream* out) {
  *out << exception.className << " \"" << exception.message << "\" " << exception.errorNumber;
}
}  // namespace standin::host

extern std::string pluginPath;  // what --plugin named
bool isMachO();                 // whether that is the dylib

const host::Exception kNilQuery = {"NilObjectException", "MDQuery Reference is nil", 0};
const host::Exception kNilItem = {"NilObjectException", "MDItem Reference is nil", 0};

typedef std::vector<host::Exception> Exceptions;
typedef std::vector<std::string> Calls;

class PluginTest : public testing::Test {
 protected:
  // Starts a host of these settings and, in it, a fresh plug-in. `absent` names platform symbols that this
  // plug-in does not find (dylib only).
  void start(const host::Settings& settings = {}, const std::set<std::string>& absent = {});
  // The same with a resolver of the test's own.
  void startWith(standin::PluginFile::Resolver* resolver, const host::Settings& settings = {},
                 const std::set<std::string>& absent = {});

  // Everything is given back when a test ends: no host object or string is alive but those that the test says
  // here, and the ledger is where it was after start-up.
  void expectLeftBehind(std::vector<std::string> objects) { leftBehind_ = std::move(objects); }

  // The same for any number of objects of this description.
  void allowLeftBehind(const std::string& object) { allowed_ = object; }

  void TearDown() override;

 private:
  std::optional<standin::PluginFile> plugin_;
  std::vector<standin::LedgerLine> afterStart_;
  std::vector<std::string> leftBehind_;
  std::string allowed_;
};

// The calls that reached the platform and the host while `act` ran, in order.
template <typename Act>
Calls callsOf(Act act) {
  standin::startLog();
  act();
  return standin::stopLog();
}

// The same, with the type of what is released: "CFRelease CFString".
template <typename Act>
Calls detailedCallsOf(Act act) {
  standin::startDetailedLog();
  act();
  return standin::stopLog();
}

// The ledger without the framework that start-up keeps when it could be loaded.
std::vector<standin::LedgerLine> ledgerWithoutFramework();

// The last calls of those.
inline Calls lastOf(const Calls& calls, size_t count) {
  return Calls(calls.end() - static_cast<ptrdiff_t>(std::min(count, calls.size())), calls.end());
}
