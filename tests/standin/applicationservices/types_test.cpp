#include <ApplicationServices/ApplicationServices.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "standin/applicationservices/control.h"
#include "tests/support/owned.h"

namespace {

struct Type {
  const char* name;
  CFTypeID (*id)();
  std::function<CFTypeRef(CFTypeRef)> retain;  // empty: the type has none of its own
};

#define TYPE(type)             \
  {                            \
#type, type##GetTypeID, {} \
  }
#define TYPE_WITH_RETAIN(type)                                                                        \
  {                                                                                                   \
#type, type##GetTypeID,                                                                           \
        [](CFTypeRef object)                                                                          \
             -> CFTypeRef { return type##Retain(static_cast<type##Ref>(const_cast<void*>(object))); } \
  }

const std::vector<Type>& types() {
  static const std::vector<Type> all = {
      TYPE_WITH_RETAIN(CGColorSpace),
      TYPE_WITH_RETAIN(CGColor),
      TYPE_WITH_RETAIN(CGImage),
      TYPE_WITH_RETAIN(CGLayer),
      TYPE_WITH_RETAIN(CGPath),
      TYPE_WITH_RETAIN(CGDataConsumer),
      TYPE_WITH_RETAIN(CGContext),
      TYPE_WITH_RETAIN(CGDataProvider),
      TYPE_WITH_RETAIN(CGFont),
      TYPE(CGPSConverter),
      TYPE(CGEvent),
      TYPE(CGEventSource),
      TYPE(CTFont),
      TYPE(CTFontCollection),
      TYPE(CTFrame),
      TYPE(CTFramesetter),
      TYPE(CTGlyphInfo),
      TYPE(CTLine),
      TYPE(CTParagraphStyle),
      TYPE(CTRun),
      TYPE(CTTypesetter),
      TYPE(CTRunDelegate),
  };
  return all;
}

class GraphicsTypes : public testing::Test {
 protected:
  ~GraphicsTypes() override {
    standin::clearFailures();
    EXPECT_EQ(alive(), "");
  }
};

TEST_F(GraphicsTypes, AreAllKnownByNameToWhoeverMakesInstances) {
  std::set<std::string_view> declared;
  for (const Type& type : types()) declared.insert(type.name);
  const auto names = standin::graphicsTypes();
  EXPECT_EQ(std::set<std::string_view>(names.begin(), names.end()), declared);
  EXPECT_EQ(names.size(), types().size());
}

TEST_F(GraphicsTypes, HaveAnIdentifierOfTheirOwnThatBearsTheirName) {
  std::set<CFTypeID> seen;
  for (const Type& type : types()) {
    EXPECT_GE(type.id(), 256U) << type.name;
    EXPECT_TRUE(seen.insert(type.id()).second) << type.name;
    EXPECT_EQ(textOf(Owned(CFCopyTypeIDDescription(type.id())).get()), type.name);
  }
}

TEST_F(GraphicsTypes, HaveInstancesThatAreCounted) {
  for (const Type& type : types()) {
    const Owned instance(standin::makeInstance(type.name));
    EXPECT_EQ(CFGetTypeID(instance.get()), type.id()) << type.name;
    EXPECT_EQ(CFGetRetainCount(instance.get()), 1) << type.name;
    EXPECT_EQ(standin::ledgerLine(type.name), 1) << type.name;
    const Owned other(standin::makeInstance(type.name));
    EXPECT_NE(other.get(), instance.get()) << type.name;
  }
}

TEST_F(GraphicsTypes, AreRetainedByTheirOwnFunction) {
  int withRetain = 0;
  for (const Type& type : types()) {
    if (!type.retain) continue;
    ++withRetain;
    const Owned instance(standin::makeInstance(type.name));
    EXPECT_EQ(type.retain(instance.get()), instance.get()) << type.name;
    EXPECT_EQ(CFGetRetainCount(instance.get()), 2) << type.name;
    CFRelease(instance.get());
    EXPECT_EQ(type.retain(nullptr), nullptr) << type.name;
  }
  EXPECT_EQ(withRetain, 9);
}

TEST_F(GraphicsTypes, AreRetainedEvenWhenTheCallIsChosenToFailAndTheirIdentifierIsZeroThen) {
  for (const Type& type : types()) {
    standin::failCall((std::string(type.name) + "GetTypeID").c_str(), 1);
    EXPECT_EQ(type.id(), 0U) << type.name;
    if (!type.retain) continue;
    const Owned instance(standin::makeInstance(type.name));
    standin::failCall((std::string(type.name) + "Retain").c_str(), 1);
    type.retain(instance.get());
    EXPECT_EQ(standin::failuresFired(), 1) << type.name;
    EXPECT_EQ(CFGetRetainCount(instance.get()), 2) << type.name;
    CFRelease(instance.get());
  }
}

TEST_F(GraphicsTypes, LogOneCallEach) {
  const Owned image(standin::makeInstance("CGImage"));
  standin::startLog();
  CTFontGetTypeID();
  CGImageRetain(static_cast<CGImageRef>(const_cast<void*>(image.get())));
  CFRelease(image.get());
  const std::vector<std::string> expected = {"CTFontGetTypeID", "CGImageRetain", "CFRelease"};
  EXPECT_EQ(standin::stopLog(), expected);
}

std::vector<CGFloat> componentsOf(CGColorRef color) {
  const CGFloat* const first = CGColorGetComponents(color);
  return {first, first + CGColorGetNumberOfComponents(color)};
}

TEST_F(GraphicsTypes, AColourHasTheComponentsThatItWasMadeOf) {
  const Owned color(CGColorCreateGenericRGB(1, 128.0F / 255, 0, 0.5F));
  EXPECT_EQ(CFGetTypeID(color.get()), CGColorGetTypeID());
  EXPECT_EQ(componentsOf(color.get()), (std::vector<CGFloat>{1, 128.0F / 255, 0, 0.5F}));
  const Owned far(CGColorCreateGenericRGB(-1, 2, 0, 1));
  EXPECT_EQ(componentsOf(far.get()), (std::vector<CGFloat>{0, 1, 0, 1}));
}

TEST_F(GraphicsTypes, ColoursAreComparedByTheirComponents) {
  const Owned one(CGColorCreateGenericRGB(1, 0.5F, 0, 1));
  const Owned same(CGColorCreateGenericRGB(1, 0.5F, 0, 1));
  const Owned other(CGColorCreateGenericRGB(1, 0.5F, 0, 0.5F));
  EXPECT_TRUE(CFEqual(one.get(), same.get()));
  EXPECT_EQ(CFHash(one.get()), CFHash(same.get()));
  EXPECT_FALSE(CFEqual(one.get(), other.get()));
}

TEST_F(GraphicsTypes, CreatorsMakeTheTypeThatTheirNamesSayAndNullWhenChosenToFail) {
  const Owned<CFTypeRef> space(CGColorSpaceCreateDeviceRGB());
  EXPECT_EQ(CFGetTypeID(space.get()), CGColorSpaceGetTypeID());
  const Owned<CFTypeRef> path(CGPathCreateMutable());
  EXPECT_EQ(CFGetTypeID(path.get()), CGPathGetTypeID());
  standin::failCall("CGColorSpaceCreateDeviceRGB", 1);
  EXPECT_EQ(CGColorSpaceCreateDeviceRGB(), nullptr);
  standin::failCall("CGPathCreateMutable", 1);
  EXPECT_EQ(CGPathCreateMutable(), nullptr);
  standin::failCall("CGColorCreateGenericRGB", 1);
  EXPECT_EQ(CGColorCreateGenericRGB(0, 0, 0, 1), nullptr);
}

using GraphicsTypesDeathTest = GraphicsTypes;

TEST_F(GraphicsTypesDeathTest, AnObjectOfAnotherTypeEndsTheProcess) {
  for (const Type& type : types()) {
    if (!type.retain) continue;
    EXPECT_DEATH(type.retain(CFSTR("text")), std::string(type.name) + "Retain: this is no " + type.name);
  }
  EXPECT_DEATH(CGColorGetComponents(nullptr), "CGColorGetComponents: null where a CGColor is needed");
  EXPECT_DEATH(standin::makeInstance("CTNothing"), "no type is called CTNothing");
}

}  // namespace
