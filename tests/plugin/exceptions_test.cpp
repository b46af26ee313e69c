// How exceptions are raised, and how those of others pass through.
#include <gmock/gmock.h>

#include "tests/plugin/everything.h"
#include "tests/tier.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Raising : public PluginTest {
 protected:
  // Makes the plug-in raise "MDQuery Reference is nil".
  static void raise() { host::call(host::newInstance("MDQueryZNK"), "Stop"); }
};

TEST_F(Raising, MakesTheMessageThenTheExceptionAndGivesBothBack) {
  start();
  raise();
  host::takeExceptions();
  EXPECT_EQ((Calls{"REALBuildString", "REALSetStringEncoding", "PluginNewInstance", "REALSetPropValueString",
                   "REALSetPropValueInt", "RuntimeRaiseException", "REALUnlockObject", "REALUnlockString"}),
            callsOf(raise));
  EXPECT_THAT(host::takeExceptions(), ElementsAre(kNilQuery));
}

TEST_F(Raising, AClassThatTheHostDoesNotKnowRaisesARuntimeExceptionOfTheSameMessage) {
  host::Settings settings;
  settings.unknownClasses = {"NilObjectException"};
  start(settings);
  raise();
  EXPECT_THAT(host::takeExceptions(),
              ElementsAre(host::Exception{"RuntimeException", "MDQuery Reference is nil", 0}));
}

TEST_F(Raising, WithoutAnyExceptionClassRaisesNothing) {
  host::Settings settings;
  settings.unknownClasses = {"NilObjectException", "RuntimeException"};
  start(settings);
  raise();
  EXPECT_THAT(host::takeExceptions(), IsEmpty());
}

TEST_F(Raising, WithoutAMessageStringRaisesAnEmptyMessage) {
  start();
  standin::failCall("REALBuildString", 1);
  raise();
  EXPECT_THAT(host::takeExceptions(), ElementsAre(host::Exception{"NilObjectException", "", 0}));
}

struct MissingCase {
  const char* service;
  Exceptions raised;
};
void PrintTo(const MissingCase& row, std::ostream* out) {
  *out << row.service;
}
class RaisingWithout : public Raising, public testing::WithParamInterface<MissingCase> {};

TEST_P(RaisingWithout, LeavesOutThatStep) {
  host::Settings settings;
  settings.hidden = {GetParam().service};
  start(settings);
  raise();
  EXPECT_EQ(GetParam().raised, host::takeExceptions());
}

INSTANTIATE_TEST_SUITE_P(
    Services, RaisingWithout,
    testing::Values(MissingCase{"REALSetPropValueString", {{"NilObjectException", "", 0}}},
                    MissingCase{"REALSetPropValueInt", {kNilQuery}},
                    MissingCase{"REALBuildString", {{"NilObjectException", "", 0}}},
                    MissingCase{"REALSetStringEncoding", {kNilQuery}},
                    MissingCase{"RuntimeRaiseException", {}}, MissingCase{"PluginNewInstance", {}}));

TEST_F(Raising, AtOnceGivesBackTheExceptionAndItsMessageWhileUnwinding) {
  host::Settings settings;
  settings.raiseByUnwinding = true;
  start(settings);
  for (int i = 0; i < 100; ++i) {
    raise();
    EXPECT_THAT(host::takeExceptions(), ElementsAre(kNilQuery));
  }
}

// A host in which one service throws.

// Every call that reaches the host in use, made to throw in its turn.

struct PassingCase {
  std::string service;
  double version;
  bool conversion;  // whether the host converts strings itself
};
void PrintTo(const PassingCase& row, std::ostream* out) {
  *out << row.service << " of host " << row.version << (row.conversion ? "" : " without conversion");
}

std::vector<PassingCase> passingCases() {
  std::vector<PassingCase> cases;
  for (const std::string& name : host::entryPointNames()) {
    cases.push_back({name, 2014.1, true});
    if (sweepsFewerHosts()) continue;
    cases.push_back({name, 2014.1, false});
    cases.push_back({name, 2011.04, false});
  }
  return cases;
}

host::Settings settingsOf(const PassingCase& row) {
  host::Settings settings = row.version < 2012.0 ? host::oldHost(row.version) : host::Settings();
  if (!row.conversion) settings.hidden.insert("REALGetStringCFString");
  return settings;
}

// What was to be given back stays, where it is the giving back itself that throws: these have a test of their
// own.
const std::set<std::string> kGivingBack = {"REALUnlockObject", "REALUnlockString", "PluginDisposeStringData"};

int thrownInAll = 0;

class PassingThrough : public PluginTest, public testing::WithParamInterface<PassingCase> {
 protected:
  PassingThrough() {
    for (const char* name : {"f1", "f2"}) tree_.add(name, 3);
    tree_.index();
  }
  static void TearDownTestSuite() { EXPECT_GT(thrownInAll, 100) << "so many calls, at the least, are made"; }

  TempTree tree_;
};

TEST_P(PassingThrough, AnExceptionOfAServiceComesOutAsItWasThrownAndEverythingIsGivenBack) {
  if (kGivingBack.count(GetParam().service)) return;
  start(settingsOf(GetParam()));
  bool thrown = true;
  for (int n = 1; thrown; ++n) {
    thrown = false;
    standin::throwFromCall(GetParam().service.c_str(), n);
    try {
      useEverything(tree_.path());
    } catch (const standin::PlannedException&) {
      thrown = true;
      ++thrownInAll;
    }
    host::takeExceptions();
  }
  allowLeftBehind("host array of 0");  // of the methods that make their array before they find no query
}

INSTANTIATE_TEST_SUITE_P(Services, PassingThrough, testing::ValuesIn(passingCases()));

// A service that gives back, and then throws, once.
struct Thrown {};
std::string throwingName;
int callsUntilItThrows = 0;
template <typename Argument>
void giveBackAndThrow(Argument* argument) {
  reinterpret_cast<void (*)(Argument*)>(host::resolve(throwingName.c_str()))(argument);
  if (--callsUntilItThrows == 0) throw Thrown();
}
void* resolveWithThrower(const char* name) {
  return name == throwingName ? reinterpret_cast<void*>(giveBackAndThrow<void>) : host::resolve(name);
}

class GivingBack : public PassingThrough {};

TEST_P(GivingBack, ThatThrowsWhenItIsDoneLeavesNothingElseBehind) {
  throwingName = GetParam().service;
  startWith(resolveWithThrower, settingsOf(GetParam()));
  bool thrown = true;
  for (int n = 1; thrown; ++n) {
    callsUntilItThrows = n;
    thrown = false;
    try {
      useMethods(tree_.path());
    } catch (const Thrown&) {
      thrown = true;
      ++thrownInAll;
    }
    callsUntilItThrows = 0;
    host::takeExceptions();
  }
  allowLeftBehind("host array of 0");  // as above
}

INSTANTIATE_TEST_SUITE_P(Services, GivingBack,
                         testing::Values(PassingCase{"REALUnlockObject", 2014.1, true},
                                         PassingCase{"REALUnlockString", 2014.1, true},
                                         PassingCase{"REALUnlockString", 2014.1, false},
                                         PassingCase{"PluginDisposeStringData", 2014.1, false},
                                         PassingCase{"REALUnlockObject", 2011.04, false},
                                         PassingCase{"REALUnlockString", 2011.04, false}));

}  // namespace
