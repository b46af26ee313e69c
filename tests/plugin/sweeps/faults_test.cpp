// Every call to the host and the platform is made to fail in its turn: the plug-in survives, and gives back
// all that it holds.
#include <gmock/gmock.h>

#include "tests/plugin/sweeps/everything.h"
#include "tests/support/tier.h"

namespace {

class Faults : public PluginTest, public testing::WithParamInterface<double> {
 protected:
  host::Settings settings() const {
    host::Settings settings = GetParam() < 2012.0 ? host::oldHost(GetParam()) : host::Settings();
    settings.version = GetParam();
    return settings;
  }
};

TEST_P(Faults, OfEveryCallInUseAreSurvivedWithNeutralValues) {
  TempTree tree;
  for (const char* name : {"f1", "f2"}) tree.add(name, 3);
  tree.index();
  start(settings());
  const auto complete = useEverything(tree.path());
  allowLeftBehind("host array of 0");  // of the methods that make their array before they find no query
  int n = 1;
  for (bool fired = true; fired; ++n) {
    SCOPED_TRACE("the call that fails is number " + std::to_string(n));
    standin::failCall(n);
    const auto answers = useEverything(tree.path());
    fired = standin::failuresFired() > 0;
    ASSERT_EQ(complete.size(), answers.size());
    for (size_t i = 0; i < answers.size(); ++i) {
      const bool same = answers[i].text() == complete[i].text();
      EXPECT_TRUE(same || (answers[i].failed && isDegraded(answers[i], complete[i]))) << answers[i].text();
    }
    if (HasFailure()) break;
  }
  EXPECT_GT(n, 100) << "so many calls, at the least, are made";
}

long frameworks() {
  for (const auto& line : standin::ledger()) {
    if (line.kind == "CFBundle") return line.count;
  }
  return 0;
}

TEST_P(Faults, OfEveryCallInStartUpAreSurvivedAndLeaveNothingButTheFramework) {
  const auto before = ledgerWithoutFramework();
  int n = 2;  // the first, "RegisterPluginVersion", is not supported to fail
  for (bool fired = true; fired; ++n) {
    SCOPED_TRACE("the call that fails is number " + std::to_string(n));
    const long loaded = frameworks();
    standin::failCall(n);
    start(settings());
    fired = standin::failuresFired() > 0;
    EXPECT_LE(frameworks(), loaded + 1);
    TearDown();
    EXPECT_EQ(before, ledgerWithoutFramework());
  }
  EXPECT_GT(n, 10) << "so many calls, at the least, are made";
}

std::vector<double> versions() {
  if (sweepsFewerHosts()) return {2014.1};
  return {2011.04, 2013.9, 2014.1};
}

INSTANTIATE_TEST_SUITE_P(Hosts, Faults, testing::ValuesIn(versions()));

}  // namespace
