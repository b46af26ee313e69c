// A plug-in under test, loaded afresh into a stand-in host. The same tests run against the Mach-O dylib and
// against its ELF twin: they talk to either through the export and the registered tables alone.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "standin/coreservices/metadata/control.h"
#include "standin/host/host.h"
#include "standin/plugin/plugin_file.h"
#include "tests/support/calls.h"
#include "tests/support/ledger.h"
#include "tests/support/sanitizers.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/texts.h"
#include "tests/support/tier.h"

namespace host = standin::host;

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

// A host of this version; one before 2012 lacks the services that came with 2012.
host::Settings settingsOf(double version);

// The parameters of a test that takes something away from every call or service in its turn: none for the
// dylib under the address sanitizer: it is not instrumented, and the build without sanitizers sweeps it. A
// suite that uses this may have no instance (GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST).
template <typename Case>
std::vector<Case> swept(std::vector<Case> cases) {
  return isMachO() && underAddressSanitizer() ? std::vector<Case>() : cases;
}

// The host versions that sweeps are made on. Under the address sanitizer everything takes many times as long:
// there it is the oldest and the newest, but for the long tier.
inline std::vector<double> sweptVersions(const std::vector<double>& versions) {
  if (!underAddressSanitizer() || isLongTier()) return versions;
  return {versions.front(), versions.back()};
}

const host::Exception kNilQuery = {"NilObjectException", "MDQuery Reference is nil", 0};
const host::Exception kNilItem = {"NilObjectException", "MDItem Reference is nil", 0};

typedef std::vector<host::Exception> Exceptions;

class PluginTest : public testing::Test {
 protected:
  // No folder is indexed until the test says which, and what is undefined ends the process.
  PluginTest();

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

  // A test that has stopped the host itself has nothing more to show.
  void TearDown() override;
  void expectLedgerOfStart() const;

  // Null before the first start.
  const standin::PluginFile* plugin() const { return plugin_ ? &*plugin_ : nullptr; }

 private:
  std::optional<standin::PluginFile> plugin_;
  LedgerLines afterStart_;
  std::vector<std::string> leftBehind_;
  std::string allowed_;
};

// The ledger without the framework that start-up keeps when it could be loaded.
LedgerLines ledgerWithoutFramework();
