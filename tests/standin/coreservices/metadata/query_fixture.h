// Queries that run, and what they tell. The clock is the tests': running the loop for
// a second takes no time, and what the test does to files is known at once.
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "standin/system/clock.h"
#include "tests/standin/coreservices/metadata/fixture.h"

inline MDQueryRef queryOf(const void* object) {
  return static_cast<MDQueryRef>(const_cast<void*>(object));
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

class QueryTest : public MetadataTest {
 protected:
  QueryTest() { standin::holdClock(); }
  ~QueryTest() override { standin::releaseClock(); }

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

  void makeFiles(int count, const std::string& prefix = "file-") const {
    for (int i = 0; i < count; ++i) scratch.file(prefix + std::to_string(i) + ".txt");
  }
};
