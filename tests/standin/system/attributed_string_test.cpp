#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include "tests/support/owned.h"

namespace {

class AttributedString : public testing::Test {
 protected:
  ~AttributedString() override {
    standin::clearFailures();
    EXPECT_EQ(alive(), "");
  }
};

TEST_F(AttributedString, HasATypeAndIsCounted) {
  const Owned one(CFAttributedStringCreate(nullptr, CFSTR("tide"), nullptr));
  const Owned other(CFAttributedStringCreate(nullptr, CFSTR("tide"), nullptr));
  EXPECT_EQ(CFGetTypeID(one.get()), CFAttributedStringGetTypeID());
  EXPECT_EQ(standin::ledgerLine("CFAttributedString"), 2);
  CFRetain(one.get());
  EXPECT_EQ(CFGetRetainCount(one.get()), 2);
  CFRelease(one.get());
  EXPECT_FALSE(CFEqual(one.get(), other.get()));
}

TEST_F(AttributedString, IsNotMadeWhenTheCallIsChosenToFail) {
  standin::failCall("CFAttributedStringCreate", 1);
  EXPECT_EQ(CFAttributedStringCreate(nullptr, CFSTR("tide"), nullptr), nullptr);
  EXPECT_EQ(CFAttributedStringCreate(kCFAllocatorNull, CFSTR("tide"), nullptr), nullptr);
  standin::failCall("CFAttributedStringGetTypeID", 1);
  EXPECT_EQ(CFAttributedStringGetTypeID(), 0U);
}

using AttributedStringDeathTest = AttributedString;

TEST_F(AttributedStringDeathTest, EndsTheProcessForANullText) {
  EXPECT_DEATH(CFAttributedStringCreate(nullptr, nullptr, nullptr), "the string is null");
}

}  // namespace
