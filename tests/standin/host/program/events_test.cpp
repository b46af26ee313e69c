#include "tests/standin/host/fake_plugin.h"
#include "tests/support/texts.h"

namespace fake {
namespace {

class Events : public PluginTest {};

TEST_F(Events, AHandlerGetsTheDeclaredArguments) {
  const auto thing = host::newInstance("ThingZNK");
  std::vector<host::Value> got;
  host::setEventHandler(thing, "changed", [&](const auto& arguments) { got = arguments; });
  host::call(thing, "Fire", 0, 2);
  ASSERT_EQ(got.size(), 2u);
  EXPECT_EQ(host::elements(got[0]).size(), 2u);  // kept beyond the call
  EXPECT_EQ(got[1].integer(), 2);
}

TEST_F(Events, AnEventWithoutAHandlerHasNoAddress) {
  const auto thing = host::newInstance("ThingZNK"), other = host::newInstance("ThingZNK");
  host::setEventHandler(other, "Done", [](const auto&) { FAIL(); });
  const auto find = entry<void*(Object, uint32_t)>("GetEventInstance");
  EXPECT_EQ(find(thing.handle(), thingEvent(1)), nullptr);
  EXPECT_EQ(find(other.handle(), thingEvent(0)), nullptr);
  EXPECT_NE(find(other.handle(), thingEvent(1)), nullptr);
  host::setEventHandler(other, "Done", nullptr);
  EXPECT_EQ(find(other.handle(), thingEvent(1)), nullptr);
}

TEST_F(Events, EachObjectHasItsOwnHandler) {
  const auto one = host::newInstance("ThingZNK"), two = host::newInstance("ThingZNK");
  std::string order;
  host::setEventHandler(one, "Done", [&](const auto&) { order += "1"; });
  host::setEventHandler(two, "Done", [&](const auto&) { order += "2"; });
  host::call(two, "Fire", 1, 0);
  host::call(one, "Fire", 1, 0);
  EXPECT_EQ(order, "21");
}

TEST_F(Events, TheHandlerIsLoggedAndWhatItDoesInThePlugInToo) {
  const auto thing = host::newInstance("ThingZNK");
  host::setEventHandler(thing, "Done", [&](const auto&) { host::call(thing, "Echo", thing); });
  standin::startLog();
  host::call(thing, "Fire", 1, 0);
  EXPECT_EQ(standin::stopLog(), (Texts{"resolve GetEventInstance", "GetEventInstance", "event Done",
                                       "resolve REALLockObject", "REALLockObject"}));
}

TEST_F(Events, AHandlerMayDropTheLastReferenceToItsObject) {
  auto thing = std::make_unique<host::Value>(host::newInstance("ThingZNK"));
  bool done = false;
  host::setEventHandler(*thing, "Done", [&](const auto&) {
    thing.reset();
    done = true;
  });
  const host::Value held = *thing;
  host::call(held, "Fire", 1, 0);
  EXPECT_TRUE(done);
}

TEST_F(Events, AHandlerMayDetachItself) {
  const auto thing = host::newInstance("ThingZNK");
  std::string text = "a text too long to be kept inside the handler itself, so that it goes with it";
  int calls = 0;
  host::setEventHandler(thing, "Done", [&calls, thing = thing.handle(), text](const auto&) {
    const auto self = host::Value::object(host::Ref::share(thing));
    host::setEventHandler(self, "Done", nullptr);
    calls += text.size() == 77 ? 1 : 100;
  });
  host::call(thing, "Fire", 1, 0);
  host::call(thing, "Fire", 1, 0);
  EXPECT_EQ(calls, 1);
}

TEST_F(Events, AHandlerMayHoldTheLastReferenceToAnotherObjectWithAHandler) {
  auto thing = host::newInstance("ThingZNK");
  {
    const auto other = host::newInstance("ThingZNK");
    host::setEventHandler(other, "Done", [](const auto&) {});
    host::setEventHandler(thing, "Done", [other](const auto&) {});
  }
  EXPECT_EQ(destroyedThings(), 0);
  thing = nullptr;
  EXPECT_EQ(destroyedThings(), 2);
}

TEST_F(Events, AHandlerThatIsDetachedMayHoldTheLastReferenceToAnotherObjectWithAHandler) {
  const auto thing = host::newInstance("ThingZNK");
  const auto attach = [&thing] {
    const auto other = host::newInstance("ThingZNK");
    host::setEventHandler(other, "Done", [](const auto&) {});
    host::setEventHandler(thing, "Done", [other](const auto&) {});
  };
  attach();
  host::setEventHandler(thing, "Done", nullptr);
  EXPECT_EQ(destroyedThings(), 1);
  attach();
  host::setEventHandler(thing, "Done", [](const auto&) {});
  EXPECT_EQ(destroyedThings(), 2);
}

TEST_F(Events, ObjectsThatOnlyHandlersHoldEndWithTheHost) {
  for (int i = 0; i < 3; ++i) {
    const auto thing = host::newInstance("ThingZNK");
    host::setEventHandler(thing, "Done", [thing](const auto&) {});
  }
  EXPECT_EQ(destroyedThings(), 0);
  EXPECT_TRUE(host::stop().empty());
  EXPECT_EQ(destroyedThings(), 3);
  host::start();
}

TEST_F(Events, WhatAHandlerThrowsIsThrownOnByTheCall) {
  const auto thing = host::newInstance("ThingZNK");
  host::setEventHandler(thing, "Changed", [](const auto&) { throw std::runtime_error("from the handler"); });
  EXPECT_THROW(host::call(thing, "Fire", 0, 1), std::runtime_error);
  EXPECT_EQ(standin::ledgerLine("host object lock"), 0);  // the plug-in came to its end
  EXPECT_NO_THROW(host::rethrowHandlerError());
}

}  // namespace
}  // namespace fake
