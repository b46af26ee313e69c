// A misuse ends the process with a message that names the entry point.
#include <cstring>

#include "tests/standin/host/fake_plugin.h"
#include "tests/support/sanitizers.h"

namespace fake {
namespace {

class Misuse : public PluginTest {
 protected:
  Misuse() { GTEST_FLAG_SET(death_test_style, "fast"); }
};

TEST_F(Misuse, UseOfAFreedObject) {
  const Object thing = newInstance("ThingZNK");
  unlockObject(thing);
  EXPECT_DEATH(lockObject(thing), "REALLockObject: use of a freed handle \\(it was a object ThingZNK\\)");
  EXPECT_DEATH(unlockObject(thing), "REALUnlockObject: use of a freed handle");
  int32_t year = 0;
  EXPECT_DEATH(entry<bool(Object, const char*, int32_t*)>("REALGetPropValueInt")(thing, "Year", &year),
               "REALGetPropValueInt: use of a freed handle");
}

TEST_F(Misuse, UseOfAFreedString) {
  const String string = build("x");
  unlockString(string);
  EXPECT_DEATH(unlockString(string), "REALUnlockString: use of a freed handle \\(it was a string\\)");
  EXPECT_DEATH(content(string), "PluginGetStringData: use of a freed handle");
  EXPECT_DEATH(entry<Object(String)>("StringToVariant")(string), "StringToVariant: use of a freed handle");
}

TEST_F(Misuse, UseOfAFreedVariant) {
  const Object variant = entry<Object(int32_t)>("Int32ToVariant")(5);
  unlockObject(variant);
  EXPECT_DEATH(lockObject(variant), "REALLockObject: use of a freed handle \\(it was a variant\\)");
}

// Handles are found again and none is mixed up with another, however many there are and whichever go.
TEST_F(Misuse, UseOfAFreedObjectAmongMany) {
  std::vector<Object> things;
  for (int i = 0; i < 5000; ++i) things.push_back(newInstance("ThingZNK"));
  for (size_t i = 0; i < things.size(); i += 2) unlockObject(things[i]);
  for (size_t i = 1; i < things.size(); i += 2) {
    lockObject(things[i]);
    unlockObject(things[i]);
  }
  EXPECT_DEATH(lockObject(things[4000]), "REALLockObject: use of a freed handle");
  for (size_t i = 1; i < things.size(); i += 2) unlockObject(things[i]);
  EXPECT_DEATH(unlockObject(things[4001]), "REALUnlockObject: use of a freed handle");
}

TEST_F(Misuse, ACountOfCallsThatNobodyCounted) {
  EXPECT_DEATH(standin::callCount("REALUnlockString"), "callCount: calls are not counted");
  const String string = build("x");
  lockString(string);
  standin::countCalls();
  unlockString(string);
  unlockString(string);
  EXPECT_EQ(standin::callCount("REALUnlockString"), 2);
  EXPECT_EQ(standin::callCount("REALLockString"), 0);
  standin::countCalls();
  EXPECT_EQ(standin::callCount("REALUnlockString"), 0);
}

TEST_F(Misuse, AReleaseOfAReferenceThatIsTheHosts) {
  const auto thing = host::newInstance("ThingZNK");
  const host::Value text("x");
  EXPECT_DEATH(unlockObject(thing.handle()),
               "REALUnlockObject: a release too many: the plug-in holds no reference to the object ThingZNK");
  EXPECT_DEATH(unlockString(text.handle()), "REALUnlockString: a release too many");
  EXPECT_DEATH(host::call(thing, "Misbehave", 1), "REALUnlockObject: a release too many");
}

TEST_F(Misuse, AHandleOfTheWrongKind) {
  const auto thing = host::newInstance("ThingZNK");
  const host::Value text("x");
  EXPECT_DEATH(unlockObject(text.handle()),
               "REALUnlockObject: a string was passed where an object is expected");
  EXPECT_DEATH(lockString(thing.handle()), "REALLockString: the object ThingZNK was passed where a string");
  EXPECT_DEATH(entry<int32_t(Object)>("RuntimeUBound")(thing.handle()),
               "RuntimeUBound: .* where an array is expected");
  EXPECT_DEATH(insertObject(host::stringArray({}).handle(), 0, thing.handle()),
               "array insert: .* is no element");
  EXPECT_DEATH(entry<void(Object)>("RuntimeRaiseException")(thing.handle()),
               "RuntimeRaiseException: .* no exception");
}

TEST_F(Misuse, AnAddressThatIsNoHandle) {
  int32_t number = 0;
  EXPECT_DEATH(lockObject(&number), "REALLockObject: an address that is no handle");
  EXPECT_DEATH(entry<int32_t(Object)>("RuntimeUBound")(nullptr), "RuntimeUBound: a null handle");
  EXPECT_DEATH(entry<bool(Object, void*)>("RuntimeObjectIsa")(host::newInstance("Date").handle(), &number),
               "RuntimeObjectIsa: the second argument is no class reference");
}

TEST_F(Misuse, AResultWithoutAReference) {
  const auto thing = host::newInstance("ThingZNK");
  EXPECT_DEATH(host::call(thing, "Misbehave", 2),
               "Misbehave: the plug-in handed over a object ThingZNK without");
}

TEST_F(Misuse, AResultOfAnotherClassThanDeclared) {
  const auto thing = host::newInstance("ThingZNK");
  host::set(thing, "Tag", host::newInstance("Date"));
  EXPECT_DEATH(host::get(thing, "Mode"), "Mode: the object Date is no ThingZNK");
}

TEST_F(Misuse, AWritePastTheInstanceData) {
  EXPECT_DEATH(
      {
        auto thing = host::newInstance("ThingZNK");
        host::call(thing, "Misbehave", 4);
        thing = nullptr;
      },
      "object ThingZNK was written past its end");
}

TEST_F(Misuse, AProcedureKeptForASecondCall) {
  const auto array = host::int32Array({1, 2});
  void* const get = entry<void*(Object)>("RuntimeArrayDirectGetGetProc")(array.handle());
  const auto read = reinterpret_cast<bool (*)(Object, int32_t, int32_t*)>(get);
  int32_t value = 0;
  EXPECT_TRUE(read(array.handle(), 0, &value));
  EXPECT_DEATH(read(array.handle(), 1, &value), "array get: the procedure was not asked of this array");
}

TEST_F(Misuse, AnEventAskedForByAnythingButTheWordThatTheHostWrote) {
  const auto thing = host::newInstance("ThingZNK");
  const auto find = entry<void*(Object, uint32_t)>("GetEventInstance");
  EXPECT_DEATH(find(thing.handle(), 0), "GetEventInstance: the value 0 is not one that the host wrote");
  EXPECT_DEATH(find(host::newInstance("Date").handle(), thingEvent(0)), "GetEventInstance: the value");
}

TEST_F(Misuse, AHandlerCalledForAnObjectThatHasNone) {
  const auto thing = host::newInstance("ThingZNK"), other = host::newInstance("ThingZNK");
  host::setEventHandler(thing, "Done", [](const auto&) {});
  void* const found = entry<void*(Object, uint32_t)>("GetEventInstance")(thing.handle(), thingEvent(1));
  const auto handler = reinterpret_cast<void (*)(Object)>(found);
  EXPECT_DEATH(handler(other.handle()), "event Done: this object has no handler");
  EXPECT_DEATH(handler(host::newInstance("Date").handle()), "event Done: the first argument is no ThingZNK");
}

TEST_F(Misuse, ArgumentsThatMeanNothing) {
  EXPECT_DEATH(createArray(7, -1), "RuntimeArrayCreateSingleDimBoundedArray: unknown element type 7");
  EXPECT_DEATH(createArray(3, -2), "RuntimeArrayCreateSingleDimBoundedArray: an upper bound of -2");
  EXPECT_DEATH(entry<String(const char*, int32_t)>("REALBuildString")("x", -1),
               "REALBuildString: a negative length");
  EXPECT_DEATH(
      entry<void*(Object, const char*)>("REALLoadGlobalMethod")(host::newInstance("Date").handle(), "x"),
      "REALLoadGlobalMethod: the first argument must be null");
}

TEST_F(Misuse, AWriteToAFreedObjectIsFoundAtTheEnd) {
  if (underAddressSanitizer()) GTEST_SKIP() << "the sanitizer finds it at once";
  EXPECT_DEATH(
      {
        const Object thing = newInstance("ThingZNK");
        unlockObject(thing);
        std::memset(thing, 0, 4);
        host::stop();
      },
      "a freed object ThingZNK was written to");
}

TEST_F(Misuse, UseOfAHandleOfAHostThatWasStopped) {
  EXPECT_DEATH(
      {
        const Object thing = newInstance("ThingZNK");
        host::stop();
        host::start();
        lockObject(thing);
      },
      "REALLockObject: use of a handle of a host that was stopped");
}

}  // namespace
}  // namespace fake
