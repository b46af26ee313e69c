// Classes registered with the runtime.
#include "standin/corefoundation/CFRuntime.h"

#include "tests/standin/corefoundation/support.h"

namespace {

struct Pair {
  CFRuntimeBase base;
  int a;
  int b;
};

struct Seen {
  int inits = 0;
  int finalizes = 0;
  CFIndex countInInit = 0;
  CFIndex countInFinalize = 0;
};
Seen seen;

void initPair(CFTypeRef cf) {
  ++seen.inits;
  seen.countInInit = CFGetRetainCount(cf);
  EXPECT_EQ(static_cast<const Pair*>(cf)->a, 0);
  EXPECT_EQ(static_cast<const Pair*>(cf)->b, 0);
}
void finalizePair(CFTypeRef cf) {
  ++seen.finalizes;
  seen.countInFinalize = CFGetRetainCount(cf);
}
Boolean equalPairs(CFTypeRef x, CFTypeRef y) {
  return static_cast<const Pair*>(x)->a == static_cast<const Pair*>(y)->a;
}
CFHashCode hashPair(CFTypeRef cf) {
  return static_cast<CFHashCode>(static_cast<const Pair*>(cf)->a);
}

constexpr CFRuntimeClass kPairClass = {.className = "TestPair",
                                       .init = initPair,
                                       .finalize = finalizePair,
                                       .equal = equalPairs,
                                       .hash = hashPair};

void retainInFinalize(CFTypeRef cf) {
  CFRetain(cf);
}
void releaseInFinalize(CFTypeRef cf) {
  CFRelease(cf);
}
constexpr CFRuntimeClass kClingingClass = {.className = "TestClinging", .finalize = retainInFinalize};
constexpr CFRuntimeClass kEagerClass = {.className = "TestEager", .finalize = releaseInFinalize};

CFTypeID pairType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kPairClass);
  return type;
}

Pair* makePair(int a, int b) {
  const CFTypeRef made =
      _CFRuntimeCreateInstance(nullptr, pairType(), sizeof(Pair) - sizeof(CFRuntimeBase), nullptr);
  Pair* const pair = const_cast<Pair*>(static_cast<const Pair*>(made));
  pair->a = a;
  pair->b = b;
  return pair;
}

class Runtime : public LedgerTest {
 protected:
  void SetUp() override {
    LedgerTest::SetUp();
    seen = {};
  }
};

TEST_F(Runtime, RegisteredTypesStartAt256AndKnowTheirName) {
  EXPECT_GE(pairType(), 256U);
  const Owned<CFStringRef> name(CFCopyTypeIDDescription(pairType()));
  EXPECT_EQ(textOf(name.get()), "TestPair");
}

TEST_F(Runtime, TheBuiltInTypesHaveTheirFixedIdentifiers) {
  EXPECT_EQ(CFAllocatorGetTypeID(), 2U);
  EXPECT_EQ(CFStringGetTypeID(), 7U);
  EXPECT_EQ(CFNullGetTypeID(), 16U);
  EXPECT_EQ(CFDictionaryGetTypeID(), 18U);
  EXPECT_EQ(CFArrayGetTypeID(), 19U);
  EXPECT_EQ(CFDataGetTypeID(), 20U);
  EXPECT_EQ(CFBooleanGetTypeID(), 21U);
  EXPECT_EQ(CFNumberGetTypeID(), 22U);
  EXPECT_LT(CFDateGetTypeID(), 256U);
  EXPECT_LT(CFURLGetTypeID(), 256U);
  EXPECT_EQ(CFCopyTypeIDDescription(255), nullptr);
}

TEST_F(Runtime, InitSeesACountOfOneAndFinalizeTooWhenTheLastReferenceGoes) {
  Pair* const pair = makePair(1, 2);
  EXPECT_EQ(CFGetTypeID(pair), pairType());
  EXPECT_EQ(seen.inits, 1);
  EXPECT_EQ(seen.countInInit, 1);
  CFRetain(pair);
  CFRelease(pair);
  EXPECT_EQ(seen.finalizes, 0);
  CFRelease(pair);
  EXPECT_EQ(seen.finalizes, 1);
  EXPECT_EQ(seen.countInFinalize, 1);
}

TEST_F(Runtime, EqualAndHashOfTheClassAreAsked) {
  const Owned<Pair*> one(makePair(1, 2));
  const Owned<Pair*> same(makePair(1, 3));
  const Owned<Pair*> other(makePair(2, 2));
  EXPECT_TRUE(CFEqual(one.get(), same.get()));
  EXPECT_FALSE(CFEqual(one.get(), other.get()));
  EXPECT_FALSE(CFEqual(one.get(), kCFNull));
  EXPECT_EQ(CFHash(one.get()), 1U);
  const Owned<CFMutableDictionaryRef> dictionary(
      CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, nullptr));
  CFDictionarySetValue(dictionary.get(), one.get(), "one");
  EXPECT_STREQ(static_cast<const char*>(CFDictionaryGetValue(dictionary.get(), same.get())), "one");
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), other.get()), nullptr);
}

TEST_F(Runtime, TheLedgerHasALineOfTheClassesName) {
  {
    const Owned<Pair*> pair(makePair(1, 2));
    EXPECT_EQ(standin::ledgerLine("TestPair"), 1);
  }
  EXPECT_EQ(standin::ledgerLine("TestPair"), 0);
}

class RuntimeStrictness : public LedgerTest {};

TEST_F(RuntimeStrictness, UseAfterFreeNamesTheClass) {
  Pair* const pair = makePair(1, 2);
  CFRelease(pair);
  EXPECT_DEATH(CFRelease(pair), "CFRelease: a freed TestPair at 0x");
}

TEST_F(RuntimeStrictness, AFinalizerThatRetainsOrReleasesItsObjectIsCaught) {
  const CFTypeID clinging = _CFRuntimeRegisterClass(&kClingingClass);
  const CFTypeID eager = _CFRuntimeRegisterClass(&kEagerClass);
  EXPECT_DEATH(CFRelease(_CFRuntimeCreateInstance(nullptr, clinging, 0, nullptr)),
               "TestClinging left a reference");
  EXPECT_DEATH(CFRelease(_CFRuntimeCreateInstance(nullptr, eager, 0, nullptr)),
               "released while it is being freed");
}

TEST_F(RuntimeStrictness, TypesThatWereNeverRegisteredMakeNoObjects) {
  EXPECT_DEATH(_CFRuntimeCreateInstance(nullptr, 900, 0, nullptr), "type 900 was never registered");
}

}  // namespace
