#include "tests/standin/host/fake_plugin.h"
#include "tests/support/texts.h"

namespace fake {
namespace {

class EitherLayout : public HostTest, public testing::WithParamInterface<int32_t> {};

TEST_P(EitherLayout, TakesTheClassWithAllItsMembersInOrder) {
  loadPlugin(GetParam());
  EXPECT_EQ(host::registrationErrors(), Texts{});
  EXPECT_EQ(host::announcedVersion(), GetParam());
  EXPECT_EQ(host::registeredClasses(), Texts{"ThingZNK"});
  const auto members = host::members("thingznk");
  ASSERT_EQ(members.size(), 5u + 22 + 2 + 2 + 3);
  EXPECT_EQ(members[2].text, "Label As String");
  EXPECT_FALSE(members[2].assignable);
  EXPECT_TRUE(members[4].assignable);
  EXPECT_EQ(members[5].text, "Constructor(text as string)");
  EXPECT_EQ(members[18].name, "Mode");
  EXPECT_TRUE(members[18].assignable);
  EXPECT_EQ(members[27].kind, host::MemberKind::sharedMethod);
  EXPECT_EQ(members[29].text, "Changed(Items() as ThingZNK, count as integer)");
  EXPECT_EQ(members[33].text, "kHalf = 0.5");
  ASSERT_EQ(host::globalMethods().size(), 1u);
  EXPECT_EQ(host::globalMethods()[0].name, "Length");
}

TEST_P(EitherLayout, RunsTheMembersOfEveryTable) {
  loadPlugin(GetParam());
  const auto thing = host::construct("ThingZNK", "four");
  EXPECT_EQ(host::get(thing, "Handle").integer(), 4);
  EXPECT_EQ(host::call(thing, "Limit").integer(), -1);
  EXPECT_EQ(host::get(thing, "Label").text(), "label 4");
  EXPECT_EQ(host::callShared("ThingZNK", "Twice", 21).integer(), 42);
  EXPECT_EQ(host::constant("ThingZNK", "kText").text(), "a \"b\"");
  int finished = 0;
  host::setEventHandler(thing, "Done", [&](const auto&) { ++finished; });
  host::call(thing, "Fire", 1, 0);
  EXPECT_EQ(finished, 1);
}

TEST_P(EitherLayout, TheHostWritesTheDataOffsetAndTheEventsWords) {
  loadPlugin(GetParam());
  EXPECT_NE(thingDataOffset(), 0u);
  EXPECT_NE(thingDataOffset(), 24u);
  EXPECT_NE(thingEvent(0), thingEvent(1));
  EXPECT_NE(thingEvent(0), 0u);
}

INSTANTIATE_TEST_SUITE_P(ControlVersions, EitherLayout, testing::Values(9, 10, 11, 12));

class Registration : public HostTest {
 protected:
  // What the host says to the record; the class is refused exactly when it is not known afterwards.
  std::vector<std::string> errorsOf(ClassRecords& records) {
    entry<void(int32_t)>("RegisterPluginVersion")(12);
    entry<void(void*)>("PluginRegisterClass")(records.record());
    return host::registrationErrors();
  }
  static std::string theOne(const std::vector<std::string>& errors) {
    EXPECT_EQ(errors.size(), 1u) << testing::PrintToString(errors);
    return errors.empty() ? "" : errors[0];
  }
  bool known() { return !host::registeredClasses().empty(); }
};

TEST_F(Registration, EveryClassHasItsOwnDataOffset) {
  ClassRecords one(12, "One", 16), two(12, "Two", 16);
  EXPECT_EQ(errorsOf(one), Texts{});
  EXPECT_EQ(errorsOf(two), Texts{});
  EXPECT_NE(one.word(4), two.word(4));
}

struct BadWord {
  const char* what;
  int word;
  uint32_t value;
  const char* error;
};

class BadClassRecord : public Registration, public testing::WithParamInterface<BadWord> {};

TEST_P(BadClassRecord, IsRefused) {
  ClassRecords records = thingRecords(12);
  records.record();
  records.word(GetParam().word) = GetParam().value;
  entry<void(int32_t)>("RegisterPluginVersion")(12);
  std::vector<uint32_t> copy(&records.word(0), &records.word(0) + 29);
  entry<void(void*)>("PluginRegisterClass")(copy.data());
  EXPECT_FALSE(known());
  EXPECT_PRED_FORMAT2(testing::IsSubstring, GetParam().error, theOne(host::registrationErrors()));
}

INSTANTIATE_TEST_SUITE_P(, BadClassRecord,
                         testing::Values(BadWord{"another version", 0, 11, "11 in the record, 12 announced"},
                                         BadWord{"unrounded size", 3, 8, "multiple of 16"},
                                         BadWord{"too small data", 3, 0, "a field at 0"},
                                         BadWord{"flags", 20, 0, "class flags 0"},
                                         BadWord{"negative count", 10, 0xFFFFFFFF, "a count of -1"},
                                         BadWord{"word 16", 16, 1, "word 16 is not 0"},
                                         BadWord{"word 28", 28, 1, "word 28 is not 0"}),
                         [](const auto& test) {
                           std::string name = test.param.what;
                           std::replace(name.begin(), name.end(), ' ', '_');
                           return name;
                         });

TEST_F(Registration, ADeclarationThatCannotBeParsedIsRefusedWithItsText) {
  ClassRecords records(12, "Bad", 16);
  records.methods({{this, nullptr, "Good"}, {this, nullptr, "Bad(x string)"}});
  const std::string error = theOne(errorsOf(records));
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "Bad: methods, row 2", error);
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "Bad(x string)", error);
  EXPECT_FALSE(known());
}

TEST_F(Registration, AMethodNeedsAFunctionAndTheRightFlags) {
  ClassRecords noFunction(12, "NoFunction", 16), badFlags(12, "BadFlags", 16);
  noFunction.methods({{nullptr, nullptr, "Stop"}});
  badFlags.methods({{this, nullptr, "Stop"}});
  badFlags.record();
  badFlags.table(9)[3] = 6;
  errorsOf(noFunction);
  const std::vector<std::string> errors = errorsOf(badFlags);
  ASSERT_EQ(errors.size(), 2u);
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "no function", errors[0]);
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "flags 6", errors[1]);
}

TEST_F(Registration, RowsOfTheWrongSizeAreFoundOut) {
  ClassRecords old(9, "Mixed", 16);  // old rows in a record that says it is new
  old.methods({{this, nullptr, "One"}, {this, nullptr, "Two"}});
  std::vector<uint32_t> record(old.record(), old.record() + 25);
  record.resize(29);
  record[0] = 12;
  entry<void(int32_t)>("RegisterPluginVersion")(12);
  entry<void(void*)>("PluginRegisterClass")(record.data());
  EXPECT_FALSE(known());
}

TEST_F(Registration, AnEventsClassesMustBeKnownButAMethodsNeedNot) {
  ClassRecords events(12, "Events", 16), methods(12, "Methods", 16);
  events.events({"Progress(Items() as Missing)"});
  methods.methods({{this, nullptr, "Parameters as Missing"}});
  EXPECT_EQ(errorsOf(methods), Texts{});
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "the class Missing is unknown", theOne(errorsOf(events)));
}

TEST_F(Registration, ANullTableWithACountIsNotedAndTheClassTaken) {
  ClassRecords records(12, "Bare", 16);
  records.word(10) = 3;
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "the table of methods is null, its count 3",
                      theOne(errorsOf(records)));
  EXPECT_TRUE(known());
}

TEST_F(Registration, ANameIsTakenOnce) {
  ClassRecords one(12, "Date", 16), two(12, "Own", 16), three(12, "own", 16);
  errorsOf(one);
  errorsOf(two);
  EXPECT_EQ(errorsOf(three), (Texts{"Date: the name is taken", "own: the name is taken"}));
}

TEST_F(HostTest, EveryEntryPointIsFoundUnderItsName) {
  for (const std::string& name : host::entryPointNames())
    EXPECT_NE(host::resolve(name.c_str()), nullptr) << name;
  EXPECT_EQ(host::entryPointNames().size(), 53u);
  EXPECT_EQ(host::resolve("REALNoSuchThing"), nullptr);
}

TEST_F(HostTest, ANameCanBeHiddenOrDelayed) {
  host::settings().hidden = {"REALLockString"};
  host::settings().delayed = {{"REALLockObject", 3}};
  EXPECT_EQ(host::resolve("REALLockString"), nullptr);
  EXPECT_EQ(host::resolve("REALLockObject"), nullptr);
  EXPECT_EQ(host::resolve("REALLockObject"), nullptr);
  EXPECT_NE(host::resolve("REALLockObject"), nullptr);
  EXPECT_NE(host::resolve("REALUnlockObject"), nullptr);
}

TEST_F(HostTest, EveryRequestAndEveryCallIsLoggedInOrder) {
  standin::startLog();
  fake::entry<bool()>("REALinRuntime")();
  host::resolve("Nothing");
  EXPECT_EQ(standin::stopLog(), (Texts{"resolve REALinRuntime", "REALinRuntime", "resolve Nothing"}));
}

TEST_F(HostTest, ARequestCanBeMadeToFail) {
  standin::failCall("resolve REALinRuntime", 2);
  EXPECT_NE(host::resolve("REALinRuntime"), nullptr);
  EXPECT_EQ(host::resolve("REALinRuntime"), nullptr);
  EXPECT_EQ(standin::failuresFired(), 1);
  standin::clearFailures();
}

TEST_F(HostTest, TellsItsVersionAndWhereItRuns) {
  host::settings().version = 2012.02;
  host::settings().inRuntime = false;
  EXPECT_EQ(fake::entry<double()>("REALGetRBVersion")(), 2012.02);
  EXPECT_FALSE(fake::entry<bool()>("REALinRuntime")());
  host::settings().hasVersion = false;
  EXPECT_EQ(host::resolve("REALGetRBVersion"), nullptr);
}

TEST(HostStop, ListsWhatIsAliveAndNeverServesItAgain) {
  host::start();
  loadPlugin();
  const auto thing = host::newInstance("ThingZNK");
  const auto text = host::Value("kept");
  EXPECT_EQ(sorted(host::stop()), sorted({"host object ThingZNK", "host string"}));
  EXPECT_EQ(standin::ledgerLine("host object"), 0);
  EXPECT_EQ(standin::ledgerLine("host string"), 0);
}

}  // namespace
}  // namespace fake
