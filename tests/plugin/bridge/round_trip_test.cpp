// Values on their way there and back: whole trees of them, and deep ones.
#include <pthread.h>

#include <functional>
#include <random>

#include "tests/plugin/bridge/fixture.h"
#include "tests/support/sanitizers.h"
#include "tests/support/tier.h"

namespace {

class RoundTrip : public BridgeTest {};

int treeCount() {
  return isLongTier() ? 100000 : 2000;
}

// Trees of values that come back as they went: 32-bit integers, 64-bit integers, doubles, booleans, texts,
// whole-second dates, arrays, dictionaries with text keys.
class Trees {
 public:
  explicit Trees(uint32_t seed) : random_(seed) {}

  CFOwner next(int depth) {
    const int kinds = depth > 0 ? 8 : 6;
    switch (below(kinds)) {
      case 0:
        return cfInt32(static_cast<int32_t>(random_()));
      case 1:
        return cfInt64(static_cast<int64_t>(random_()) << 20);
      case 2:
        return cfReal(static_cast<double>(random_()) / 7);
      case 3:
        return own(CFRetain(below(2) ? kCFBooleanTrue : kCFBooleanFalse));
      case 4:
        return cfText(word());
      case 5:
        return own(CFDateCreate(nullptr, static_cast<double>(below(2000000000)) - 1000000000));
      case 6:
        return array(depth);
      default:
        return dictionary(depth);
    }
  }

 private:
  int below(int bound) { return static_cast<int>(random_() % static_cast<uint32_t>(bound)); }

  std::string word() {
    static const char* const letters[] = {
        "a", "Z", "7", " ", "\xC3\xA9", "\xE6\x9D\xB1", "\xF0\x9F\x98\x80", "e\xCC\x81"};
    std::string word = "w";  // the empty text is nil on its way
    for (int i = below(6); i > 0; --i) word += letters[below(8)];
    return word;
  }

  CFOwner array(int depth) {
    std::vector<CFOwner> owners;
    std::vector<const void*> values;
    for (int i = below(5); i > 0; --i) {
      owners.push_back(next(depth - 1));
      values.push_back(owners.back().get());
    }
    return cfArray(values);
  }

  CFOwner dictionary(int depth) {
    std::vector<CFOwner> owners;
    std::vector<std::pair<const void*, const void*>> pairs;
    for (int i = below(5); i > 0; --i) {
      // Host code tells keys apart whatever their letter case, so they differ by number.
      owners.push_back(cfText(std::to_string(i) + word()));
      const void* const key = owners.back().get();
      owners.push_back(next(depth - 1));
      pairs.emplace_back(key, owners.back().get());
    }
    return cfDictionary(pairs);
  }

  std::mt19937 random_;
};

TEST_F(RoundTrip, FromThePlatformToHostCodeAndBackKeepsEveryTree) {
  start();
  for (int seed = 1; seed <= treeCount(); ++seed) {
    const CFOwner tree = Trees(static_cast<uint32_t>(seed)).next(4);
    const CFOwner back = toCF(toVariant(tree.get()));
    ASSERT_NE(nullptr, back) << "seed " << seed;
    ASSERT_TRUE(CFEqual(tree.get(), back.get())) << "seed " << seed;
  }
}

// The host's values have no equality of their own, so the second trip is compared with the first.
TEST_F(RoundTrip, FromHostCodeToThePlatformAndBackKeepsEveryTree) {
  for (const double version : {2013.9, 2014.1}) {
    host::Settings settings;
    settings.version = version;
    start(settings);
    for (int seed = 1; seed <= treeCount() / 2; ++seed) {
      const CFOwner tree = Trees(static_cast<uint32_t>(seed)).next(4);
      const host::Value there = toVariant(tree.get());
      const CFOwner middle = toCF(there);
      const host::Value again = toVariant(middle.get());
      ASSERT_EQ(there.kind(), again.kind()) << "seed " << seed;
      ASSERT_TRUE(CFEqual(toCF(again).get(), tree.get())) << "seed " << seed;
    }
    TearDown();
  }
}

// What a secondary thread's stack on the Mac holds.
const size_t kStackSize = 512 * 1024;

void runOnSmallStack(const std::function<void()>& work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStackSize);
  pthread_t thread;
  const auto entry = [](void* work) -> void* {
    (*static_cast<const std::function<void()>*>(work))();
    return nullptr;
  };
  ASSERT_EQ(0, pthread_create(&thread, &attributes, entry, const_cast<std::function<void()>*>(&work)));
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

// Sanitized frames are many times as large.
const int kLevels = underAddressSanitizer() ? 50 : 1000;

TEST_F(RoundTrip, OfAThousandLevelsOfArraysFitsInASmallStack) {
  start();
  CFOwner tree = cfInt32(1);
  for (int i = 0; i < kLevels; ++i) tree = cfArray({tree.get()});
  host::Value value;
  CFOwner back;
  runOnSmallStack([&] { value = toVariant(tree.get()); });
  runOnSmallStack([&] { back = toCF(value); });
  const void* level = back.get();
  for (int i = 0; i < kLevels; ++i) level = CFArrayGetValueAtIndex(static_cast<CFArrayRef>(level), 0);
  EXPECT_EQ(CFNumberGetTypeID(), CFGetTypeID(level));
}

TEST_F(RoundTrip, OfAThousandLevelsOfDictionariesFitsInASmallStack) {
  start();
  const CFOwner key = cfText("key");
  CFOwner tree = cfInt32(1);
  for (int i = 0; i < kLevels; ++i) tree = cfDictionary({{key.get(), tree.get()}});
  host::Value value;
  CFOwner back;
  runOnSmallStack([&] { value = toVariant(tree.get()); });
  runOnSmallStack([&] { back = toCF(value); });
  const void* level = back.get();
  for (int i = 0; i < kLevels; ++i)
    level = CFDictionaryGetValue(static_cast<CFDictionaryRef>(level), key.get());
  EXPECT_EQ(CFNumberGetTypeID(), CFGetTypeID(level));
}

// Every call on the way is made to fail in its turn.
class Faults : public BridgeTest, public testing::WithParamInterface<double> {
 protected:
  CFOwner makeTree() {
    const CFOwner one = cfInt32(1), name = cfText("name"), half = cfReal(0.5),
                  date = own(CFDateCreate(nullptr, 5));
    const CFOwner list = cfArray({one.get(), name.get(), half.get(), date.get(), kCFBooleanTrue});
    return cfDictionary({{name.get(), list.get()}, {one.get(), date.get()}});
  }
};

TEST_P(Faults, OnTheWayToHostCodeAreSurvivedAndWhatWasMadeIsGivenBack) {
  host::Settings settings;
  settings.version = GetParam();
  start(settings);
  const CFOwner tree = makeTree();
  int n = 1;
  for (bool fired = true; fired; ++n) {
    standin::failCall(n);
    toVariant(tree.get());
    fired = standin::failuresFired() > 0;
  }
  EXPECT_GT(n, 50) << "so many calls, at the least, are made";
}

TEST_P(Faults, OnTheWayToThePlatformAreSurvivedAndWhatWasMadeIsGivenBack) {
  host::Settings settings;
  settings.version = GetParam();
  start(settings);
  const host::Value value = toVariant(makeTree().get());
  int n = 1;
  while (toCFFails(value, n)) ++n;
  EXPECT_GT(n, 50) << "so many calls, at the least, are made";
}

INSTANTIATE_TEST_SUITE_P(Hosts, Faults, testing::Values(2013.9, 2014.1));

}  // namespace
