// Sets, bags, UUIDs, time zones, character sets and errors.
#include <functional>
#include <set>
#include <vector>

#include "tests/standin/corefoundation/support.h"

namespace {

class MoreTypes : public LedgerTest {};

constexpr CFUUIDBytes kBytes = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                                0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};

struct Type {
  const char* name;
  CFTypeID (*id)();
  const char* creator;
  std::function<CFTypeRef()> make;
  std::function<CFTypeRef()> makeOther;  // one that differs; null: the type has no content
};

std::vector<Type> types() {
  return {
      {"CFSet", CFSetGetTypeID, "CFSetCreate",
       [] { return CFSetCreate(nullptr, nullptr, 0, &kCFTypeSetCallBacks); }, nullptr},
      {"CFBag", CFBagGetTypeID, "CFBagCreate",
       [] { return CFBagCreate(nullptr, nullptr, 0, &kCFTypeBagCallBacks); }, nullptr},
      {"CFUUID", CFUUIDGetTypeID, "CFUUIDCreateFromUUIDBytes",
       [] { return CFUUIDCreateFromUUIDBytes(nullptr, kBytes); }, [] { return CFUUIDCreate(nullptr); }},
      {"CFTimeZone", CFTimeZoneGetTypeID, "CFTimeZoneCreateWithTimeIntervalFromGMT",
       [] { return CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, 3600); },
       [] { return CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, -3600); }},
      {"CFCharacterSet", CFCharacterSetGetTypeID, "CFCharacterSetCreateWithCharactersInRange",
       [] {
         return CFCharacterSetCreateWithCharactersInRange(nullptr, {'a', 26});
       },
       nullptr},
      {"CFError", CFErrorGetTypeID, "CFErrorCreate",
       [] { return CFErrorCreate(nullptr, CFSTR("domain"), 7, nullptr); },
       [] { return CFErrorCreate(nullptr, CFSTR("domain"), 8, nullptr); }},
  };
}

TEST_F(MoreTypes, EachHasAnIdentifierOfItsOwnAndItsName) {
  std::set<CFTypeID> seen;
  for (const Type& type : types()) {
    EXPECT_TRUE(seen.insert(type.id()).second) << type.name;
    EXPECT_LT(type.id(), 256U) << type.name;
    const Owned<CFStringRef> name(CFCopyTypeIDDescription(type.id()));
    EXPECT_EQ(textOf(name.get()), type.name);
    const Owned<CFTypeRef> object(type.make());
    EXPECT_EQ(CFGetTypeID(object.get()), type.id()) << type.name;
  }
}

TEST_F(MoreTypes, EachIsCountedAndStandsInTheLedger) {
  for (const Type& type : types()) {
    if (type.id == CFTimeZoneGetTypeID) continue;  // a library may keep those
    const long before = standin::ledgerLine(type.name);
    {
      const Owned<CFTypeRef> object(type.make());
      EXPECT_EQ(standin::ledgerLine(type.name), before + 1);
      EXPECT_EQ(CFGetRetainCount(object.get()), 1) << type.name;
      CFRetain(object.get());
      EXPECT_EQ(CFGetRetainCount(object.get()), 2) << type.name;
      CFRelease(object.get());
    }
    EXPECT_EQ(standin::ledgerLine(type.name), before) << type.name;
  }
}

TEST_F(MoreTypes, EqualContentMakesEqualObjects) {
  for (const Type& type : types()) {
    if (!type.makeOther) continue;
    const Owned<CFTypeRef> one(type.make()), same(type.make()), other(type.makeOther());
    EXPECT_TRUE(CFEqual(one.get(), same.get())) << type.name;
    EXPECT_EQ(CFHash(one.get()), CFHash(same.get())) << type.name;
    EXPECT_FALSE(CFEqual(one.get(), other.get())) << type.name;
  }
}

TEST_F(MoreTypes, AnObjectWithoutContentIsEqualToItselfOnly) {
  for (const Type& type : types()) {
    if (type.makeOther) continue;
    const Owned<CFTypeRef> one(type.make()), other(type.make());
    EXPECT_TRUE(CFEqual(one.get(), one.get())) << type.name;
    EXPECT_FALSE(CFEqual(one.get(), other.get())) << type.name;
  }
}

TEST_F(MoreTypes, ACreatorThatIsChosenToFailAnswersNull) {
  for (const Type& type : types()) {
    standin::failCall(type.creator, 1);
    EXPECT_EQ(type.make(), nullptr) << type.name;
    EXPECT_EQ(standin::failuresFired(), 1) << type.name;
    standin::failCall((std::string(type.name) + "GetTypeID").c_str(), 1);
    EXPECT_EQ(type.id(), 0U) << type.name;
    standin::clearFailures();
  }
}

TEST_F(MoreTypes, AUUIDKeepsItsBytesAndReadsAsTheUsualText) {
  const Owned<CFUUIDRef> uuid(CFUUIDCreateFromUUIDBytes(nullptr, kBytes));
  EXPECT_EQ(CFUUIDGetUUIDBytes(uuid.get()).byte1, 0x11);
  EXPECT_EQ(CFUUIDGetUUIDBytes(uuid.get()).byte15, 0xFF);
  const Owned<CFStringRef> text(CFUUIDCreateString(nullptr, uuid.get()));
  EXPECT_EQ(textOf(text.get()), "00112233-4455-6677-8899-AABBCCDDEEFF");
}

TEST_F(MoreTypes, NewUUIDsDifferAndAreRandomOnes) {
  const Owned<CFUUIDRef> one(CFUUIDCreate(nullptr)), other(CFUUIDCreate(nullptr));
  EXPECT_FALSE(CFEqual(one.get(), other.get()));
  EXPECT_EQ(CFUUIDGetUUIDBytes(one.get()).byte6 & 0xF0, 0x40);
  EXPECT_EQ(CFUUIDGetUUIDBytes(one.get()).byte8 & 0xC0, 0x80);
}

TEST_F(MoreTypes, ATimeZoneIsWholeMinutesFromGMT) {
  const std::pair<CFTimeInterval, CFTimeInterval> rows[] = {{89, 60},    {90, 120}, {-89, -60},
                                                            {-90, -120}, {29.9, 0}, {3600, 3600}};
  for (const auto& [asked, rounded] : rows) {
    const Owned<CFTimeZoneRef> zone(CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, asked));
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(zone.get(), 0), rounded) << asked;
  }
}

TEST_F(MoreTypes, ATimeZoneShiftsTheGregorianDateBothWays) {
  const Owned<CFTimeZoneRef> zone(CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, 5400));
  EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(zone.get(), 0), 5400);
  const CFGregorianDate date = CFAbsoluteTimeGetGregorianDate(0, zone.get());
  EXPECT_EQ(date.hour, 1);
  EXPECT_EQ(date.minute, 30);
  EXPECT_EQ(CFGregorianDateGetAbsoluteTime(date, zone.get()), 0);
  EXPECT_EQ(CFGregorianDateGetAbsoluteTime(date, nullptr), 5400);
  EXPECT_EQ(CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, 19 * 3600), nullptr);
}

TEST_F(MoreTypes, AnErrorHasItsDomainItsCodeAndItsInfo) {
  const void* keys[] = {CFSTR("key")};
  const void* values[] = {CFSTR("value")};
  const Owned<CFDictionaryRef> info(CFDictionaryCreate(
      nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  const Owned<CFErrorRef> error(CFErrorCreate(nullptr, CFSTR("domain"), -43, info.get()));
  EXPECT_EQ(textOf(CFErrorGetDomain(error.get())), "domain");
  EXPECT_EQ(CFErrorGetCode(error.get()), -43);
  const Owned<CFDictionaryRef> copied(CFErrorCopyUserInfo(error.get()));
  EXPECT_TRUE(CFEqual(copied.get(), info.get()));
  const Owned<CFErrorRef> bare(CFErrorCreate(nullptr, CFSTR("domain"), -43, nullptr));
  const Owned<CFDictionaryRef> none(CFErrorCopyUserInfo(bare.get()));
  EXPECT_EQ(CFDictionaryGetCount(none.get()), 0);
  EXPECT_FALSE(CFEqual(error.get(), bare.get()));
}

class MoreTypesStrictness : public LedgerTest {};

// Elsewhere one of each may be kept for ever.
TEST_F(MoreTypesStrictness, TimeZonesAreCountedToo) {
  const Owned<CFTimeZoneRef> zone(CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, 3600));
  EXPECT_EQ(standin::ledgerLine("CFTimeZone"), 1);
}

template <class T>
T wrong() {
  return reinterpret_cast<T>(const_cast<void*>(static_cast<const void*>(CFSTR("text"))));
}

TEST_F(MoreTypesStrictness, AnObjectOfAnotherTypeEndsTheProcess) {
  EXPECT_DEATH(CFUUIDGetUUIDBytes(wrong<CFUUIDRef>()),
               "CFUUIDGetUUIDBytes: a CFString .* where a CFUUID is needed");
  EXPECT_DEATH(CFTimeZoneGetSecondsFromGMT(wrong<CFTimeZoneRef>(), 0), "where a CFTimeZone is needed");
  EXPECT_DEATH(CFAbsoluteTimeGetGregorianDate(0, wrong<CFTimeZoneRef>()), "where a CFTimeZone is needed");
  EXPECT_DEATH(CFErrorGetCode(wrong<CFErrorRef>()), "where a CFError is needed");
  EXPECT_DEATH(CFErrorCreate(nullptr, CFSTR("domain"), 1, wrong<CFDictionaryRef>()), "a CFDictionary is");
}

TEST_F(MoreTypesStrictness, NullAndImpossibleArgumentsEndTheProcess) {
  const void* values[] = {kCFNull};
  EXPECT_DEATH(CFSetCreate(nullptr, values, 1, nullptr), "CFSetCreate: sets hold no values here");
  EXPECT_DEATH(CFBagCreate(nullptr, values, 1, nullptr), "CFBagCreate: bags hold no values here");
  EXPECT_DEATH(CFErrorCreate(nullptr, nullptr, 1, nullptr), "CFErrorCreate: null");
}

}  // namespace
