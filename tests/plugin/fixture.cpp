#include "tests/plugin/fixture.h"

#include "standin/coreservices/metadata/planned_answers.h"

bool isMachO() {
  return pluginPath.ends_with(".dylib");
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
  EXPECT_EQ(afterStart_, standin::ledger());
}

std::vector<standin::LedgerLine> ledgerWithoutFramework() {
  auto lines = standin::ledger();
  std::erase_if(lines, [](const standin::LedgerLine& line) { return line.kind == "CFBundle"; });
  return lines;
}
