#include "tests/plugin/fixture.h"

#include <cstring>
#include <fstream>

#include "standin/coreservices/metadata/planned_answers.h"

std::string pluginPath;

// An old host's tables are kept for the life of the process on purpose; once the plug-in is unloaded the leak
// sanitizer loses sight of them.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:PluginTest::startWith\n";
}

bool isMachO() {
  static const bool result = [] {
    char magic[4] = {};
    std::ifstream(pluginPath, std::ios::binary).read(magic, sizeof magic);
    return std::memcmp(magic, "\xCE\xFA\xED\xFE", sizeof magic) == 0;
  }();
  return result;
}

host::Settings settingsOf(double version) {
  host::Settings settings = version < 2012.0 ? host::oldHost(version) : host::Settings();
  settings.version = version;
  return settings;
}

PluginTest::PluginTest() {
  standin::setIndexedFolders({});
  standin::setUndefined(standin::Undefined::End);
}

void PluginTest::start(const host::Settings& settings, const std::set<std::string>& absent) {
  startWith(host::resolve, settings, absent);
}

void PluginTest::startWith(standin::PluginFile::Resolver* resolver, const host::Settings& settings,
                           const std::set<std::string>& absent) {
  host::start(settings);
  plugin_.emplace(pluginPath, absent);
  plugin_->main()(resolver);
  afterStart_ = standin::ledger();
}

void PluginTest::TearDown() {
  standin::clearFailures();
  standin::clearAnswers();
  standin::stopLog();
  if (!host::running()) return;
  EXPECT_EQ(Exceptions(), host::takeExceptions()) << "raised, and nobody looked";
  auto left = host::stop();
  std::erase(left, allowed_);
  EXPECT_EQ(leftBehind_, left);
  expectLedgerOfStart();
}

void PluginTest::expectLedgerOfStart() const {
  EXPECT_EQ(afterStart_, standin::ledger());
}

LedgerLines ledgerWithoutFramework() {
  LedgerLines lines = standin::ledger();
  std::erase_if(lines, [](const standin::LedgerLine& line) { return line.kind == "CFBundle"; });
  return lines;
}
