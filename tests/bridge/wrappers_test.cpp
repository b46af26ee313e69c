// Values that become wrapper objects of the plug-in family, and back.
#include <ApplicationServices/ApplicationServices.h>

#include "standin/applicationservices/control.h"
#include "tests/bridge/fixture.h"

namespace {

const uint32_t kTag = 0x52424346;

CFOwner graphics(const char* type) {
  return own(standin::makeInstance(type));
}

struct WrapperCase {
  const char* className;
  CFOwner (*make)();
  bool checked;
};
void PrintTo(const WrapperCase& row, std::ostream* out) {
  *out << row.className;
}

#define GRAPHICS(type, checked)                          \
  {                                                      \
#type "ZNK", [] { return graphics(#type); }, checked \
  }

const WrapperCase kWrappers[] = {
    GRAPHICS(CGColorSpace, false),
    GRAPHICS(CGColor, false),
    GRAPHICS(CGImage, false),
    GRAPHICS(CGLayer, false),
    GRAPHICS(CGPath, false),
    GRAPHICS(CGDataConsumer, false),
    GRAPHICS(CGDataProvider, false),
    GRAPHICS(CGPSConverter, false),
    GRAPHICS(CGContext, false),
    GRAPHICS(CGEvent, true),
    GRAPHICS(CGEventSource, true),
    GRAPHICS(CGFont, false),
    {"CFCharacterSetZNK",
     [] { return own(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake('a', 3))); }, true},
    {"CFBundleZNK",
     [] {
       const CFOwner folder =
           own(CFURLCreateWithFileSystemPath(nullptr, CFSTR("/usr"), kCFURLPOSIXPathStyle, true));
       return own(CFBundleCreate(nullptr, static_cast<CFURLRef>(folder.get())));
     },
     true},
    {"CFSetZNK", [] { return own(CFSetCreate(nullptr, nullptr, 0, &kCFTypeSetCallBacks)); }, true},
    {"CFBagZNK", [] { return own(CFBagCreate(nullptr, nullptr, 0, &kCFTypeBagCallBacks)); }, true},
    {"CFUUIDZNK", [] { return own(CFUUIDCreate(nullptr)); }, true},
    {"CFTimeZoneZNK", [] { return own(CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, 3600)); }, true},
    {"CFAttributedStringZNK", [] { return own(CFAttributedStringCreate(nullptr, CFSTR("text"), nullptr)); },
     true},
    {"CFErrorZNK", [] { return own(CFErrorCreate(nullptr, CFSTR("domain"), 5, nullptr)); }, true},
    GRAPHICS(CTFont, true),
    GRAPHICS(CTFontCollection, true),
    GRAPHICS(CTFrame, true),
    GRAPHICS(CTFramesetter, true),
    GRAPHICS(CTGlyphInfo, true),
    GRAPHICS(CTLine, true),
    GRAPHICS(CTParagraphStyle, true),
    GRAPHICS(CTRun, true),
    GRAPHICS(CTTypesetter, true),
    GRAPHICS(CTRunDelegate, true),
    {"CFObjectZNK", [] { return own(CFRetain(CFNotificationCenterGetLocalCenter())); }, true},
};

class Wrappers : public BridgeTest, public testing::WithParamInterface<WrapperCase> {};

TEST_P(Wrappers, HoldOneReferenceToTheValue) {
  start();
  host::addWrapperClass(GetParam().className, true);
  const CFOwner value = GetParam().make();
  const CFIndex count = CFGetRetainCount(value.get());
  host::Value wrapper = toVariant(value.get());
  ASSERT_FALSE(wrapper.isNil());
  EXPECT_TRUE(host::isA(wrapper, GetParam().className));
  EXPECT_EQ(value.get(), host::wrapped(wrapper));
  EXPECT_EQ(kTag, host::wrapperTag(wrapper));
  EXPECT_EQ(count + 1, CFGetRetainCount(value.get()));
  wrapper = {};
  EXPECT_EQ(count, CFGetRetainCount(value.get()));
}

TEST_P(Wrappers, WithoutTheirClassAreCFObjectsOnlyWhenTheyAreChecked) {
  start();
  const bool any = std::string(GetParam().className) == "CFObjectZNK";
  if (!any) host::addWrapperClass("CFObjectZNK", true);
  const CFOwner value = GetParam().make();
  const CFIndex count = CFGetRetainCount(value.get());
  {
    const host::Value wrapper = toVariant(value.get());
    EXPECT_EQ(GetParam().checked && !any, !wrapper.isNil());
    if (!wrapper.isNil()) {
      EXPECT_EQ(value.get(), host::wrapped(wrapper));
    }
  }
  EXPECT_EQ(count, CFGetRetainCount(value.get()));
}

TEST_P(Wrappers, WithoutAnyClassAreNil) {
  start();
  const CFOwner value = GetParam().make();
  const CFIndex count = CFGetRetainCount(value.get());
  EXPECT_TRUE(toVariant(value.get()).isNil());
  EXPECT_EQ(count, CFGetRetainCount(value.get()));
}

TEST_P(Wrappers, OfAClassThatIsNotGenuineAreFilledOnlyWhenTheyAreNotChecked) {
  start();
  host::addWrapperClass(GetParam().className, false);
  const CFOwner value = GetParam().make();
  const CFIndex count = CFGetRetainCount(value.get());
  const host::Value wrapper = toVariant(value.get());
  EXPECT_EQ(GetParam().checked, wrapper.isNil());
  EXPECT_EQ(GetParam().checked ? count : count + 1, CFGetRetainCount(value.get()));
  if (GetParam().checked) {
    host::takeExceptions();
    const auto left = host::stop();  // the instance, neither filled nor given back
    EXPECT_EQ(1u, left.size());
  }
}

class OldSystem : public BridgeTest {};

TEST_F(OldSystem, WithoutRunDelegatesAValueOfAnUnknownTypeIsStillACFObject) {
  if (!isMachO()) GTEST_SKIP() << "only the loader of the dylib can take a function away";
  start({}, {"CTRunDelegateGetTypeID"});
  host::addWrapperClass("CFObjectZNK", true);
  const void* const value = CFNotificationCenterGetLocalCenter();
  EXPECT_EQ(value, host::wrapped(toVariant(value)));
}

INSTANTIATE_TEST_SUITE_P(Rows, Wrappers, testing::ValuesIn(kWrappers));

}  // namespace
