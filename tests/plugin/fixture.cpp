#include "tests/plugin/fixture.h"

void PluginTest::start(const host::Settings& settings) {
  startWith(host::resolve, settings);
}

void PluginTest::startWith(standin::PluginFile::Resolver* resolver, const host::Settings& settings) {
  host::start(settings);
  plugin_.emplace(pluginPath);
  plugin_->main()(resolver);
  afterStart_ = standin::ledger();
}

void PluginTest::TearDown() {
  standin::clearFailures();
  standin::stopLog();
  if (!host::running()) return;
  EXPECT_EQ(Exceptions(), host::takeExceptions()) << "raised, and nobody looked";
  auto left = host::stop();
  std::erase(left, allowed_);
  EXPECT_EQ(leftBehind_, left);
  EXPECT_EQ(afterStart_, standin::ledger());
}
