// Dictionaries both ways, and the methods of host dictionaries, which are kept while one is filled or read.
#include <cstring>
#include <functional>
#include <map>
#include <utility>

#include "tests/plugin/bridge/fixture.h"

namespace {

const char* const kSetter = "Value(key As Variant, Assigns _value As Variant)";
const char* const kGetter = "Value(key As Variant) As Variant";
const char* const kKeyGetter = "Key(index As Integer) As Variant";

// The methods that the plug-in asked objects for, in order.
std::vector<std::string> loaded;

// What is done with the keys and values of entries, in order: they are made or fetched, and given back.
std::vector<std::string> events;
std::map<void*, std::string> parts;  // by handle

void* noted(void* part, const char* name) {
  events.push_back(name);
  if (part) parts[part] = name;
  return part;
}
void* int32ToVariant(int32_t value) {
  return noted(reinterpret_cast<void* (*)(int32_t)>(host::resolve("Int32ToVariant"))(value), "key");
}
void* booleanToVariant(bool value) {
  return noted(reinterpret_cast<void* (*)(bool)>(host::resolve("BooleanToVariant"))(value), "value");
}
void unlockObject(void* object) {
  if (parts.count(object)) events.push_back(parts.extract(object).mapped() + " unlocked");
  reinterpret_cast<void (*)(void*)>(host::resolve("REALUnlockObject"))(object);
}

// The getters by dictionary, the dictionary whose getters the plug-in asked for last, and what the next call
// of a key getter is to do first.
std::map<void*, void*> getters, keyGetters;
void* lastLoaded;
std::function<void()> beforeKey;

// The plug-in keeps the methods of one dictionary: it has no other's in its hands.
void expectOwnMethods(void* dictionary) {
  EXPECT_EQ(lastLoaded, dictionary) << "called by a method of another dictionary";
}

void* getKey(void* dictionary, int32_t index) {
  expectOwnMethods(dictionary);
  if (const auto act = std::exchange(beforeKey, nullptr)) act();
  typedef void* Get(void* dictionary, int32_t index);
  return noted(reinterpret_cast<Get*>(keyGetters.at(dictionary))(dictionary, index), "key");
}
void* getValue(void* dictionary, void* key) {
  expectOwnMethods(dictionary);
  typedef void* Get(void* dictionary, void* key);
  return noted(reinterpret_cast<Get*>(getters.at(dictionary))(dictionary, key), "value");
}

void* loadMethod(void* object, const char* declaration) {
  loaded.push_back(declaration);
  if (strcmp(declaration, kGetter) == 0) lastLoaded = object;
  typedef void* Load(void* object, const char* declaration);
  void* const method = reinterpret_cast<Load*>(host::resolve("REALLoadObjectMethod"))(object, declaration);
  if (strcmp(declaration, kGetter) == 0) {
    getters[object] = method;
    return reinterpret_cast<void*>(getValue);
  }
  if (strcmp(declaration, kKeyGetter) == 0) {
    keyGetters[object] = method;
    return reinterpret_cast<void*>(getKey);
  }
  return method;
}

void* listening(const char* name) {
  const std::string wanted = name;
  if (wanted == "REALLoadObjectMethod") return reinterpret_cast<void*>(loadMethod);
  if (wanted == "Int32ToVariant") return reinterpret_cast<void*>(int32ToVariant);
  if (wanted == "BooleanToVariant") return reinterpret_cast<void*>(booleanToVariant);
  if (wanted == "REALUnlockObject") return reinterpret_cast<void*>(unlockObject);
  return host::resolve(name);
}

class Dictionaries : public BridgeTest {
 protected:
  void startListening() {
    host::Settings settings;
    settings.reusesAddresses = true;
    startWith(listening, settings);
    loaded.clear();
    events.clear();
    parts.clear();
  }
  static CFIndex count(const CFOwner& dictionary) {
    return CFDictionaryGetCount(static_cast<CFDictionaryRef>(dictionary.get()));
  }
  static const void* valueOf(const CFOwner& dictionary, const void* key) {
    return CFDictionaryGetValue(static_cast<CFDictionaryRef>(dictionary.get()), key);
  }
};
class DictionariesToVariant : public Dictionaries {};
class DictionariesToCF : public Dictionaries {};

double doubleOf(const void* value) {
  double number = 0;
  EXPECT_TRUE(CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberFloat64Type, &number));
  return number;
}

// To host code

TEST_F(DictionariesToVariant, DictionariesHaveTheirEntries) {
  start();
  const auto one = cfText("one"), two = cfText("two"), five = cfInt32(5);
  const host::Value dictionary =
      toVariant(cfDictionary({{one.get(), five.get()}, {two.get(), kCFNull}, {five.get(), one.get()}}).get());
  EXPECT_EQ(3u, host::entries(dictionary).size());
  EXPECT_EQ(5, host::lookUp(dictionary, "one")->integer());
  EXPECT_TRUE(host::lookUp(dictionary, "two")->isNil());
  EXPECT_EQ("one", host::lookUp(dictionary, 5)->text());
}

TEST_F(DictionariesToVariant, ANestedDictionaryIsItsOwnAndTheOuterOneGetsItsOtherEntriesAfterIt) {
  host::Settings settings;
  settings.reusesAddresses = true;
  start(settings);
  std::vector<CFOwner> keys;
  std::vector<std::pair<const void*, const void*>> pairs;
  const auto name = cfText("name");
  const auto inner = cfDictionary({{name.get(), kCFBooleanTrue}});
  for (int i = 0; i < 20; ++i) {
    keys.push_back(cfInt32(i));
    pairs.emplace_back(keys.back().get(),
                       i % 2 == 0 ? inner.get() : static_cast<const void*>(kCFBooleanFalse));
  }
  const host::Value dictionary = toVariant(cfDictionary(pairs).get());
  EXPECT_EQ(20u, host::entries(dictionary).size());
  for (int i = 0; i < 20; ++i) {
    const host::Value value = *host::lookUp(dictionary, i);
    if (i % 2 == 0) {
      EXPECT_TRUE(host::lookUp(value, "name")->boolean()) << i;
    } else {
      EXPECT_FALSE(value.boolean()) << i;
    }
  }
}

TEST_F(DictionariesToVariant, DictionariesOneAfterTheOtherAtTheSameAddressLoadTheirOwnMethods) {
  host::Settings settings;
  settings.reusesAddresses = true;
  start(settings);
  const auto name = cfText("name");
  for (int i = 0; i < 5; ++i) {
    const host::Value dictionary = toVariant(cfDictionary({{name.get(), kCFBooleanTrue}}).get());
    EXPECT_EQ(1u, host::entries(dictionary).size());
  }
}

TEST_F(DictionariesToVariant, ADictionaryAsKeyIsConvertedBeforeTheOuterOnesMethodsAreAskedFor) {
  start();
  const auto name = cfText("name");
  const auto key = cfDictionary({{name.get(), kCFBooleanTrue}});
  const host::Value dictionary = toVariant(cfDictionary({{key.get(), key.get()}}).get());
  ASSERT_EQ(1u, host::entries(dictionary).size());
  EXPECT_TRUE(host::lookUp(host::entries(dictionary)[0].first, "name")->boolean());
}

TEST_F(DictionariesToVariant, APairWithoutKeyOrDictionaryIsNeitherConvertedNorStored) {
  start();
  const host::Value dictionary = host::dictionary();
  EXPECT_EQ(Calls(), callsOf([&] { addPair(nullptr, kCFBooleanTrue, dictionary); }));
  EXPECT_EQ(Calls(), callsOf([&] { addPair(kCFBooleanTrue, kCFBooleanTrue, host::Value()); }));
  EXPECT_EQ(0u, host::entries(dictionary).size());
}

TEST_F(DictionariesToVariant, ADictionaryWithoutASetterStaysEmpty) {
  host::Settings settings;
  settings.unloadableMethods = {"Value(key As Variant, Assigns _value As Variant)"};
  start(settings);
  const auto name = cfText("name");
  EXPECT_EQ(0u, host::entries(toVariant(cfDictionary({{name.get(), name.get()}}).get())).size());
}

TEST_F(DictionariesToVariant, WithoutADictionaryClassAreNilAndMakeNothing) {
  startListening();
  host::settings().unknownClasses = {"Dictionary"};
  const auto inner = cfDictionary({{CFSTR("name"), kCFBooleanTrue}});
  EXPECT_TRUE(toVariant(inner.get()).isNil());
  EXPECT_EQ(Texts(), loaded);
  const host::Value array = toVariant(cfArray({inner.get(), kCFBooleanTrue}).get());
  EXPECT_TRUE(host::elements(array)[0].isNil());
  EXPECT_TRUE(host::elements(array)[1].boolean());
}

TEST_F(DictionariesToVariant, OfNothingAreEmptyAndAskForNoMethods) {
  startListening();
  EXPECT_EQ(0u, host::entries(toVariant(cfDictionary({}).get())).size());
  EXPECT_EQ(Texts(), loaded);
}

TEST_F(DictionariesToVariant, LoadTheirThreeMethodsOnceForAllEntries) {
  startListening();
  const auto one = cfInt32(1), two = cfInt32(2), three = cfInt32(3);
  const auto pairs =
      cfDictionary({{one.get(), two.get()}, {two.get(), three.get()}, {three.get(), one.get()}});
  EXPECT_EQ(3u, host::entries(toVariant(pairs.get())).size());
  EXPECT_EQ((Texts{kSetter, kGetter, kKeyGetter}), loaded);
}

TEST_F(DictionariesToVariant, LoadTheirMethodsAgainAfterEachDictionaryInThem) {
  startListening();
  const auto inner = cfDictionary({{CFSTR("name"), kCFBooleanTrue}});
  const auto outer = cfDictionary({{CFSTR("one"), inner.get()}, {CFSTR("two"), inner.get()}});
  EXPECT_EQ(2u, host::entries(toVariant(outer.get())).size());
  EXPECT_EQ(4u * 3, loaded.size()) << "inner, outer, inner, outer";
}

TEST_F(DictionariesToVariant, ADictionaryInAKeyInAKeyIsConverted) {
  startListening();
  const auto innermost = cfDictionary({{CFSTR("a"), CFSTR("b")}});
  const auto inner = cfDictionary({{innermost.get(), innermost.get()}});
  const auto outer = cfDictionary({{inner.get(), kCFBooleanTrue}, {CFSTR("last"), kCFBooleanFalse}});
  const host::Value dictionary = toVariant(outer.get());
  ASSERT_EQ(2u, host::entries(dictionary).size());
  EXPECT_FALSE(host::lookUp(dictionary, "last")->boolean());
  for (const auto& [key, value] : host::entries(dictionary)) {
    if (key.kind() != host::Kind::object) continue;
    const auto [innerKey, innerValue] = host::entries(key).at(0);
    EXPECT_EQ("b", host::lookUp(innerKey, "a")->text());
    EXPECT_EQ("b", host::lookUp(innerValue, "a")->text());
  }
}

TEST_F(DictionariesToVariant, ConvertTheValueThenTheKeyAndGiveBackTheKeyFirst) {
  startListening();
  const auto key = cfInt32(5);
  toVariant(cfDictionary({{key.get(), kCFBooleanTrue}}).get());
  EXPECT_EQ((Texts{"value", "key", "key unlocked", "value unlocked"}), events);
}

// To the platform

TEST_F(DictionariesToCF, DictionariesHaveTheirEntriesWithNullForNil) {
  start();
  const CFOwner result = toCF(host::dictionary({{"a", 5}, {"b", host::Value()}, {7, "text"}}));
  const auto dictionary = static_cast<CFDictionaryRef>(result.get());
  ASSERT_EQ(3, CFDictionaryGetCount(dictionary));
  EXPECT_EQ(5, doubleOf(CFDictionaryGetValue(dictionary, CFSTR("a"))));
  EXPECT_EQ(kCFNull, CFDictionaryGetValue(dictionary, CFSTR("b")));
  const CFOwner seven = cfInt32(7);
  EXPECT_EQ("text", textOf(CFDictionaryGetValue(dictionary, seven.get())));
}

TEST_F(DictionariesToCF, NestedDictionariesDoNotMixUpTheirMethods) {
  host::Settings settings;
  settings.reusesAddresses = true;
  start(settings);
  std::vector<host::Entry> entries;
  for (int i = 0; i < 10; ++i) entries.emplace_back(i, host::dictionary({{"inner", i}}));
  const CFOwner result = toCF(host::dictionary(entries));
  const auto dictionary = static_cast<CFDictionaryRef>(result.get());
  ASSERT_EQ(10, CFDictionaryGetCount(dictionary));
  for (int i = 0; i < 10; ++i) {
    const CFOwner key = cfInt32(i);
    const auto inner = static_cast<CFDictionaryRef>(CFDictionaryGetValue(dictionary, key.get()));
    EXPECT_EQ(i, doubleOf(CFDictionaryGetValue(inner, CFSTR("inner"))));
  }
}

TEST_F(DictionariesToCF, OneAfterTheOtherAtTheSameAddressLoadTheirOwnMethods) {
  startListening();
  std::set<void*> addresses;
  for (int i = 0; i < 5; ++i) {
    const host::Value dictionary = host::dictionary({{"name", i}});
    addresses.insert(dictionary.handle());
    EXPECT_EQ(i, doubleOf(valueOf(toCF(dictionary), CFSTR("name"))));
  }
  EXPECT_EQ(1u, addresses.size());
  EXPECT_EQ(5u * 4, loaded.size()) << "each asks for the folder item's method and its own three";
}

TEST_F(DictionariesToCF, AtTheAddressOfOneThatWasMadeForHostCodeLoadTheirOwnMethods) {
  startListening();
  void* address = nullptr;
  {
    const host::Value made = toVariant(cfDictionary({{CFSTR("name"), kCFBooleanTrue}}).get());
    address = made.handle();
  }
  const host::Value dictionary = host::dictionary({{"name", 5}});
  ASSERT_EQ(address, dictionary.handle());
  EXPECT_EQ(5, doubleOf(valueOf(toCF(dictionary), CFSTR("name"))));
}

TEST_F(DictionariesToCF, LoadTheirThreeMethodsOnceForAllEntries) {
  startListening();
  EXPECT_EQ(3, count(toCF(host::dictionary({{1, 2}, {2, 3}, {3, 1}}))));
  // The first is not the dictionary's: it is how a folder item is known.
  EXPECT_EQ((Texts{"TrueItem(Index as integer) as Folderitem", kSetter, kGetter, kKeyGetter}), loaded);
}

TEST_F(DictionariesToCF, ADictionaryAsKeyIsConvertedAndTheOuterOnesOtherEntriesAreThere) {
  startListening();
  const host::Value key = host::dictionary({{host::dictionary({{"a", "b"}}), "c"}});
  const CFOwner outer = toCF(host::dictionary({{"first", 1}, {key, 2}, {"last", 3}}));
  ASSERT_EQ(3, count(outer));
  EXPECT_EQ(1, doubleOf(valueOf(outer, CFSTR("first"))));
  EXPECT_EQ(3, doubleOf(valueOf(outer, CFSTR("last"))));
  const auto innermost = cfDictionary({{CFSTR("a"), CFSTR("b")}});
  const auto inner = cfDictionary({{innermost.get(), CFSTR("c")}});
  const void* const two = valueOf(outer, inner.get());
  ASSERT_NE(nullptr, two);
  EXPECT_EQ(2, doubleOf(two));
}

TEST_F(DictionariesToCF, FetchTheKeyThenTheValueAndGiveBackTheKeyFirst) {
  startListening();
  toCF(host::dictionary({{5, true}}));
  EXPECT_EQ((Texts{"key", "value", "key unlocked", "value unlocked"}), events);
}

// As host code would that runs when a key is asked for.
TEST_F(DictionariesToCF, MayBeConvertedWhileAKeyOfAnotherIsFetched) {
  startListening();
  const host::Value other = host::dictionary({{"other", 7}});
  const host::Value dictionary = host::dictionary({{"a", 1}, {"b", 2}});
  CFOwner meanwhile;
  beforeKey = [&] { meanwhile = toCF(other); };
  const CFOwner result = toCF(dictionary);
  EXPECT_EQ(7, doubleOf(valueOf(meanwhile, CFSTR("other"))));
  EXPECT_EQ(1, doubleOf(valueOf(result, CFSTR("a"))));
  EXPECT_EQ(2, doubleOf(valueOf(result, CFSTR("b"))));
}

TEST_F(DictionariesToCF, TheSameOneTwiceInAnArrayIsConvertedTwice) {
  startListening();
  const host::Value dictionary = host::dictionary({{"name", 5}});
  const CFOwner array = toCF(host::objectArray({dictionary, dictionary}));
  ASSERT_EQ(2, CFArrayGetCount(static_cast<CFArrayRef>(array.get())));
  EXPECT_TRUE(CFEqual(CFArrayGetValueAtIndex(static_cast<CFArrayRef>(array.get()), 0),
                      CFArrayGetValueAtIndex(static_cast<CFArrayRef>(array.get()), 1)));
  EXPECT_EQ(2u * 4, loaded.size()) << "forgotten after each, though it is the same";
}

TEST_F(DictionariesToCF, AnEntryWhoseKeyCantBeHadIsLeftOut) {
  start();
  standin::failCall("Dictionary key", 2);
  const CFOwner result = toCF(host::dictionary({{"a", 1}, {"b", 2}, {"c", 3}}));
  host::takeExceptions();  // of the host, that has no nil key
  EXPECT_EQ(2, count(result));
  EXPECT_EQ(nullptr, valueOf(result, CFSTR("b")));
}

TEST_F(DictionariesToCF, AnEntryWhoseKeyCantBeHadHasItsValueFetchedAllTheSame) {
  start();
  const Variant dictionary(host::dictionary({{"a", 1}, {"b", 2}}));
  standin::failCall("Dictionary key", 1);
  CFOwner result;
  Calls calls = callsOf([&] { result = own(toCFAlone(dictionary)); });
  host::takeExceptions();  // of the host, that has no nil key
  std::erase_if(calls, [](const std::string& call) { return !call.starts_with("Dictionary "); });
  EXPECT_EQ((Calls{"Dictionary key", "Dictionary get", "Dictionary key", "Dictionary get"}), calls);
  EXPECT_EQ(1, count(result));
}

TEST_F(DictionariesToCF, AKeyThatCantBeConvertedIsNull) {
  start();
  const CFOwner result = toCF(host::dictionary({{host::newInstance("MDItemZNK"), 1}}));
  EXPECT_EQ(1, doubleOf(valueOf(result, kCFNull)));
}

TEST_F(DictionariesToCF, WithoutAKeyGetterAreEmpty) {
  host::Settings settings;
  settings.unloadableMethods = {kKeyGetter};
  start(settings);
  const CFOwner result = toCF(host::dictionary({{"a", 1}}));
  host::takeExceptions();  // of the host, that has no nil key
  EXPECT_EQ(0, count(result));
}

TEST_F(DictionariesToCF, WithoutAGetterHaveNullForEveryValue) {
  host::Settings settings;
  settings.unloadableMethods = {kGetter};
  start(settings);
  EXPECT_EQ(kCFNull, valueOf(toCF(host::dictionary({{"a", 1}})), CFSTR("a")));
}

TEST_F(DictionariesToCF, WithoutACountAreEmpty) {
  host::Settings settings;
  settings.unreadableProperties = {"Count"};
  start(settings);
  EXPECT_EQ(0, count(toCF(host::dictionary({{"a", 1}}))));
}

TEST_F(DictionariesToCF, WithoutADictionaryClassAreNull) {
  start();
  const host::Value dictionary = host::dictionary({{"a", 1}});
  host::settings().unknownClasses = {"Dictionary"};
  EXPECT_EQ(nullptr, toCF(dictionary));
}

TEST_F(DictionariesToCF, ThatCantBeMadeAreNull) {
  start();
  const host::Value dictionary = host::dictionary({{"a", 1}});
  standin::failCall("CFDictionaryCreateMutable", 1);
  EXPECT_EQ(nullptr, toCF(dictionary));
}

}  // namespace
