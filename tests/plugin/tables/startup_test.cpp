// Start-up: what the plug-in asks of the host and the platform, and in which order.
#include <cmath>
#include <limits>
#include <map>

#include "tests/plugin/fixture.h"

namespace {

class StartUp : public PluginTest {};

const Calls kRegistration = {
    "resolve PluginRegisterClass", "PluginRegisterClass",          "PluginRegisterClass",
    "PluginRegisterClass",         "resolve PluginRegisterMethod", "PluginRegisterMethod",
};

Calls operator+(Calls a, const Calls& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

host::Settings version(double number) {
  host::Settings settings;
  settings.version = number;
  return settings;
}

TEST_F(StartUp, InABuiltApplicationMakesTheseCallsInThisOrder) {
  const Calls calls = callsOf([&] { start(); });
  EXPECT_EQ((Calls{
                 "resolve RegisterPluginVersion",
                 "resolve REALGetRBVersion",
                 "REALGetRBVersion",
                 "RegisterPluginVersion",
                 "resolve REALinRuntime",
                 "REALinRuntime",
                 "FSFindFolder",
                 "CFURLCreateFromFSRef",
                 "CFURLCreateCopyAppendingPathComponent",
                 "CFBundleCreate",
                 "CFBundleLoadExecutable",
                 "CFRelease",  // the appended URL
                 "CFRelease",  // the folder's URL
                 "CFBundleGetFunctionPointerForName",
                 "CFBundleGetFunctionPointerForName",
                 "CFBundleGetFunctionPointerForName",
             } +
             kRegistration),
            calls);
}

TEST_F(StartUp, KeepsTheLoadedFrameworkAndNothingElse) {
  std::map<std::string, long> before;
  for (const auto& line : standin::ledger()) before[line.kind] = line.count;
  start();
  for (const auto& line : standin::ledger()) {
    EXPECT_EQ(before[line.kind] + (line.kind == "CFBundle" ? 1 : 0), line.count) << line.kind;
  }
}

TEST_F(StartUp, InTheDevelopmentEnvironmentLoadsNoFramework) {
  host::Settings settings;
  settings.inRuntime = false;
  const Calls calls = callsOf([&] { start(settings); });
  EXPECT_EQ((Calls{"resolve RegisterPluginVersion", "resolve REALGetRBVersion", "REALGetRBVersion",
                   "RegisterPluginVersion", "resolve REALinRuntime", "REALinRuntime"} +
             kRegistration),
            calls);
}

TEST_F(StartUp, RegistersTheItemThenTheQueryThenTheBatchingParametersAndTheGlobalMethod) {
  start();
  EXPECT_EQ((std::vector<std::string>{"MDItemZNK", "MDQueryZNK", "MDQueryBatchingParamsZNK"}),
            host::registeredClasses());
  ASSERT_EQ(1u, host::globalMethods().size());
  EXPECT_EQ("ShotlightZNK(searchString as string) as integer", host::globalMethods()[0].text);
  EXPECT_EQ(std::vector<std::string>(), host::registrationErrors());
}

struct VersionCase {
  double version;
  int32_t controlVersion;
};
void PrintTo(const VersionCase& row, std::ostream* out) {
  *out << "host " << row.version << " -> control version " << row.controlVersion;
}

class ControlVersion : public PluginTest, public testing::WithParamInterface<VersionCase> {};

TEST_P(ControlVersion, FollowsTheHostVersion) {
  start(version(GetParam().version));
  EXPECT_EQ(GetParam().controlVersion, host::announcedVersion());
  EXPECT_EQ(std::vector<std::string>(), host::registrationErrors());
  EXPECT_EQ(3u, host::registeredClasses().size());
}

INSTANTIATE_TEST_SUITE_P(Hosts, ControlVersion,
                         testing::Values(VersionCase{2009.05, 9}, VersionCase{2011.04, 9},
                                         VersionCase{2012.0, 10}, VersionCase{2012.99, 10},
                                         VersionCase{2013.0, 11}, VersionCase{2013.02, 11},
                                         VersionCase{2013.03, 12}, VersionCase{2013.9, 12},
                                         VersionCase{2014.1, 12}, VersionCase{0.0, 9},
                                         VersionCase{std::numeric_limits<double>::quiet_NaN(), 9}));

TEST_F(StartUp, AHostThatTellsNoVersionGetsControlVersion9) {
  host::Settings settings;
  settings.hasVersion = false;
  start(settings);
  EXPECT_EQ(9, host::announcedVersion());
  EXPECT_EQ(3u, host::registeredClasses().size());
}

TEST_F(StartUp, ASecondTimeInAHostThatTellsNoVersionKeepsTheFirstOne) {
  start(version(2013.0));
  host::stop();
  host::Settings silent;
  silent.hasVersion = false;
  silent.inRuntime = false;  // the framework is kept from the first time
  host::start(silent);
  plugin()->main()(host::resolve);
  EXPECT_EQ(11, host::announcedVersion());
  EXPECT_EQ(3u, host::registeredClasses().size());
}

TEST_F(StartUp, WithoutAServiceForGlobalMethodsTheClassesAreRegisteredAllTheSame) {
  host::Settings settings;
  settings.hidden = {"PluginRegisterMethod"};
  start(settings);
  EXPECT_EQ(3u, host::registeredClasses().size());
  EXPECT_EQ(0u, host::globalMethods().size());
}

TEST_F(StartUp, WithoutAServiceForClassesOnlyTheGlobalMethodIsRegistered) {
  host::Settings settings;
  settings.hidden = {"PluginRegisterClass"};
  start(settings);
  EXPECT_EQ(0u, host::registeredClasses().size());
  EXPECT_EQ(1u, host::globalMethods().size());
}

// Each step that can fail while the framework is loaded, and what is given back then.
struct FailedStep {
  const char* call;
  Calls after;
};
void PrintTo(const FailedStep& row, std::ostream* out) {
  *out << row.call << " fails";
}

class FrameworkLoading : public PluginTest, public testing::WithParamInterface<FailedStep> {};

TEST_P(FrameworkLoading, ThatFailsLeavesNothingBehindAndStartUpGoesOn) {
  standin::failCall(GetParam().call, 1);
  const std::vector<standin::LedgerLine> before = standin::ledger();
  const Calls calls = detailedCallsOf([&] { start(); });
  EXPECT_EQ(1, standin::failuresFired());
  EXPECT_EQ(GetParam().after + kRegistration, afterFirst(GetParam().call, calls));
  EXPECT_EQ(3u, host::registeredClasses().size());
  EXPECT_EQ(before, standin::ledger());
}

INSTANTIATE_TEST_SUITE_P(
    Steps, FrameworkLoading,
    testing::Values(FailedStep{"FSFindFolder", {}}, FailedStep{"CFURLCreateFromFSRef", {}},
                    FailedStep{"CFURLCreateCopyAppendingPathComponent", {"CFRelease CFURL"}},
                    FailedStep{"CFBundleCreate", {"CFRelease CFURL", "CFRelease CFURL"}},
                    FailedStep{"CFBundleLoadExecutable",
                               {"CFRelease CFBundle", "CFRelease CFURL", "CFRelease CFURL"}}));

}  // namespace
