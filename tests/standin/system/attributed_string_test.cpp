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

  static Owned<CFDictionaryRef> makeAttributes() {
    const void* keys[] = {CFSTR("language")};
    const void* values[] = {CFSTR("en")};
    return Owned(CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks,
                                    &kCFTypeDictionaryValueCallBacks));
  }
};

TEST_F(AttributedString, HasItsTextAndItsAttributesEverywhere) {
  const auto attributes = makeAttributes();
  const Owned string(CFAttributedStringCreate(nullptr, CFSTR("tide"), attributes.get()));
  EXPECT_EQ(CFGetTypeID(string.get()), CFAttributedStringGetTypeID());
  EXPECT_EQ(textOf(CFAttributedStringGetString(string.get())), "tide");
  EXPECT_EQ(CFAttributedStringGetLength(string.get()), 4);
  CFRange range{};
  EXPECT_TRUE(CFEqual(CFAttributedStringGetAttributes(string.get(), 2, &range), attributes.get()));
  EXPECT_EQ(range.location, 0);
  EXPECT_EQ(range.length, 4);
}

TEST_F(AttributedString, KeepsACopyOfAMutableText) {
  const Owned text(CFStringCreateMutableCopy(nullptr, 0, CFSTR("tide")));
  const Owned string(CFAttributedStringCreate(nullptr, text.get(), nullptr));
  CFStringAppend(text.get(), CFSTR("s"));
  EXPECT_EQ(textOf(CFAttributedStringGetString(string.get())), "tide");
}

TEST_F(AttributedString, IsCountedAndComparedByContent) {
  const auto attributes = makeAttributes();
  const Owned one(CFAttributedStringCreate(nullptr, CFSTR("tide"), attributes.get()));
  const Owned same(CFAttributedStringCreate(nullptr, CFSTR("tide"), attributes.get()));
  const Owned plain(CFAttributedStringCreate(nullptr, CFSTR("tide"), nullptr));
  EXPECT_EQ(standin::ledgerLine("CFAttributedString"), 3);
  CFRetain(one.get());
  EXPECT_EQ(CFGetRetainCount(one.get()), 2);
  CFRelease(one.get());
  EXPECT_TRUE(CFEqual(one.get(), same.get()));
  EXPECT_EQ(CFHash(one.get()), CFHash(same.get()));
  EXPECT_FALSE(CFEqual(one.get(), plain.get()));
}

TEST_F(AttributedString, IsNotMadeWhenTheCallIsChosenToFail) {
  standin::failCall("CFAttributedStringCreate", 1);
  EXPECT_EQ(CFAttributedStringCreate(nullptr, CFSTR("tide"), nullptr), nullptr);
  EXPECT_EQ(CFAttributedStringCreate(kCFAllocatorNull, CFSTR("tide"), nullptr), nullptr);
  standin::failCall("CFAttributedStringGetTypeID", 1);
  EXPECT_EQ(CFAttributedStringGetTypeID(), 0U);
}

using AttributedStringDeathTest = AttributedString;

TEST_F(AttributedStringDeathTest, EndsTheProcessForWrongObjectsAndPlaces) {
  EXPECT_DEATH(CFAttributedStringCreate(nullptr, nullptr, nullptr), "the string is null");
  EXPECT_DEATH(CFAttributedStringGetLength(reinterpret_cast<CFAttributedStringRef>(CFSTR("text"))),
               "CFAttributedStringGetLength: this is no attributed string");
  EXPECT_DEATH(
      CFAttributedStringGetAttributes(CFAttributedStringCreate(nullptr, CFSTR("tide"), nullptr), 4, nullptr),
      "place 4 in a text of 4");
}

}  // namespace
