// From a query's notifications to the events of its host object.
#include <gmock/gmock.h>

#include <CoreServices/CoreServices.h>

#include <memory>

#include "tests/plugin/fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Release {
  void operator()(const void* value) const { CFRelease(value); }
};
typedef std::unique_ptr<const void, Release> Owner;

class Events : public PluginTest, public testing::WithParamInterface<double> {
 protected:
  void SetUp() override {
    for (const char* name : {"a", "b", "c"}) tree_.add(name);
    tree_.index();
    host::Settings settings = GetParam() < 2012.0 ? host::oldHost(GetParam()) : host::Settings();
    settings.version = GetParam();
    start(settings);
    query_ = host::construct("MDQueryZNK", "kMDItemFSName == \"*\"");
    host::call(query_, "Execute", 1);
    for (const char* event : {"Progress", "Finish", "Update"}) {
      host::setEventHandler(query_, event, [this, event](const std::vector<host::Value>& arguments) {
        heard_.push_back(event);
        arguments_ = arguments;
      });
    }
  }

  void TearDown() override {
    arguments_.clear();
    query_ = {};
    PluginTest::TearDown();
  }

  MDQueryRef reference() const {
    return reinterpret_cast<MDQueryRef>(static_cast<intptr_t>(host::get(query_, "Handle").integer()));
  }

  void post(CFStringRef name, CFDictionaryRef userInfo = nullptr) {
    CFNotificationCenterPostNotification(CFNotificationCenterGetLocalCenter(), name, reference(), userInfo,
                                         true);
  }

  // Items 0 to count-1 of the query under the key.
  Owner items(CFStringRef key, CFIndex count) const {
    const auto array = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    for (CFIndex i = 0; i < count; ++i) CFArrayAppendValue(array, MDQueryGetResultAtIndex(reference(), i));
    const auto info = CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                                &kCFTypeDictionaryValueCallBacks);
    CFDictionarySetValue(info, key, array);
    CFRelease(array);
    return Owner(info);
  }

  TempTree tree_;
  host::Value query_;
  Calls heard_;
  std::vector<host::Value> arguments_;
};

std::vector<size_t> sizes(const std::vector<host::Value>& arrays) {
  std::vector<size_t> sizes;
  for (const host::Value& array : arrays) sizes.push_back(host::elements(array).size());
  return sizes;
}

TEST_P(Events, AreRaisedForTheirNotification) {
  for (const CFStringRef name :
       {kMDQueryProgressNotification, kMDQueryDidFinishNotification, kMDQueryDidUpdateNotification}) {
    post(name);
  }
  EXPECT_THAT(heard_, ElementsAre("Progress", "Finish", "Update"));
}

TEST_P(Events, OfANotificationWithoutUserInformationCarryThreeEmptyArrays) {
  post(kMDQueryProgressNotification);
  EXPECT_THAT(sizes(arguments_), ElementsAre(0, 0, 0));
  for (const host::Value& array : arguments_) EXPECT_FALSE(array.isNil());
}

TEST_P(Events, CarryTheItemsOfEachListInItsPlace) {
  post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(items(kMDQueryUpdateAddedItems, 3).get()));
  EXPECT_THAT(sizes(arguments_), ElementsAre(3, 0, 0));
  EXPECT_EQ("b", host::get(host::elements(arguments_[0])[1], "FSName").text());
  post(kMDQueryDidUpdateNotification,
       static_cast<CFDictionaryRef>(items(kMDQueryUpdateChangedItems, 2).get()));
  EXPECT_THAT(sizes(arguments_), ElementsAre(0, 2, 0));
  post(kMDQueryProgressNotification,
       static_cast<CFDictionaryRef>(items(kMDQueryUpdateRemovedItems, 1).get()));
  EXPECT_THAT(sizes(arguments_), ElementsAre(0, 0, 1));
}

TEST_P(Events, LeaveNoHoleForAnItemThatCantBeWrapped) {
  const Owner info = items(kMDQueryUpdateAddedItems, 3);
  standin::failCall("PluginNewInstance", 2);
  post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(info.get()));
  const auto added = host::elements(arguments_[0]);
  ASSERT_EQ(2u, added.size());
  EXPECT_EQ("a", host::get(added[0], "FSName").text());
  EXPECT_EQ("c", host::get(added[1], "FSName").text());
}

TEST_P(Events, FinishHasNoArgumentsWhateverTheNotificationCarries) {
  post(kMDQueryDidFinishNotification, static_cast<CFDictionaryRef>(items(kMDQueryUpdateAddedItems, 1).get()));
  EXPECT_THAT(heard_, ElementsAre("Finish"));
  EXPECT_THAT(arguments_, IsEmpty());
}

TEST_P(Events, WithoutAHandlerMakeNoObjects) {
  host::setEventHandler(query_, "Progress", nullptr);
  const Owner info = items(kMDQueryUpdateAddedItems, 3);
  const int made = standin::callCount("PluginNewInstance");
  const int arrays = standin::callCount("RuntimeArrayCreateSingleDimBoundedArray");
  post(kMDQueryProgressNotification, static_cast<CFDictionaryRef>(info.get()));
  EXPECT_THAT(heard_, IsEmpty());
  EXPECT_EQ(made, standin::callCount("PluginNewInstance"));
  EXPECT_EQ(arrays, standin::callCount("RuntimeArrayCreateSingleDimBoundedArray"));
  post(kMDQueryDidFinishNotification);
  post(kMDQueryDidUpdateNotification);
  EXPECT_THAT(heard_, ElementsAre("Finish", "Update"));
}

TEST_P(Events, AreNotRaisedForAnotherQuerysNotifications) {
  const host::Value other = host::construct("MDQueryZNK", "kMDItemFSName == \"a\"");
  host::call(other, "Execute", 1);
  EXPECT_THAT(heard_, IsEmpty());
}

TEST_P(Events, AreNotRaisedOnceTheObjectIsDestroyed) {
  const Owner query(CFRetain(reference()));
  arguments_.clear();
  query_ = {};
  CFNotificationCenterPostNotification(CFNotificationCenterGetLocalCenter(), kMDQueryDidFinishNotification,
                                       query.get(), nullptr, true);
  EXPECT_THAT(heard_, IsEmpty());
  query_ = host::newInstance("MDQueryZNK");
}

TEST_P(Events, GiveBackTheArraysThenTheListsInOrder) {
  const Owner info = items(kMDQueryUpdateAddedItems, 1);
  const auto raise = [&] { post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(info.get())); };
  raise();
  arguments_.clear();
  const Calls calls = callsOf(raise);
  const auto handler = std::find(calls.begin(), calls.end(), "event Update");
  ASSERT_NE(calls.end(), handler);
  EXPECT_EQ((Calls{"REALUnlockObject", "REALUnlockObject", "REALUnlockObject", "CFRelease"}),
            Calls(handler + 1, calls.end()));
}

// Which objects the plug-in gave back, in order.
std::vector<void*> unlocked;
void noteUnlock(void* object) {
  unlocked.push_back(object);
  reinterpret_cast<void (*)(void*)>(host::resolve("REALUnlockObject"))(object);
}
void* resolveNotingUnlocks(const char* name) {
  return std::string_view(name) == "REALUnlockObject" ? reinterpret_cast<void*>(noteUnlock)
                                                      : host::resolve(name);
}

TEST_P(Events, GiveBackAddedThenChangedThenRemoved) {
  query_ = {};
  PluginTest::TearDown();
  startWith(resolveNotingUnlocks);
  query_ = host::construct("MDQueryZNK", "kMDItemFSName == \"*\"");
  std::vector<void*> handed;
  host::setEventHandler(query_, "Update", [&](const std::vector<host::Value>& arguments) {
    for (const host::Value& argument : arguments) handed.push_back(argument.handle());
    unlocked.clear();
  });
  post(kMDQueryDidUpdateNotification);
  EXPECT_EQ(3u, handed.size());
  EXPECT_EQ(handed, unlocked);
}

TEST_P(Events, MayDestroyTheirOwnObject) {
  host::setEventHandler(query_, "Progress", [this](const std::vector<host::Value>&) {
    heard_.push_back("Progress");
    query_ = {};
  });
  const Owner query(CFRetain(reference()));
  for (const CFStringRef name : {kMDQueryProgressNotification, kMDQueryDidFinishNotification}) {
    CFNotificationCenterPostNotification(CFNotificationCenterGetLocalCenter(), name, query.get(), nullptr,
                                         true);
  }
  EXPECT_THAT(heard_, ElementsAre("Progress"));
}

TEST_P(Events, WithoutTheServiceForHandlersAreNotRaised) {
  // Found when the plug-in first asks for it, so a plug-in that has not asked yet.
  query_ = {};
  PluginTest::TearDown();
  host::Settings settings;
  settings.hidden = {"GetEventInstance"};
  start(settings);
  query_ = host::construct("MDQueryZNK", "kMDItemFSName == \"*\"");
  host::setEventHandler(query_, "Finish",
                        [this](const std::vector<host::Value>&) { heard_.push_back("Finish"); });
  host::call(query_, "Execute", 1);
  EXPECT_THAT(heard_, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(ControlVersions9To12, Events, testing::Values(2011.04, 2012.0, 2013.0, 2014.1));

}  // namespace
