// Every call to the host and the platform is made to fail in its turn: the plug-in survives, and gives back
// all that it holds.
#include <tuple>

#include "tests/plugin/sweeps/everything.h"

namespace {

class Faults : public PluginTest {
 protected:
  Faults() {
    for (const char* name : {"f1", "f2"}) tree_.file(name, "xxx");
    standin::setIndexedFolders({tree_.path()});
    standin::setUndefined(standin::Undefined::Nothing);  // for queries that lack attributes or results
  }

  // Played once before, so that the plug-in has asked for all services.
  template <typename Play>
  static Answers second(Play play) {
    play();
    return play();
  }

  ScratchFolder tree_;
};

class FaultsInUse : public Faults, public testing::WithParamInterface<std::tuple<double, Scenario>> {};

TEST_P(FaultsInUse, AreSurvivedWithNeutralValues) {
  const Scenario scenario = std::get<Scenario>(GetParam());
  start(settingsOf(std::get<double>(GetParam())));
  const Answers complete = second([&] { return play(scenario, tree_.path()); });
  allowLeftBehind("host array of 0");  // of the methods that make their array before they find no query
  size_t n = 1;
  for (bool fired = true; fired; ++n) {
    SCOPED_TRACE("the call that fails is number " + std::to_string(n));
    standin::failCall(static_cast<int>(n));
    const Answers answers = play(scenario, tree_.path());
    fired = standin::failuresFired() > 0;
    ASSERT_EQ(complete.all().size(), answers.all().size());
    for (size_t i = 0; i < answers.all().size(); ++i) {
      const Answer &left = answers.all()[i], &whole = complete.all()[i];
      EXPECT_TRUE(left.text() == whole.text() || (left.failed && isDegraded(left, whole))) << left.text();
    }
    if (HasFailure()) break;
  }
  EXPECT_GT(n, complete.calls().size()) << "each call has had its turn";
}

const std::vector<double> kVersions = {2011.04, 2013.9, 2014.1};

std::string nameOf(double version) {
  return "Host" + std::to_string(static_cast<int>(version * 100 + 0.5));
}

INSTANTIATE_TEST_SUITE_P(Hosts, FaultsInUse,
                         testing::Combine(testing::ValuesIn(swept(sweptVersions(kVersions))),
                                          testing::ValuesIn(scenarios())),
                         [](const auto& info) {
                           return nameOf(std::get<double>(info.param)) + std::get<Scenario>(info.param).name;
                         });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(FaultsInUse);

class FaultsOfHost : public Faults, public testing::WithParamInterface<double> {};

// The scenarios leave out nothing that the whole script does.
TEST_P(FaultsOfHost, AreMadeInScenariosThatTogetherDoEverything) {
  start(settingsOf(GetParam()));
  const Answers everything = second([this] { return useEverything(tree_.path()); });
  std::set<std::string> calls, answers;
  for (const Scenario& scenario : scenarios()) {
    const Answers some = second([&] { return play(scenario, tree_.path()); });
    calls.insert(some.calls().begin(), some.calls().end());
    for (const std::string& text : textsOf(some.all())) answers.insert(text);
  }
  const std::vector<std::string> texts = textsOf(everything.all());
  EXPECT_EQ(std::set<std::string>(texts.begin(), texts.end()), answers);
  EXPECT_EQ(everything.calls(), calls);
}

long frameworks() {
  for (const auto& line : standin::ledger()) {
    if (line.kind == "CFBundle") return line.count;
  }
  return 0;
}

TEST_P(FaultsOfHost, InStartUpAreSurvivedAndLeaveNothingButTheFramework) {
  const auto before = ledgerWithoutFramework();
  int n = 2;  // the first, "RegisterPluginVersion", is not supported to fail
  for (bool fired = true; fired; ++n) {
    SCOPED_TRACE("the call that fails is number " + std::to_string(n));
    const long loaded = frameworks();
    standin::failCall(n);
    start(settingsOf(GetParam()));
    fired = standin::failuresFired() > 0;
    EXPECT_LE(frameworks(), loaded + 1);
    TearDown();
    EXPECT_EQ(before, ledgerWithoutFramework());
  }
  EXPECT_GT(n, 10) << "so many calls, at the least, are made";
}

INSTANTIATE_TEST_SUITE_P(Hosts, FaultsOfHost, testing::ValuesIn(swept(sweptVersions(kVersions))),
                         [](const auto& info) { return nameOf(info.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(FaultsOfHost);

}  // namespace
