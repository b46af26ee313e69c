// The callback of a query's notifications, called as no notification centre would.
#include <CoreServices/CoreServices.h>

#include "query/query.h"
#include "tests/plugin/objects/fixture.h"

namespace {

class CallBack : public ObjectsTest {};

TEST_F(CallBack, WithoutAnObserverReturnsAtOnce) {
  start();
  EXPECT_EQ(std::vector<std::string>(),
            callsOf([] { MyCallBack(nullptr, nullptr, kMDQueryDidUpdateNotification, nullptr, nullptr); }));
}

TEST_F(CallBack, IgnoresOtherNotifications) {
  start();
  const host::Value observer = host::stringArray({});  // never looked at
  EXPECT_EQ(std::vector<std::string>(3, "CFStringCompare"),
            callsOf([&] { MyCallBack(nullptr, observer.handle(), CFSTR("another"), nullptr, nullptr); }));
}

TEST_F(CallBack, TellsNamesApartByTheCaseOfTheirLetters) {
  start();
  const host::Value observer = host::stringArray({});
  EXPECT_EQ(std::vector<std::string>(3, "CFStringCompare"), callsOf([&] {
              MyCallBack(nullptr, observer.handle(), CFSTR("KMDQUERYDIDFINISHNOTIFICATION"), nullptr,
                         nullptr);
            }));
}

}  // namespace
