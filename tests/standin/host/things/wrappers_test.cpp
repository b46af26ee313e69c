#include <CoreFoundation/CoreFoundation.h>

#include <cstring>

#include "tests/standin/host/fake_plugin.h"

namespace fake {
namespace {

constexpr uint32_t familyTag = 0x52424346;

uint32_t& wordAt(Object object, size_t offset) {
  return *reinterpret_cast<uint32_t*>(static_cast<char*>(object) + offset);
}

void fill(Object object, CFTypeRef reference) {
  wordAt(object, 24) = ClassRecords::address(reference);
}

CFTypeRef newData() {
  constexpr UInt8 bytes[] = {1, 2, 3};
  return CFDataCreate(nullptr, bytes, 3);
}

class Wrappers : public HostTest {
 protected:
  Wrappers() { GTEST_FLAG_SET(death_test_style, "fast"); }
};

TEST_F(Wrappers, AreAbsentUnlessAdded) {
  const auto reference = entry<void*(const char*)>("pluginObjectType");
  EXPECT_EQ(newInstance("CFUUIDZNK"), nullptr);
  EXPECT_EQ(reference("CFUUIDZNK"), nullptr);
  host::addWrapperClass("CFUUIDZNK", true);
  EXPECT_NE(reference("CFUUIDZNK"), nullptr);
  EXPECT_THROW(host::addWrapperClass("CFUUIDZNK", true), std::logic_error);
  EXPECT_THROW(host::addWrapperClass("CGColorZNK", true, "Nowhere"), std::logic_error);
}

TEST_F(Wrappers, GenuineOnesHaveTheTagFromTheStart) {
  host::addWrapperClass("CFUUIDZNK", true);
  host::addWrapperClass("CGColorZNK", false);
  const Object genuine = newInstance("CFUUIDZNK"), other = newInstance("CGColorZNK");
  EXPECT_EQ(wordAt(genuine, 32), familyTag);
  EXPECT_EQ(wordAt(other, 32), 0u);
  EXPECT_EQ(wordAt(genuine, 24), 0u);
  unlockObject(genuine);
  unlockObject(other);
}

TEST_F(Wrappers, ReleaseTheirReferenceWhenTheyEnd) {
  host::addWrapperClass("CFUUIDZNK", true);
  host::addWrapperClass("CGColorZNK", false);
  const CFTypeRef data = newData();
  const Object genuine = newInstance("CFUUIDZNK"), other = newInstance("CGColorZNK");
  for (const Object wrapper : {genuine, other}) {
    fill(wrapper, CFRetain(data));
    wordAt(wrapper, 32) = familyTag;
  }
  EXPECT_EQ(CFGetRetainCount(data), 3);
  unlockObject(genuine);
  unlockObject(other);
  EXPECT_EQ(CFGetRetainCount(data), 1);
  CFRelease(data);
}

TEST_F(Wrappers, AreFilledAndReadByHostCode) {
  host::addWrapperClass("KeychainZNK", false);
  const CFTypeRef first = newData(), second = newData();
  {
    const auto wrapper = host::newInstance("KeychainZNK");
    EXPECT_EQ(host::wrapped(wrapper), nullptr);
    host::setWrapped(wrapper, CFRetain(first));
    EXPECT_EQ(wordAt(wrapper.handle(), 24), ClassRecords::address(first));
    host::setWrapped(wrapper, CFRetain(second));
    EXPECT_EQ(CFGetRetainCount(first), 1);
    EXPECT_EQ(host::wrapped(wrapper), second);
    EXPECT_EQ(host::wrapperTag(wrapper), 0u);
  }
  EXPECT_EQ(CFGetRetainCount(second), 1);
  CFRelease(first);
  CFRelease(second);
}

TEST_F(Wrappers, MayDeriveFromOneAnother) {
  host::addWrapperClass("CFObjectZNK", true);
  host::addWrapperClass("CFUUIDZNK", true, "CFObjectZNK");
  EXPECT_TRUE(host::isA(host::newInstance("CFUUIDZNK"), "CFObjectZNK"));
  EXPECT_FALSE(host::isA(host::newInstance("CFObjectZNK"), "CFUUIDZNK"));
}

TEST_F(Wrappers, GeometryHasFourNumbersInTheBlock) {
  host::addGeometryClass("CGRectZNK");
  const auto rectangle = host::geometry("CGRectZNK", {1.5, 2, 3, 4});
  double third = 0;
  std::memcpy(&third, static_cast<const char*>(rectangle.handle()) + 40, sizeof third);
  EXPECT_EQ(third, 3);
  EXPECT_EQ(host::numbers(rectangle), (std::vector<double>{1.5, 2, 3, 4}));
  EXPECT_THROW(host::geometry("CGRectZNK", {1, 2, 3, 4, 5}), host::CallError);
  EXPECT_THROW(host::wrapped(rectangle), host::CallError);
  EXPECT_THROW(host::numbers(host::newInstance("Date")), host::CallError);
}

TEST_F(Wrappers, AReferenceInOneWithoutATagEndsTheProcess) {
  host::addWrapperClass("CFUUIDZNK", false);
  EXPECT_DEATH(
      {
        const Object wrapper = newInstance("CFUUIDZNK");
        fill(wrapper, newData());
        unlockObject(wrapper);
      },
      "REALUnlockObject: a reference was put into the object CFUUIDZNK, which has no tag");
}

TEST_F(Wrappers, AnOverwrittenTagEndsTheProcess) {
  host::addWrapperClass("CFUUIDZNK", true);
  EXPECT_DEATH(
      {
        const Object wrapper = newInstance("CFUUIDZNK");
        wordAt(wrapper, 32) = 0;
        unlockObject(wrapper);
      },
      "REALUnlockObject: the tag of the object CFUUIDZNK was overwritten");
}

TEST_F(Wrappers, AReferenceInAnObjectThatIsNoneEndsTheProcess) {
  EXPECT_DEATH(
      {
        const Object date = newInstance("Date");
        wordAt(date, 24) = 1;
        unlockObject(date);
      },
      "REALUnlockObject: the head of the object Date was overwritten");
}

}  // namespace
}  // namespace fake
