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

// A host in which one service throws, at its nth use.

struct Thrown {};

const char* throwingName = nullptr;
int usesLeft = 0;
void throwNow() {
  throw Thrown();
}
void* resolveWithThrower(const char* name) {
  const bool thrower = throwingName && strcmp(name, throwingName) == 0;
  return thrower && --usesLeft < 0 ? reinterpret_cast<void*>(throwNow) : host::resolve(name);
}

class Passing : public PluginTest {
 protected:
  void TearDown() override {
    throwingName = nullptr;
    PluginTest::TearDown();
  }
};

// What host code does with every class, as far as an exception lets it. It makes what it needs before the
// service that throws is found.
struct Use {
  host::Value query =
      host::construct("MDQueryZNK", "kMDItemFSName == \"*\"", host::stringArray({"kMDItemFSName"}));
};

TEST_F(Passing, AnExceptionOfAnyServiceComesOutAsItWasThrown) {
  TempTree tree;
  tree.add("one");
  tree.index();
  int passed = 0;
  for (const std::string& name : host::entryPointNames()) {
    SCOPED_TRACE(name);
    throwingName = nullptr;
    host::Settings settings;
    startWith(resolveWithThrower, settings);
    {
      const host::Value lists = host::stringArray({"kMDItemFSName"});
      throwingName = name.c_str();
      usesLeft = 0;
      try {
        const host::Value query = host::construct("MDQueryZNK", "kMDItemFSName == \"*\"", lists);
        host::call(query, "Execute", 1);
        host::call(query, "ValueListAttributes");
        host::call(query, "QueryString");
        const host::Value results = host::call(query, "Results");
        for (const auto& item : host::elements(results)) host::get(item, "Path");
        host::call(host::newInstance("MDQueryZNK"), "Stop");
      } catch (const Thrown&) {
        ++passed;
      }
      throwingName = nullptr;
      host::takeExceptions();
    }
    host::stop();
  }
  EXPECT_GE(passed, 10);
}

}  // namespace
