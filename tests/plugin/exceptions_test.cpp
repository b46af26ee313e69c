// How exceptions are raised, and how those of others pass through.
#include <gmock/gmock.h>

#include <cstring>

#include "tests/plugin/fixture.h"

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

struct Thrown {};

// Throws at its first use; from then on it answers 0, so that what is given back while the exception passes
// does not throw another.
const char* throwingName = nullptr;
bool thrown = false;
int32_t throwOnce() {
  if (thrown) return 0;
  thrown = true;
  throw Thrown();
}
void* resolveWithThrower(const char* name) {
  const bool throws = throwingName && strcmp(name, throwingName) == 0;
  return throws ? reinterpret_cast<void*>(throwOnce) : host::resolve(name);
}

// All of it that a host does, until something is thrown.
void useUntilItThrows() {
  const host::Value query =
      host::construct("MDQueryZNK", "kMDItemFSName == \"*\"", host::stringArray({"kMDItemFSName"}));
  host::setEventHandler(query, "Finish", [](const std::vector<host::Value>&) {});
  host::call(query, "Execute", 1);
  host::call(query, "ValueListAttributes");
  host::call(query, "QueryString");
  for (const auto& item : host::elements(host::call(query, "Results"))) host::get(item, "Path");
  host::call(query, "ResultAtIndex", 0);
  host::callGlobal("ShotlightZNK", "text");
  host::call(host::newInstance("MDQueryZNK"), "Stop");
}

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
    cases.push_back({name, 2014.1, false});
    cases.push_back({name, 2011.04, false});
  }
  return cases;
}

// Nothing can be given back by a service that throws.
const std::set<std::string> kGivingBack = {"REALUnlockObject", "REALUnlockString", "PluginDisposeStringData"};

int thrownInAll = 0;

class PassingThrough : public PluginTest, public testing::WithParamInterface<PassingCase> {
 protected:
  static void TearDownTestSuite() {
    EXPECT_GT(thrownInAll, 30) << "so many services, at the least, are used";
  }
};

TEST_P(PassingThrough, AnExceptionOfAServiceComesOutAsItWasThrownAndEverythingIsGivenBack) {
  TempTree tree;
  tree.add("one");
  tree.index();
  host::Settings settings =
      GetParam().version < 2012.0 ? host::oldHost(GetParam().version) : host::Settings();
  if (!GetParam().conversion) settings.hidden.insert("REALGetStringCFString");
  throwingName = nullptr;
  startWith(resolveWithThrower, settings);
  throwingName = GetParam().service.c_str();
  thrown = false;
  try {
    useUntilItThrows();
  } catch (const Thrown&) {
    ++thrownInAll;
  }
  throwingName = nullptr;
  host::takeExceptions();
  if (kGivingBack.count(GetParam().service)) host::stop();
}

INSTANTIATE_TEST_SUITE_P(Services, PassingThrough, testing::ValuesIn(passingCases()));

}  // namespace
