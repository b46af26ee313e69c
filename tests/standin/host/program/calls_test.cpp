#include "tests/standin/host/fake_plugin.h"
#include "tests/support/texts.h"

namespace fake {
namespace {

class Calls : public PluginTest {};

TEST_F(Calls, OverloadsAreChosenByTheArguments) {
  const auto thing = host::construct("ThingZNK", "four");
  EXPECT_EQ(host::call(thing, "Put", "x").text(), "text x");
  EXPECT_EQ(host::call(thing, "Put", 5).text(), "number 5");
  EXPECT_EQ(host::call(thing, "put", thing).text(), "thing 4");
  EXPECT_EQ(host::call(thing, "Put", nullptr).text(), "no thing");
  EXPECT_EQ(host::call(thing, "Put", "x", host::stringArray({"a", "b"})).text(), "names x 1");
  EXPECT_EQ(host::call(thing, "Put", "x", nullptr).text(), "names x -2");
}

TEST_F(Calls, TheNearestOfSeveralFittingOverloadsIsTaken) {
  const auto thing = host::newInstance("ThingZNK");
  EXPECT_EQ(host::call(thing, "Pick", "x").integer(), 1);
  EXPECT_EQ(host::call(thing, "Pick", 5).integer(), 2);
  EXPECT_EQ(host::call(thing, "Pick", 5u).integer(), 2);
  EXPECT_EQ(host::call(thing, "Pick", 5.5).integer(), 3);
  EXPECT_EQ(host::call(thing, "Pick", int64_t{1} << 40).integer(), 3);  // too wide for an integer
}

TEST_F(Calls, MissingArgumentsTakeTheirDefaults) {
  const auto thing = host::newInstance("ThingZNK");
  EXPECT_EQ(host::call(thing, "Limit").integer(), -1);
  EXPECT_EQ(host::call(thing, "Limit", 3).integer(), 3);
  EXPECT_EQ(host::call(thing, "Half", 2, 5.0).number(), 1202.5);
  EXPECT_EQ(host::call(thing, "Half", 2, 5.0, 4).number(), 4202.5);
}

TEST_F(Calls, ArgumentsAndResultsOfEveryWidthArrive) {
  const auto thing = host::newInstance("ThingZNK");
  EXPECT_EQ(host::call(thing, "Third", 1.5f).number(), 0.5);
  EXPECT_EQ(host::call(thing, "Wide", int64_t{0x123456789ABCDEF}).integer(), 0x123456789ABCDF0);
  EXPECT_EQ(host::call(thing, "Wide", -1).integer(), 0);
  EXPECT_FALSE(host::call(thing, "Truth", true).boolean());
  EXPECT_TRUE(host::call(thing, "Truth", false).boolean());
}

TEST_F(Calls, AVariantParameterTakesAnything) {
  const auto thing = host::newInstance("ThingZNK");
  EXPECT_EQ(host::call(thing, "Echo", 5).kind(), host::Kind::int32);
  EXPECT_EQ(host::call(thing, "Echo", int64_t{5}).kind(), host::Kind::int64);
  EXPECT_EQ(host::call(thing, "Echo", 2.5).number(), 2.5);
  EXPECT_EQ(host::call(thing, "Echo", true).boolean(), true);
  EXPECT_EQ(host::call(thing, "Echo", "x").text(), "x");
  EXPECT_EQ(host::call(thing, "Echo", thing).handle(), thing.handle());
  EXPECT_TRUE(host::call(thing, "Echo", nullptr).isNil());
  EXPECT_EQ(host::elements(host::call(thing, "Echo", host::int32Array({1, 2}))).size(), 2u);
}

TEST_F(Calls, AnArrayComesBackWithItsElements) {
  const auto thing = host::newInstance("ThingZNK");
  EXPECT_EQ(host::texts(host::call(thing, "Names")), (Texts{"name 0", "name 1", "name 2"}));
}

TEST_F(Calls, SharedAndGlobalMethodsGetTheirArgumentsAlone) {
  EXPECT_EQ(host::callShared("ThingZNK", "Key").text(), "kKey");
  EXPECT_EQ(host::callShared("ThingZNK", "Twice", 4).integer(), 8);
  EXPECT_EQ(host::callGlobal("length", "four").integer(), 4);
}

TEST_F(Calls, ConstructRunsTheFittingConstructor) {
  const auto one = host::construct("ThingZNK", "four");
  EXPECT_EQ(host::get(host::construct("ThingZNK", one), "Handle").integer(), 14);
  EXPECT_EQ(host::get(host::construct("ThingZNK", one, 1), "Handle").integer(), 5);
  EXPECT_EQ(host::get(host::construct("ThingZNK"), "Handle").integer(), 0);
}

TEST_F(Calls, FieldsAreReadAndWrittenInTheInstanceData) {
  const auto thing = host::newInstance("ThingZNK");
  host::set(thing, "Handle", 0x11223344);
  EXPECT_EQ(*static_cast<int32_t*>(host::instanceData(thing)), 0x11223344);
  EXPECT_EQ(host::get(thing, "handle").integer(), 0x11223344);
}

TEST_F(Calls, AVariantFieldHoldsOneReferenceOfThePlugIns) {
  const auto thing = host::newInstance("ThingZNK");
  host::set(thing, "Tag", "one");
  EXPECT_EQ(standin::ledgerLine("host object lock"), 1);
  host::set(thing, "Tag", 2);
  EXPECT_EQ(standin::ledgerLine("host object lock"), 1);
  EXPECT_EQ(host::get(thing, "Tag").integer(), 2);
  EXPECT_EQ(standin::ledgerLine("host object lock"), 1);
  host::set(thing, "Tag", nullptr);
  EXPECT_EQ(standin::ledgerLine("host object lock"), 0);
  host::set(thing, "Tag", 3.5);  // the plug-in's destructor gives it up
}

TEST_F(Calls, PropertiesWithFunctionsGetTheirParameter) {
  const auto thing = host::construct("ThingZNK", "four");
  EXPECT_EQ(host::get(thing, "Label").text(), "label 4");
  EXPECT_EQ(host::get(thing, "Size").integer(), int64_t{4} << 32);
  host::set(thing, "Level", 100);
  EXPECT_EQ(host::get(thing, "Level").integer(), 100 - 14 + 7);
}

TEST_F(Calls, ANullStringIsNil) {
  const auto label = host::get(host::newInstance("ThingZNK"), "Label");
  EXPECT_EQ(label.kind(), host::Kind::string);
  EXPECT_TRUE(label.isNil());
  EXPECT_EQ(label.text(), "");
}

TEST_F(Calls, AMethodWithASetterIsAProperty) {
  const auto thing = host::newInstance("ThingZNK"), mode = host::construct("ThingZNK", "four");
  host::set(thing, "Mode", mode);
  EXPECT_EQ(host::get(thing, "Mode").handle(), mode.handle());
  host::set(thing, "Mode", nullptr);
  EXPECT_TRUE(host::get(thing, "Mode").isNil());
}

TEST_F(Calls, TheLastReferenceRunsTheDestructorOnce) {
  {
    const auto thing = host::newInstance("ThingZNK");
    const auto other = thing;
  }
  EXPECT_EQ(destroyedThings(), 1);
}

TEST_F(Calls, WhatThePlugInForgetsStaysInTheLedger) {
  const auto thing = host::newInstance("ThingZNK");
  host::call(thing, "Misbehave", 3);
  EXPECT_EQ(standin::ledgerLine("host object lock"), 1);
  EXPECT_EQ(standin::ledgerLine("host object"), 2);
  EXPECT_EQ(host::stop().size(), 2u);
  host::start();
}

TEST_F(Calls, ExceptionsAreRecordedWithWhatTheySay) {
  const auto thing = host::newInstance("ThingZNK");
  EXPECT_EQ(host::call(thing, "Fail").integer(), 5);
  const auto raised = host::takeExceptions();
  ASSERT_EQ(raised.size(), 1u);
  EXPECT_EQ(raised[0].className, "NilObjectException");
  EXPECT_EQ(raised[0].message, "Thing is nil");
  EXPECT_EQ(raised[0].errorNumber, 7);
  EXPECT_TRUE(host::takeExceptions().empty());
}

TEST_F(Calls, AnExceptionCanUnwindThePlugIn) {
  host::settings().raiseByUnwinding = true;
  const auto thing = host::newInstance("ThingZNK");
  EXPECT_EQ(host::call(thing, "Fail").integer(), 0);  // the method never came to its return
  EXPECT_EQ(host::takeExceptions().size(), 1u);
}

TEST_F(Calls, CallsThatThePlugInMakesAreLogged) {
  const auto thing = host::newInstance("ThingZNK");
  host::set(thing, "Tag", 1);
  standin::startLog();
  host::call(thing, "Echo", 5);
  EXPECT_EQ(standin::stopLog(), (Texts{"resolve REALLockObject", "REALLockObject"}));
}

std::string errorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const host::CallError& error) {
    return error.what();
  }
  return "(no error)";
}

TEST_F(Calls, WhatFitsNoOverloadIsAnErrorThatListsThem) {
  const auto thing = host::newInstance("ThingZNK");
  const std::string error = errorOf([&] { host::call(thing, "Put", 2.5); });
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "ThingZNK.Put(2.5 as double) fits none of:", error);
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "Put(number as integer)", error);
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "fits none of",
                      errorOf([&] { host::call(thing, "Put", host::newInstance("Date")); }));
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "fits none of",
                      errorOf([&] { host::call(thing, "Put", "x", host::objectArray({})); }));
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "fits none of",
                      errorOf([&] { host::call(thing, "Limit", int64_t{1} << 40); }));
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "Constructor(text as string)",
                      errorOf([&] { host::construct("ThingZNK", 5); }));
}

TEST_F(Calls, TwoOverloadsEquallyNearAreAnError) {
  const auto thing = host::newInstance("ThingZNK");
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "ThingZNK.Either(5 as Int32) could be any of:", errorOf([&] {
                        host::call(thing, "Either", 5);
                      }));
  EXPECT_NO_THROW(host::call(thing, "Either", 5u));
}

TEST_F(Calls, UnknownNamesAreErrors) {
  const auto thing = host::newInstance("ThingZNK");
  EXPECT_EQ(errorOf([&] { host::call(thing, "Jump"); }), "ThingZNK has no method Jump");
  EXPECT_EQ(errorOf([&] { host::get(thing, "Jump"); }), "ThingZNK has no property Jump");
  EXPECT_EQ(errorOf([&] { host::newInstance("Jump"); }), "no class Jump");
  EXPECT_EQ(errorOf([&] { host::constant("ThingZNK", "Jump"); }), "ThingZNK has no constant Jump");
  EXPECT_EQ(errorOf([&] { host::setEventHandler(thing, "Jump", {}); }), "ThingZNK has no event Jump");
  EXPECT_EQ(errorOf([&] { host::callGlobal("Jump"); }), "the host has no method Jump");
  EXPECT_EQ(errorOf([&] { host::call(nullptr, "Put", 1); }), "Put called on nil");
}

TEST_F(Calls, WhatCannotBeSetIsAnError) {
  const auto thing = host::newInstance("ThingZNK");
  EXPECT_EQ(errorOf([&] { host::set(thing, "Label", "x"); }), "Label of ThingZNK can't be set");
  EXPECT_EQ(errorOf([&] { host::set(thing, "Names", nullptr); }), "Names of ThingZNK can't be set");
  EXPECT_EQ(errorOf([&] { host::set(thing, "Handle", "x"); }), "Handle is a Integer, not \"x\"");
}

TEST_F(Calls, AClassCanBeMadeUnknown) {
  host::settings().unknownClasses = {"thingZNK"};
  EXPECT_EQ(newInstance("ThingZNK"), nullptr);
  EXPECT_EQ(entry<void*(const char*)>("pluginObjectType")("ThingZNK"), nullptr);
  EXPECT_EQ(errorOf([&] { host::newInstance("ThingZNK"); }), "no class ThingZNK");
}

TEST_F(Calls, ClassReferencesTellWhatAnObjectIs) {
  const auto reference = [](const char* name) { return entry<void*(const char*)>("pluginObjectType")(name); };
  const auto isA = entry<bool(Object, void*)>("RuntimeObjectIsa");
  const auto thing = host::newInstance("ThingZNK"), exception = host::newInstance("NilObjectException");
  EXPECT_TRUE(isA(thing.handle(), reference("ThingZNK")));
  EXPECT_FALSE(isA(thing.handle(), reference("Date")));
  EXPECT_TRUE(isA(exception.handle(), reference("RuntimeException")));
  EXPECT_FALSE(isA(host::stringArray({}).handle(), reference("Date")));
  EXPECT_TRUE(host::isA(exception, "RuntimeException"));
}

TEST_F(Calls, ObjectMethodsAreLoadedByTheirDeclaration) {
  const auto thing = host::newInstance("ThingZNK");
  const auto load = entry<void*(Object, const char*)>("REALLoadObjectMethod");
  void* const limit = load(thing.handle(), "limit(x As Integer) As Integer");
  ASSERT_NE(limit, nullptr);
  EXPECT_EQ(reinterpret_cast<int32_t (*)(Object, int32_t)>(limit)(thing.handle(), 9), 9);
  EXPECT_EQ(load(thing.handle(), "Limit(x As Int64) As Integer"), nullptr);
}

}  // namespace
}  // namespace fake
