// From a query's notifications to the events of its host object.
#include <CoreServices/CoreServices.h>

#include "tests/plugin/cf_values.h"
#include "tests/plugin/fixture.h"

namespace {

class Events : public PluginTest, public testing::WithParamInterface<double> {
 protected:
  void SetUp() override {
    for (const char* name : {"a", "b", "c"}) tree_.file(name);
    standin::setIndexedFolders({tree_.path()});
    start(settings());
    query_ = host::construct("MDQueryZNK", "kMDItemFSName == \"*\"");
    host::call(query_, "Execute", 1);
    for (const char* event : {"Progress", "Finish", "Update"}) {
      host::setEventHandler(query_, event, [this, event](const std::vector<host::Value>& arguments) {
        heard_.push_back(event);
        arguments_ = arguments;
      });
    }
  }

  static host::Settings settings() { return settingsOf(GetParam()); }

  void TearDown() override {
    arguments_.clear();
    query_ = {};
    PluginTest::TearDown();
  }

  // Services are found when the plug-in first asks for them, so a plug-in that has not asked yet.
  void startWithout(const char* service) {
    query_ = {};
    PluginTest::TearDown();
    host::Settings settings = this->settings();
    settings.hidden.insert(service);
    start(settings);
    query_ = host::construct("MDQueryZNK", "kMDItemFSName == \"*\"");
  }

  MDQueryRef reference() const {
    return reinterpret_cast<MDQueryRef>(static_cast<intptr_t>(host::get(query_, "Handle").integer()));
  }

  void post(CFStringRef name, CFDictionaryRef userInfo = nullptr) {
    CFNotificationCenterPostNotification(CFNotificationCenterGetLocalCenter(), name, reference(), userInfo,
                                         true);
  }

  // Items 0 to count-1 of the query under the key.
  CFOwner items(CFStringRef key, CFIndex count) const {
    const auto array = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    for (CFIndex i = 0; i < count; ++i) CFArrayAppendValue(array, MDQueryGetResultAtIndex(reference(), i));
    const auto info = CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                                &kCFTypeDictionaryValueCallBacks);
    CFDictionarySetValue(info, key, array);
    CFRelease(array);
    return CFOwner(info);
  }

  ScratchFolder tree_;
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
  EXPECT_EQ((Texts{"Progress", "Finish", "Update"}), heard_);
}

TEST_P(Events, OfANotificationWithoutUserInformationCarryThreeEmptyArrays) {
  post(kMDQueryProgressNotification);
  EXPECT_EQ((std::vector<size_t>{0, 0, 0}), sizes(arguments_));
  for (const host::Value& array : arguments_) EXPECT_FALSE(array.isNil());
}

TEST_P(Events, CarryTheItemsOfEachListInItsPlace) {
  post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(items(kMDQueryUpdateAddedItems, 3).get()));
  ASSERT_EQ((std::vector<size_t>{3, 0, 0}), sizes(arguments_));
  EXPECT_EQ("b", host::get(host::elements(arguments_[0])[1], "FSName").text());
  post(kMDQueryDidUpdateNotification,
       static_cast<CFDictionaryRef>(items(kMDQueryUpdateChangedItems, 2).get()));
  EXPECT_EQ((std::vector<size_t>{0, 2, 0}), sizes(arguments_));
  post(kMDQueryProgressNotification,
       static_cast<CFDictionaryRef>(items(kMDQueryUpdateRemovedItems, 1).get()));
  EXPECT_EQ((std::vector<size_t>{0, 0, 1}), sizes(arguments_));
}

TEST_P(Events, LeaveNoHoleForAnItemThatCantBeWrapped) {
  const CFOwner info = items(kMDQueryUpdateAddedItems, 3);
  standin::failCall("PluginNewInstance", 2);
  post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(info.get()));
  ASSERT_EQ((std::vector<size_t>{2, 0, 0}), sizes(arguments_));
  const auto added = host::elements(arguments_[0]);
  EXPECT_EQ("a", host::get(added[0], "FSName").text());
  EXPECT_EQ("c", host::get(added[1], "FSName").text());
}

TEST_P(Events, PassOverNullsAndLeaveNoHole) {
  const CFOwner items = cfUnretainedArray(
      {MDQueryGetResultAtIndex(reference(), 0), nullptr, nullptr, MDQueryGetResultAtIndex(reference(), 2)});
  const CFOwner info = cfDictionary({{kMDQueryUpdateRemovedItems, items.get()}});
  post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(info.get()));
  ASSERT_EQ((std::vector<size_t>{0, 0, 2}), sizes(arguments_));
  const auto removed = host::elements(arguments_[2]);
  EXPECT_EQ("a", host::get(removed[0], "FSName").text());
  EXPECT_EQ("c", host::get(removed[1], "FSName").text());
}

TEST_P(Events, OfAListOfNullsAloneCarryAnEmptyArray) {
  const CFOwner items = cfUnretainedArray({nullptr, nullptr});
  const CFOwner info = cfDictionary({{kMDQueryUpdateAddedItems, items.get()}});
  const Calls calls =
      callsOf([&] { post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(info.get())); });
  EXPECT_EQ((std::vector<size_t>{0, 0, 0}), sizes(arguments_));
  EXPECT_EQ(0, std::count(calls.begin(), calls.end(), "PluginNewInstance"));
}

// The exception comes out where the notification was posted, and nothing stays behind.
TEST_P(Events, WhoseHandlerThrowsGiveEverythingBackAndGoOn) {
  const CFOwner info = items(kMDQueryUpdateAddedItems, 3);
  const auto raise = [&](CFStringRef name) { post(name, static_cast<CFDictionaryRef>(info.get())); };
  standin::throwFromCall("event Update", 1);
  EXPECT_THROW(raise(kMDQueryDidUpdateNotification), standin::PlannedException);
  standin::throwFromCall("event Finish", 1);
  EXPECT_THROW(raise(kMDQueryDidFinishNotification), standin::PlannedException);
  standin::clearFailures();
  raise(kMDQueryDidUpdateNotification);
  EXPECT_EQ(Texts{"Update"}, heard_);
}

TEST_P(Events, WhoseHandlerRaisesGiveEverythingBackAndGoOn) {
  host::setEventHandler(query_, "Update", [this](const std::vector<host::Value>&) {
    heard_.push_back("Update");
    host::call(host::newInstance("MDQueryZNK"), "Stop");
  });
  const CFOwner info = items(kMDQueryUpdateAddedItems, 3);
  for (int i = 0; i < 2; ++i) {
    post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(info.get()));
    EXPECT_EQ(Exceptions{kNilQuery}, host::takeExceptions());
  }
  EXPECT_EQ((Texts{"Update", "Update"}), heard_);
}

TEST_P(Events, MayRunAnotherQuery) {
  size_t found = 0;
  int finished = 0;
  host::setEventHandler(query_, "Finish", [&](const std::vector<host::Value>&) {
    const host::Value other = host::construct("MDQueryZNK", "kMDItemFSName == \"b\"");
    host::setEventHandler(other, "Finish", [&](const std::vector<host::Value>&) { ++finished; });
    host::call(other, "Execute", 1);
    found = host::elements(host::call(other, "Results")).size();
  });
  post(kMDQueryDidFinishNotification);
  EXPECT_EQ(1u, found);
  EXPECT_EQ(1, finished);
}

TEST_P(Events, FinishHasNoArgumentsWhateverTheNotificationCarries) {
  post(kMDQueryDidFinishNotification, static_cast<CFDictionaryRef>(items(kMDQueryUpdateAddedItems, 1).get()));
  EXPECT_EQ(Texts{"Finish"}, heard_);
  EXPECT_EQ(0u, arguments_.size());
}

TEST_P(Events, FinishIsTheCallOfItsHandlerAloneWhateverTheNotificationCarries) {
  const CFOwner info = items(kMDQueryUpdateAddedItems, 1);
  const auto raise = [&] { post(kMDQueryDidFinishNotification, static_cast<CFDictionaryRef>(info.get())); };
  raise();  // finds the services
  EXPECT_EQ((Calls{"CFNotificationCenterGetLocalCenter", "CFNotificationCenterPostNotification",
                   "CFStringCompare", "CFStringCompare", "GetEventInstance", "event Finish"}),
            callsOf(raise));
}

TEST_P(Events, WithoutAHandlerLookUpNothingAndMakeNoObjects) {
  host::setEventHandler(query_, "Progress", nullptr);
  const CFOwner info = items(kMDQueryUpdateAddedItems, 3);
  standin::countCalls();
  post(kMDQueryProgressNotification, static_cast<CFDictionaryRef>(info.get()));
  EXPECT_EQ(Texts(), heard_);
  EXPECT_EQ(0, standin::callCount("CFDictionaryGetValue"));
  EXPECT_EQ(0, standin::callCount("PluginNewInstance"));
  EXPECT_EQ(0, standin::callCount("RuntimeArrayCreateSingleDimBoundedArray"));
  post(kMDQueryDidFinishNotification);
  post(kMDQueryDidUpdateNotification);
  EXPECT_EQ((Texts{"Finish", "Update"}), heard_);
}

TEST_P(Events, AreNotRaisedForAnotherQuerysNotifications) {
  const host::Value other = host::construct("MDQueryZNK", "kMDItemFSName == \"a\"");
  host::call(other, "Execute", 1);
  EXPECT_EQ(Texts(), heard_);
}

TEST_P(Events, AreNotRaisedOnceTheObjectIsDestroyed) {
  const CFOwner query(CFRetain(reference()));
  arguments_.clear();
  query_ = {};
  CFNotificationCenterPostNotification(CFNotificationCenterGetLocalCenter(), kMDQueryDidFinishNotification,
                                       query.get(), nullptr, true);
  EXPECT_EQ(Texts(), heard_);
  query_ = host::newInstance("MDQueryZNK");
}

TEST_P(Events, GiveBackTheArraysThenTheListsInOrder) {
  const CFOwner info = items(kMDQueryUpdateAddedItems, 1);
  const auto raise = [&] { post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(info.get())); };
  raise();
  arguments_.clear();
  const Calls calls = callsOf(raise);
  EXPECT_EQ((Calls{"REALUnlockObject", "REALUnlockObject", "REALUnlockObject", "CFRelease"}),
            afterFirst("event Update", calls));
}

// Lists and a dictionary that note when they are asked and when they end.
const void* noteless(CFAllocatorRef, const void* value) {
  return value;
}
CFHashCode notedLookUp(const void* key) {
  char text[100] = {};
  CFStringGetCString(static_cast<CFStringRef>(key), text, sizeof text, kCFStringEncodingUTF8);
  standin::logNote(std::string("asked for ") + text);
  return CFHash(key);
}
const char* const kListNames[] = {"added", "changed", "removed"};
template <int list>
void notedEnd(CFAllocatorRef, const void*) {
  standin::logNote(std::string(kListNames[list]) + " ends");
}
template <int list>
void setNotedList(CFMutableDictionaryRef info, CFStringRef key, const void* item) {
  const CFArrayCallBacks callBacks = {0, noteless, notedEnd<list>, nullptr, nullptr};
  const CFArrayRef values = CFArrayCreate(nullptr, &item, 1, &callBacks);
  CFDictionarySetValue(info, key, values);
  CFRelease(values);
}

TEST_P(Events, LookUpAllListsBeforeTheFirstIsConvertedAndGiveThemBackInOrder) {
  const CFDictionaryKeyCallBacks keys = {0, nullptr, nullptr, nullptr, CFEqual, notedLookUp};
  const CFMutableDictionaryRef info =
      CFDictionaryCreateMutable(nullptr, 0, &keys, &kCFTypeDictionaryValueCallBacks);
  const CFOwner owner(info);
  const void* const item = MDQueryGetResultAtIndex(reference(), 0);
  setNotedList<0>(info, kMDQueryUpdateAddedItems, item);
  setNotedList<1>(info, kMDQueryUpdateChangedItems, item);
  setNotedList<2>(info, kMDQueryUpdateRemovedItems, item);
  host::setEventHandler(query_, "Update", [&](const std::vector<host::Value>&) {
    CFDictionaryRemoveAllValues(info);  // from here on the plug-in alone holds the lists
  });
  Calls notes = callsOf([&] { post(kMDQueryDidUpdateNotification, info); });
  std::erase_if(notes, [](const std::string& note) {
    return !note.starts_with("asked for ") && !note.ends_with(" ends") &&
           note != "RuntimeArrayCreateSingleDimBoundedArray";
  });
  EXPECT_EQ((Texts{"asked for kMDQueryUpdateAddedItems", "asked for kMDQueryUpdateChangedItems",
                   "asked for kMDQueryUpdateRemovedItems", "RuntimeArrayCreateSingleDimBoundedArray",
                   "RuntimeArrayCreateSingleDimBoundedArray", "RuntimeArrayCreateSingleDimBoundedArray",
                   "added ends", "changed ends", "removed ends"}),
            notes);
}

TEST_P(Events, ConvertAddedThenChangedThenRemovedBeforeTheHandlerIsCalled) {
  const auto listOf = [&](CFIndex count) {
    std::vector<CFTypeRef> values;
    for (CFIndex i = 0; i < count; ++i) values.push_back(MDQueryGetResultAtIndex(reference(), i));
    return cfUnretainedArray(values);
  };
  const CFOwner one = listOf(1), two = listOf(2), three = listOf(3);
  const CFOwner info = cfDictionary({{kMDQueryUpdateAddedItems, one.get()},
                                     {kMDQueryUpdateChangedItems, two.get()},
                                     {kMDQueryUpdateRemovedItems, three.get()}});
  Calls calls =
      callsOf([&] { post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(info.get())); });
  std::erase_if(calls, [](const std::string& call) {
    return call != "RuntimeArrayCreateSingleDimBoundedArray" && call != "CFArrayGetCount" &&
           call != "array insert" && call != "event Update";
  });
  EXPECT_EQ((Calls{"RuntimeArrayCreateSingleDimBoundedArray", "CFArrayGetCount", "array insert",
                   "RuntimeArrayCreateSingleDimBoundedArray", "CFArrayGetCount", "array insert",
                   "array insert", "RuntimeArrayCreateSingleDimBoundedArray", "CFArrayGetCount",
                   "array insert", "array insert", "array insert", "event Update"}),
            calls);
}

TEST_P(Events, CompareTheNameWithProgressThenFinishThenUpdate) {
  const auto comparisons = [&](CFStringRef name) {
    const Calls calls = callsOf([&] { post(name); });
    return std::count(calls.begin(), calls.end(), "CFStringCompare");
  };
  EXPECT_EQ(1, comparisons(kMDQueryProgressNotification));
  EXPECT_EQ(2, comparisons(kMDQueryDidFinishNotification));
  EXPECT_EQ(3, comparisons(kMDQueryDidUpdateNotification));
}

TEST_P(Events, AdvanceThePositionAlsoWhereAnInsertCouldNotHappen) {
  const CFOwner info = items(kMDQueryUpdateAddedItems, 3);
  // The third item's procedure is missing; behind two elements its place stays free, and nothing else moves.
  standin::failCall("RuntimeArrayDirectGetInsertProc", 3);
  post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(info.get()));
  EXPECT_EQ((std::vector<size_t>{2, 0, 0}), sizes(arguments_));
  // The first item's is missing: the others are inserted at 1 and 2, where the empty array has no place.
  standin::failCall("RuntimeArrayDirectGetInsertProc", 1);
  post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(info.get()));
  EXPECT_EQ((std::vector<size_t>{0, 0, 0}), sizes(arguments_));
  EXPECT_EQ(2u, host::takeExceptions().size()) << "the host's own, of places out of bounds";
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
  startWith(resolveNotingUnlocks, settings());
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
  const CFOwner query(CFRetain(reference()));
  for (const CFStringRef name : {kMDQueryProgressNotification, kMDQueryDidFinishNotification}) {
    CFNotificationCenterPostNotification(CFNotificationCenterGetLocalCenter(), name, query.get(), nullptr,
                                         true);
  }
  EXPECT_EQ(Texts{"Progress"}, heard_);
}

TEST_P(Events, WithoutTheServiceForHandlersAreNotRaised) {
  startWithout("GetEventInstance");
  host::setEventHandler(query_, "Finish",
                        [this](const std::vector<host::Value>&) { heard_.push_back("Finish"); });
  host::call(query_, "Execute", 1);
  EXPECT_EQ(Texts(), heard_);
}

TEST_P(Events, WithoutTheServiceThatMakesArraysCarryThreeNils) {
  startWithout("RuntimeArrayCreateSingleDimBoundedArray");
  host::call(query_, "Execute", 1);
  std::vector<bool> nils;
  host::setEventHandler(query_, "Update", [&](const std::vector<host::Value>& arguments) {
    for (const host::Value& argument : arguments) nils.push_back(argument.isNil());
  });
  post(kMDQueryDidUpdateNotification, static_cast<CFDictionaryRef>(items(kMDQueryUpdateAddedItems, 3).get()));
  EXPECT_EQ((std::vector<bool>{true, true, true}), nils);
}

INSTANTIATE_TEST_SUITE_P(ControlVersions9To12, Events, testing::Values(2011.04, 2012.0, 2013.0, 2014.1));

}  // namespace
