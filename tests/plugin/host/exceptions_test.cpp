// How exceptions are raised, and how those of others pass through.
#include "tests/plugin/sweeps/everything.h"

namespace {

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
  EXPECT_EQ(Exceptions{kNilQuery}, host::takeExceptions());
}

// The encodings of the texts that the plug-in set as properties.
std::vector<uint32_t> setEncodings;
bool setString(void* object, const char* name, void* string) {
  typedef uint32_t EncodingOf(void* string);
  setEncodings.push_back(reinterpret_cast<EncodingOf*>(host::resolve("REALGetStringEncoding"))(string));
  return reinterpret_cast<decltype(&setString)>(host::resolve("REALSetPropValueString"))(object, name,
                                                                                         string);
}
void* resolveNotingEncodings(const char* name) {
  if (std::string_view(name) == "REALSetPropValueString") return reinterpret_cast<void*>(setString);
  return host::resolve(name);
}

TEST_F(Raising, MarksTheMessageAsASCII) {
  startWith(resolveNotingEncodings);
  setEncodings.clear();
  raise();
  EXPECT_EQ(Exceptions{kNilQuery}, host::takeExceptions());
  EXPECT_EQ(std::vector<uint32_t>{host::kEncodingAscii}, setEncodings);
}

TEST_F(Raising, AClassThatTheHostDoesNotKnowRaisesARuntimeExceptionOfTheSameMessage) {
  host::Settings settings;
  settings.unknownClasses = {"NilObjectException"};
  start(settings);
  raise();
  EXPECT_EQ((Exceptions{host::Exception{"RuntimeException", "MDQuery Reference is nil", 0}}),
            host::takeExceptions());
}

TEST_F(Raising, WithoutAnyExceptionClassRaisesNothing) {
  host::Settings settings;
  settings.unknownClasses = {"NilObjectException", "RuntimeException"};
  start(settings);
  raise();
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(Raising, WithoutAMessageStringRaisesAnEmptyMessage) {
  start();
  standin::failCall("REALBuildString", 1);
  raise();
  EXPECT_EQ((Exceptions{host::Exception{"NilObjectException", "", 0}}), host::takeExceptions());
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
    // Without a number of the plug-in's the exception has the one that this host gives to new ones.
    testing::Values(MissingCase{"REALSetPropValueString", {{"NilObjectException", "", 0}}},
                    MissingCase{"REALSetPropValueInt",
                                {{"NilObjectException", "MDQuery Reference is nil", -1}}},
                    MissingCase{"REALBuildString", {{"NilObjectException", "", 0}}},
                    MissingCase{"REALSetStringEncoding", {kNilQuery}},
                    MissingCase{"RuntimeRaiseException", {}}, MissingCase{"PluginNewInstance", {}}));

TEST_F(Raising, AtOnceGivesBackTheExceptionAndItsMessageWhileUnwinding) {
  host::Settings settings;
  settings.raiseByUnwinding = true;
  start(settings);
  for (int i = 0; i < 100; ++i) {
    raise();
    EXPECT_EQ(Exceptions{kNilQuery}, host::takeExceptions());
  }
}

// A host in which one service throws.

// Those that start-up calls, and nothing later.
const std::set<std::string> kOfStartUp = {"RegisterPluginVersion", "REALGetRBVersion", "REALinRuntime",
                                          "PluginRegisterClass", "PluginRegisterMethod"};

class ThrowingAtStartUp : public PluginTest, public testing::WithParamInterface<std::string> {};

TEST_P(ThrowingAtStartUp, ComesOutLeavesNothingButTheFrameworkAndSparesTheNextPlugIn) {
  const auto before = ledgerWithoutFramework();
  standin::throwFromCall(GetParam().c_str(), 1);
  EXPECT_THROW(start(), standin::PlannedException);
  EXPECT_EQ(std::vector<std::string>(), host::stop());
  EXPECT_EQ(before, ledgerWithoutFramework());
  start();
  EXPECT_EQ(3u, host::registeredClasses().size());
  EXPECT_EQ(1u, host::globalMethods().size());
}

INSTANTIATE_TEST_SUITE_P(Services, ThrowingAtStartUp, testing::ValuesIn(kOfStartUp));

// Every call that reaches the host in use, made to throw in its turn.

struct Host {
  double version;
  bool conversion;  // whether it converts strings itself

  host::Settings settings() const {
    host::Settings settings = settingsOf(version);
    if (!conversion) settings.hidden.insert("REALGetStringCFString");
    return settings;
  }
};
const Host kHosts[] = {{2014.1, true}, {2014.1, false}, {2011.04, false}};

// What was to be given back stays, where it is the giving back itself that throws: these have a test of their
// own.
const std::set<std::string> kGivingBack = {"REALUnlockObject", "REALUnlockString", "PluginDisposeStringData"};

// Called where other services are missing, on none of the hosts above.
const std::set<std::string> kUnused = {
    "FolderItemFromFSSpec",  "REALConvertString",      "REALFSSpecFromFolderItem", "REALGetPropValueDouble",
    "REALGetPropValueInt64", "REALGetPropValueSingle", "REALGetPropValueString",   "StringGetCString"};

std::vector<std::string> passingServices() {
  std::vector<std::string> services;
  for (const std::string& name : host::entryPointNames()) {
    if (!kOfStartUp.count(name) && !kGivingBack.count(name)) services.push_back(name);
  }
  return services;
}

class ThrowingService : public PluginTest {
 protected:
  ThrowingService() {
    for (const char* name : {"f1", "f2"}) tree_.file(name, "xxx");
    standin::setIndexedFolders({tree_.path()});
    allowLeftBehind("host array of 0");  // of the methods that make their array before they find no query
  }

  ScratchFolder tree_;
};

class PassingThrough : public ThrowingService, public testing::WithParamInterface<std::string> {
 protected:
  // Makes each call of the service throw in its turn, and tells how many did.
  int throwFromEachCall(const Scenario& scenario) const {
    for (int n = 1;; ++n) {
      standin::throwFromCall(GetParam().c_str(), n);
      try {
        play(scenario, tree_.path());
        return n - 1;
      } catch (const standin::PlannedException&) {
        host::takeExceptions();
      }
    }
  }
};

TEST_P(PassingThrough, AnExceptionOfAServiceComesOutAsItWasThrownAndEverythingIsGivenBack) {
  int thrown = 0;
  for (const Host& host : kHosts) {
    SCOPED_TRACE("host " + std::to_string(host.version) + (host.conversion ? "" : " without conversion"));
    start(host.settings());
    for (const Scenario& scenario : scenarios()) thrown += throwFromEachCall(scenario);
    TearDown();
  }
  EXPECT_EQ(kUnused.count(GetParam()) == 0, thrown > 0);
}

INSTANTIATE_TEST_SUITE_P(Services, PassingThrough, testing::ValuesIn(swept(passingServices())));
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(PassingThrough);

TEST_F(ThrowingService, LeavesNoArrayBehindWhereTheKeyIsConvertedAfterTheArrayIsMade) {
  start();
  const host::Value query = host::construct("MDQueryZNK", "kMDItemFSName == \"f1\"");
  ASSERT_TRUE(host::call(query, "Execute", 1).boolean());
  const host::Value item = host::call(query, "ResultAtIndex", 0);
  const std::pair<const host::Value&, const char*> calls[] = {{query, "ValuesOfAttribute"},
                                                              {item, "AttributeStringArray"}};
  for (const auto& [object, method] : calls) {
    const auto before = standin::ledger();
    standin::throwFromCall("REALGetStringCFString", 1);
    EXPECT_THROW(host::call(object, method, "kMDItemFSName"), standin::PlannedException) << method;
    EXPECT_EQ(before, standin::ledger()) << method;
  }
}

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

struct GivingBackCase {
  std::string service;
  Host host;
};
void PrintTo(const GivingBackCase& row, std::ostream* out) {
  *out << row.service << " of host " << row.host.version
       << (row.host.conversion ? "" : " without conversion");
}
class GivingBack : public ThrowingService, public testing::WithParamInterface<GivingBackCase> {
 protected:
  // The same, once it has given back.
  int throwFromEachCall(const Scenario& scenario) const {
    int throws = 0;
    for (bool thrown = true; thrown;) {
      callsUntilItThrows = throws + 1;
      thrown = false;
      try {
        play(scenario, tree_.path());
      } catch (const Thrown&) {
        thrown = true;
        ++throws;
      }
      callsUntilItThrows = 0;
      host::takeExceptions();
    }
    return throws;
  }
};

TEST_P(GivingBack, ThatThrowsWhenItIsDoneLeavesNothingElseBehind) {
  throwingName = GetParam().service;
  startWith(resolveWithThrower, GetParam().host.settings());
  int throws = 0;
  for (const Scenario& scenario : scenarios()) {
    if (!scenario.hasTag) throws += throwFromEachCall(scenario);
  }
  EXPECT_GT(throws, 3);
}

INSTANTIATE_TEST_SUITE_P(Services, GivingBack,
                         testing::ValuesIn(swept(std::vector<GivingBackCase>{
                             {"REALUnlockObject", kHosts[0]},
                             {"REALUnlockString", kHosts[0]},
                             {"REALUnlockString", kHosts[1]},
                             {"PluginDisposeStringData", kHosts[1]},
                             {"REALUnlockObject", kHosts[2]},
                             {"REALUnlockString", kHosts[2]}})));
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(GivingBack);

}  // namespace
