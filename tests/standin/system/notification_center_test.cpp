#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/owned.h"
#include "tests/support/texts.h"

namespace {

struct Observer {
  std::string name;
  std::vector<std::string>* heard;
  std::function<void()> reaction;
};

void hear(CFNotificationCenterRef, void* observer, CFStringRef name, const void*, CFDictionaryRef) {
  const auto* const self = static_cast<Observer*>(observer);
  self->heard->push_back(self->name + " hears " + textOf(name));
  if (self->reaction) self->reaction();
}

class NotificationCenter : public testing::Test {
 protected:
  ~NotificationCenter() override {
    for (Observer* observer : {&ann, &bob, &cid}) remove(*observer);
    standin::clearFailures();
    EXPECT_EQ(alive(), "");
  }

  void add(Observer& observer, const char* name, const void* object = nullptr) {
    Owned<CFStringRef> key = name ? makeString(name) : Owned<CFStringRef>();
    CFNotificationCenterAddObserver(center, &observer, hear, key.get(), object,
                                    CFNotificationSuspensionBehaviorDeliverImmediately);
  }
  void remove(const Observer& observer) { CFNotificationCenterRemoveEveryObserver(center, &observer); }
  void post(const char* name, const void* object = nullptr) {
    CFNotificationCenterPostNotification(center, makeString(name).get(), object, nullptr, true);
  }

  CFNotificationCenterRef center = CFNotificationCenterGetLocalCenter();
  std::vector<std::string> heard;
  Observer ann{"Ann", &heard, nullptr};
  Observer bob{"Bob", &heard, nullptr};
  Observer cid{"Cid", &heard, nullptr};
  int object = 0;
  int otherObject = 0;
};

TEST_F(NotificationCenter, IsOneForTheProcess) {
  EXPECT_EQ(center, CFNotificationCenterGetLocalCenter());
  EXPECT_EQ(CFGetTypeID(center), CFNotificationCenterGetTypeID());
}

TEST_F(NotificationCenter, DeliversAtOnceInTheOrderOfRegistration) {
  add(bob, "news");
  add(ann, "news");
  add(cid, "weather");
  post("news");
  EXPECT_EQ(heard, (Texts{"Bob hears news", "Ann hears news"}));
}

TEST_F(NotificationCenter, DeliversByNameAndByObject) {
  add(ann, "news", &object);
  add(bob, nullptr, &object);
  add(cid, nullptr, nullptr);
  post("news", &otherObject);
  EXPECT_EQ(heard, Texts{"Cid hears news"});
  heard.clear();
  post("weather", &object);
  EXPECT_EQ(heard, (Texts{"Bob hears weather", "Cid hears weather"}));
  heard.clear();
  post("news", &object);
  EXPECT_EQ(heard, (Texts{"Ann hears news", "Bob hears news", "Cid hears news"}));
}

TEST_F(NotificationCenter, RemovesEveryRegistrationOfAnObserver) {
  add(ann, "news");
  add(ann, "weather", &object);
  add(bob, "news");
  remove(ann);
  post("news");
  post("weather", &object);
  EXPECT_EQ(heard, Texts{"Bob hears news"});
}

TEST_F(NotificationCenter, CallsNoObserverThatWasRemovedBeforeItsTurn) {
  ann.reaction = [&] {
    remove(bob);
    remove(ann);
  };
  add(ann, "news");
  add(bob, "news");
  add(cid, "news");
  post("news");
  EXPECT_EQ(heard, (Texts{"Ann hears news", "Cid hears news"}));
}

TEST_F(NotificationCenter, CallsNoObserverForWhatWasPostedBeforeItCame) {
  ann.reaction = [&] { add(bob, "news"); };
  add(ann, "news");
  post("news");
  EXPECT_EQ(heard, Texts{"Ann hears news"});
}

TEST_F(NotificationCenter, LetsAnObserverPost) {
  ann.reaction = [&] {
    if (heard.size() == 1) post("echo");
  };
  add(ann, nullptr);
  add(bob, "news");
  post("news");
  EXPECT_EQ(heard, (Texts{"Ann hears news", "Ann hears echo", "Bob hears news"}));
}

TEST_F(NotificationCenter, RetainsNeitherObserverNorObject) {
  const auto observed = makeString("observed");
  const CFIndex before = CFGetRetainCount(observed.get());
  add(ann, "news", observed.get());
  EXPECT_EQ(CFGetRetainCount(observed.get()), before);
}

TEST_F(NotificationCenter, HandsOnTheDictionary) {
  const Owned info(CFDictionaryCreate(kCFAllocatorDefault, nullptr, nullptr, 0,
                                      &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  CFDictionaryRef received = nullptr;
  const auto receive = [](CFNotificationCenterRef, void* observer, CFStringRef, const void*,
                          CFDictionaryRef userInfo) { *static_cast<CFDictionaryRef*>(observer) = userInfo; };
  CFNotificationCenterAddObserver(center, &received, receive, nullptr, nullptr,
                                  CFNotificationSuspensionBehaviorDeliverImmediately);
  CFNotificationCenterPostNotification(center, CFSTR("news"), nullptr, info.get(), true);
  CFNotificationCenterRemoveEveryObserver(center, &received);
  EXPECT_EQ(received, info.get());
}

// What an observer calls is logged as a call of its own, although a call is open around it.
TEST_F(NotificationCenter, CallsObserversFromOutside) {
  ann.reaction = [&] { CFNotificationCenterGetLocalCenter(); };
  add(ann, "news");
  const auto name = makeString("news");
  standin::countCalls();
  CFNotificationCenterPostNotification(center, name.get(), nullptr, nullptr, true);
  EXPECT_EQ(standin::callCount("CFNotificationCenterPostNotification"), 1);
  EXPECT_EQ(standin::callCount("CFNotificationCenterGetLocalCenter"), 1);
}

TEST_F(NotificationCenter, IsThereEvenWhenMadeToFail) {
  standin::failCall("CFNotificationCenterGetLocalCenter", 1);
  EXPECT_EQ(CFNotificationCenterGetLocalCenter(), center);
}

TEST_F(NotificationCenter, RemovesEvenWhenMadeToFail) {
  add(ann, "news");
  standin::failCall("CFNotificationCenterRemoveEveryObserver", 1);
  remove(ann);
  post("news");
  EXPECT_EQ(heard, Texts{});
}

using NotificationCenterDeathTest = NotificationCenter;

TEST_F(NotificationCenterDeathTest, EndsTheProcessForWrongArguments) {
  EXPECT_DEATH(CFNotificationCenterRemoveEveryObserver(nullptr, &ann), "not the local notification centre");
  EXPECT_DEATH(CFNotificationCenterAddObserver(center, &ann, nullptr, nullptr, nullptr, 4),
               "callback is null");
  EXPECT_DEATH(CFNotificationCenterPostNotification(center, nullptr, nullptr, nullptr, true), "name is null");
}

}  // namespace
