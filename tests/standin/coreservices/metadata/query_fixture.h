// Queries over a folder of the test's own, and what they tell. The clock is the tests': running the loop for
// a second takes no time, and what the test does to files is known at once.
#pragma once

#include <CoreServices/CoreServices.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "standin/coreservices/metadata/control.h"
#include "standin/system/clock.h"
#include "tests/support/owned.h"
#include "tests/support/scratch_folder.h"

inline MDQueryRef queryOf(const void* object) {
  return static_cast<MDQueryRef>(const_cast<void*>(object));
}

inline MDItemRef itemOf(const void* object) {
  return static_cast<MDItemRef>(const_cast<void*>(object));
}

inline std::string pathOf(const void* item) {
  const Owned path(MDItemCopyAttribute(itemOf(item), kMDItemPath));
  return textOf(path.get());
}

struct Notice {
  std::string name;  // without "kMDQuery" and "Notification"
  const void* object;
  CFIndex count;       // of results, when it was told
  bool hasDictionary;  // of the lists below, which are empty where there is none
  std::vector<std::string> added, changed, removed;
};

// Hears what one query, or every query, tells.
class Listener {
 public:
  explicit Listener(MDQueryRef query) {
    CFNotificationCenterAddObserver(CFNotificationCenterGetLocalCenter(), this, hear, nullptr, query,
                                    CFNotificationSuspensionBehaviorDeliverImmediately);
  }
  ~Listener() { CFNotificationCenterRemoveEveryObserver(CFNotificationCenterGetLocalCenter(), this); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const Notice& notice : notices) all.push_back(notice.name);
    return all;
  }
  size_t count(const std::string& name) const {
    const std::vector<std::string> all = names();
    return static_cast<size_t>(std::count(all.begin(), all.end(), name));
  }

  std::vector<Notice> notices;
  std::function<void(const Notice&)> reaction;

 private:
  static std::vector<std::string> pathsAt(CFDictionaryRef info, CFStringRef key) {
    std::vector<std::string> paths;
    const auto array = static_cast<CFArrayRef>(info ? CFDictionaryGetValue(info, key) : nullptr);
    for (CFIndex i = 0; array && i < CFArrayGetCount(array); ++i) {
      paths.push_back(pathOf(CFArrayGetValueAtIndex(array, i)));
    }
    return paths;
  }
  static void hear(CFNotificationCenterRef, void* observer, CFStringRef name, const void* object,
                   CFDictionaryRef info) {
    auto* const self = static_cast<Listener*>(observer);
    std::string shortName = textOf(name).substr(8);
    shortName.resize(shortName.find("Notification"));
    self->notices.push_back({shortName, object, MDQueryGetResultCount(queryOf(object)), info != nullptr,
                             pathsAt(info, kMDQueryUpdateAddedItems),
                             pathsAt(info, kMDQueryUpdateChangedItems),
                             pathsAt(info, kMDQueryUpdateRemovedItems)});
    if (self->reaction) self->reaction(Notice(self->notices.back()));
  }
};

class QueryTest : public testing::Test {
 protected:
  QueryTest() {
    standin::holdClock();
    standin::setIndexedFolders({scratch.path()});
  }
  ~QueryTest() override {
    standin::releaseClock();
    standin::clearFailures();
    standin::setIndexedFolders({"/"});
    EXPECT_EQ(alive(), "");
  }

  static Owned<MDQueryRef> make(const std::string& text, std::initializer_list<const char*> valueLists = {},
                                std::initializer_list<const char*> sorting = {}) {
    const auto lists = makeStrings(valueLists);
    const auto orders = makeStrings(sorting);
    return Owned(MDQueryCreate(kCFAllocatorDefault, makeString(text).get(), lists.get(), orders.get()));
  }
  static Owned<MDQueryRef> makeSubset(const Owned<MDQueryRef>& parent, const std::string& text) {
    return Owned(
        MDQueryCreateSubset(kCFAllocatorDefault, parent.get(), makeString(text).get(), nullptr, nullptr));
  }

  static void setBatches(const Owned<MDQueryRef>& query, MDQueryBatchingParams params) {
    MDQuerySetBatchingParameters(query.get(), params);
  }

  // Runs the loop for that long.
  static void run(double seconds = 1) { CFRunLoopRunInMode(kCFRunLoopDefaultMode, seconds, false); }
  // Runs it until that is so; five minutes pass before it gives up.
  static void runUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(5);
    while (!condition() && std::chrono::steady_clock::now() < end) run(0.1);
    EXPECT_TRUE(condition());
  }
  static void gather(const Owned<MDQueryRef>& query, CFOptionFlags flags = 0) {
    ASSERT_TRUE(MDQueryExecute(query.get(), flags));
    runUntil([&] { return MDQueryIsGatheringComplete(query.get()) != 0; });
  }

  static MDItemRef resultAt(const Owned<MDQueryRef>& query, CFIndex index) {
    return itemOf(MDQueryGetResultAtIndex(query.get(), index));
  }
  std::vector<std::string> results(const Owned<MDQueryRef>& query) const {
    std::vector<std::string> paths;
    for (CFIndex i = 0; i < MDQueryGetResultCount(query.get()); ++i)
      paths.push_back(pathOf(resultAt(query, i)));
    return scratch.within(paths);
  }

  void makeFiles(int count, const std::string& prefix = "file-") const {
    for (int i = 0; i < count; ++i) scratch.file(prefix + std::to_string(i) + ".txt");
  }

  ScratchFolder scratch;
};
