// What destructors and exceptions do, called as functions.
#include <cstring>

#include "host/exceptions.h"
#include "host/startup.h"
#include "item/item.h"
#include "query/query.h"
#include "tests/plugin/objects/fixture.h"

namespace {

// An object of the plug-in's classes as a host might lay it out: the instance data starts at dataOffset.
struct Instance {
  uint32_t hostWords[5] = {};
  void* reference = nullptr;
  REALobject tag = nullptr;

  REALobject object() { return reinterpret_cast<REALobject>(this); }
};

class Destructors : public testing::Test {
 protected:
  void SetUp() override {
    MDItemClass.dataOffset = MDQueryClass.dataOffset = offsetof(Instance, reference);
    current = this;
    gResolver = [](const char* name) {
      return strcmp(name, "REALUnlockObject") == 0 ? reinterpret_cast<void*>(unlock) : nullptr;
    };
  }

  // What the destructor left in the instance when it unlocked the tag.
  static void unlock(REALobject object) {
    current->unlocked.push_back(object);
    current->referenceThen = current->instance.reference;
    current->tagThen = current->instance.tag;
  }

  static Destructors* current;
  Instance instance;
  std::vector<REALobject> unlocked;
  void* referenceThen = this;
  REALobject tagThen = nullptr;
};
Destructors* Destructors::current = nullptr;

TEST_F(Destructors, OfAQueryClearsTheReferenceBeforeTheTagIsUnlockedAndTheTagToo) {
  const MDQueryRef query = MDQueryCreate(nullptr, CFSTR("kMDItemFSName == \"x\""), nullptr, nullptr);
  const auto tag = reinterpret_cast<REALobject>(this);
  instance.reference = query;
  instance.tag = tag;
  MDQueryDestructor(instance.object());
  EXPECT_EQ(nullptr, instance.reference);
  EXPECT_EQ(nullptr, instance.tag);
  EXPECT_EQ(std::vector<REALobject>{tag}, unlocked);
  EXPECT_EQ(nullptr, referenceThen);
  EXPECT_EQ(nullptr, tagThen);
  MDQueryDestructor(instance.object());  // nothing is left to give back
  EXPECT_EQ(1u, unlocked.size());
}

TEST_F(Destructors, OfAnItemClearsTheReferenceBeforeTheTagIsUnlockedAndTheTagToo) {
  const auto tag = reinterpret_cast<REALobject>(this);
  instance.reference = const_cast<void*>(CFRetain(CFSTR("any object will do")));
  instance.tag = tag;
  MDItemDestructor(instance.object());
  EXPECT_EQ(nullptr, instance.reference);
  EXPECT_EQ(nullptr, instance.tag);
  EXPECT_EQ(std::vector<REALobject>{tag}, unlocked);
  EXPECT_EQ(nullptr, referenceThen);
}

class Exceptions : public ObjectsTest {};

TEST_F(Exceptions, OfANullMessageHaveAnEmptyMessageAndMakeNoString) {
  start();
  const auto calls = callsOf([] { RaiseException("NilObjectException", nullptr); });
  const auto raised = host::takeExceptions();
  ASSERT_EQ(1u, raised.size());
  EXPECT_EQ("NilObjectException", raised[0].className);
  EXPECT_EQ("", raised[0].message);
  EXPECT_EQ(0, raised[0].errorNumber);
  EXPECT_EQ((std::vector<std::string>{"resolve PluginNewInstance", "PluginNewInstance",
                                      "resolve REALSetPropValueString", "REALSetPropValueString",
                                      "resolve REALSetPropValueInt", "REALSetPropValueInt",
                                      "resolve RuntimeRaiseException", "RuntimeRaiseException",
                                      "resolve REALUnlockObject", "REALUnlockObject"}),
            calls);
}

}  // namespace
