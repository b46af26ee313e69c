// In which order the conversions ask the host and the platform, where the values alone don't tell.
#include <cstring>

#include "standin/applicationservices/control.h"
#include "tests/plugin/bridge/fixture.h"

namespace {

// What the plug-in asked of the host, in order: the tests of an object, or locks.
Calls noted;
void* former;  // the object that stands in new arrays

template <typename Function, typename... Arguments>
auto callHost(Function*, const char* name, Arguments... arguments) {
  return reinterpret_cast<Function*>(host::resolve(name))(arguments...);
}

void* classReference(const char* className) {
  noted.push_back(className);
  return callHost(classReference, "pluginObjectType", className);
}
void* loadMethod(void* object, const char* declaration) {
  noted.push_back(declaration);
  return callHost(loadMethod, "REALLoadObjectMethod", object, declaration);
}
void lockObject(void* object) {
  noted.push_back(object == former ? "former locked" : "element locked");
  callHost(lockObject, "REALLockObject", object);
}
void unlockObject(void* object) {
  noted.push_back(object == former ? "former unlocked" : "element unlocked");
  callHost(unlockObject, "REALUnlockObject", object);
}

// The new array's first slot is not empty.
void* makeArray(int32_t elements, int32_t upperBound) {
  typedef void Set(void* array, void* value, int32_t index);
  typedef Set* GetSet(void* array);
  void* const array = callHost(makeArray, "RuntimeArrayCreateSingleDimBoundedArray", elements, upperBound);
  const host::Value object = host::newInstance("Dictionary");
  former = object.handle();
  callHost(static_cast<GetSet*>(nullptr), "RuntimeArrayDirectGetSetProc", array)(array, former, 0);
  return array;
}

void* listening(const char* name) {
  const std::string wanted = name;
  if (wanted == "pluginObjectType") return reinterpret_cast<void*>(classReference);
  if (wanted == "REALLoadObjectMethod") return reinterpret_cast<void*>(loadMethod);
  if (wanted == "REALLockObject") return reinterpret_cast<void*>(lockObject);
  if (wanted == "REALUnlockObject") return reinterpret_cast<void*>(unlockObject);
  if (wanted == "RuntimeArrayCreateSingleDimBoundedArray") return reinterpret_cast<void*>(makeArray);
  return host::resolve(name);
}

class Order : public BridgeTest {
 protected:
  void startOn(double version) {
    host::Settings settings;
    settings.version = version;
    start(settings);
    toCF(0);  // from now on the function that tells a variant's type is known
  }
  void startListening(double version) {
    host::Settings settings;
    settings.version = version;
    startWith(listening, settings);
    noted.clear();
  }
  Calls callsToCF(const host::Value& value) {
    const Variant variant(value);
    CFOwner result;
    return conversionCallsOf([&] { result = own(toCFAlone(variant)); });
  }
};

TEST_F(Order, OfConstantsEndsWithTheirRetain) {
  startOn(2014.1);
  EXPECT_EQ((Calls{"VarType", "VariantToInt32", "CFRetain"}), callsToCF(true));
  EXPECT_EQ((Calls{"VarType", "VariantToInt32", "CFRetain"}), callsToCF(false));
  EXPECT_EQ((Calls{"VarType", "VariantToString", "CFRetain"}), callsToCF(host::Value::nullString()));
}

TEST_F(Order, OfMemoryBlocksIsTheSizeThenThePointerBetweenLocks) {
  startOn(2014.1);
  EXPECT_EQ((Calls{"VarType", "pluginObjectType", "RuntimeObjectIsa", "REALLockObject", "memoryBlockGetSize",
                   "memoryBlockGetPtr", "CFDataCreate", "REALUnlockObject"}),
            callsToCF(host::memoryBlock("bytes")));
}

TEST_F(Order, OfADateIsThePlatformsAnswerThenTheHostsObject) {
  startOn(2014.1);
  const CFOwner date(CFDateCreate(nullptr, 0));
  Calls calls = conversionCallsOf([&] { toVariant(date.get()); });
  std::erase_if(calls, [](const std::string& call) {
    return call != "CFAbsoluteTimeGetGregorianDate" && call != "PluginNewInstance";
  });
  EXPECT_EQ((Calls{"CFAbsoluteTimeGetGregorianDate", "PluginNewInstance"}), calls);
}

TEST_F(Order, OfADictionarysEntryIsTheKeyThenTheValueReleasedTheOtherWayRound) {
  startOn(2014.1);
  const host::Value dictionary = host::dictionary({{"key", 7}});
  EXPECT_EQ((Calls{"Dictionary key", "Dictionary get", "VarType", "VariantToString", "REALGetStringCFString",
                   "REALUnlockString", "VarType", "VariantToInt32", "CFNumberCreate", "CFDictionarySetValue",
                   "CFRelease CFNumber", "CFRelease CFString", "REALUnlockObject", "REALUnlockObject"}),
            fromFirst("Dictionary key", callsToCF(dictionary)));
}

// Elements that are read where they lie.

TEST_F(Order, OfAnArrayOfObjectsIsLockConvertAppendUnlock) {
  startOn(2013.9);
  EXPECT_EQ((Calls{"VarType", "RuntimeUBound", "CFArrayCreateMutable", "REALLockObject", "VarType",
                   "VariantToInt32", "CFNumberCreate", "CFArrayAppendValue", "CFRelease CFNumber",
                   "REALUnlockObject"}),
            callsToCF(host::objectArray({7})));
}

TEST_F(Order, OfAnArrayOfNumbersIsConvertAppend) {
  startOn(2013.9);
  EXPECT_EQ((Calls{"VarType", "RuntimeUBound", "CFArrayCreateMutable", "CFNumberCreate", "CFArrayAppendValue",
                   "CFRelease CFNumber"}),
            callsToCF(host::int32Array({7})));
}

TEST_F(Order, OfAnArrayOfDatesIsLockConvertAppendUnlock) {
  startOn(2013.9);
  EXPECT_EQ((Calls{"VarType", "RuntimeUBound", "CFArrayCreateMutable", "REALLockObject",
                   "REALGetPropValueInt", "REALGetPropValueInt", "REALGetPropValueInt", "REALGetPropValueInt",
                   "REALGetPropValueInt", "REALGetPropValueInt", "CFGregorianDateGetAbsoluteTime",
                   "CFDateCreate", "CFArrayAppendValue", "CFRelease CFDate", "REALUnlockObject"}),
            callsToCF(host::dateArray({host::date(2001, 1, 1)})));
}

TEST_F(Order, OfAnArrayOfStringsIsLockConvertAppendUnlock) {
  startOn(2013.9);
  EXPECT_EQ((Calls{"VarType", "RuntimeUBound", "CFArrayCreateMutable", "REALLockString",
                   "REALGetStringCFString", "CFArrayAppendValue", "CFRelease CFString", "REALUnlockString"}),
            callsToCF(host::stringArray({"text"})));
}

TEST_F(Order, OfStoringAnElementIsItsLockBeforeTheUnlockOfTheFormerOne) {
  startListening(2013.9);
  const host::Value array = toVariant(cfArray({kCFBooleanTrue}).get());
  EXPECT_EQ((Texts{"element locked", "former unlocked", "element unlocked"}), noted);
  EXPECT_TRUE(host::elements(array)[0].boolean());
}

TEST_F(Order, OfStoringAnElementByTheHostHasNoLock) {
  startListening(2014.1);
  toVariant(cfArray({kCFBooleanTrue}).get());
  EXPECT_EQ(0, std::count(noted.begin(), noted.end(), "element locked"));
}

TEST_F(Order, OfAnArrayThatCantBeMadeEndsThere) {
  startOn(2014.1);
  standin::failCall("RuntimeArrayCreateSingleDimBoundedArray", 1);
  const CFOwner values = cfArray({kCFBooleanTrue});
  const Calls calls = conversionCallsOf([&] { EXPECT_TRUE(toVariant(values.get()).isNil()); });
  EXPECT_EQ(0, std::count(calls.begin(), calls.end(), "BooleanToVariant"));
}

TEST_F(Order, OfTheTestsOfAnObjectIsThatOfTheTable) {
  startListening(2014.1);
  const Variant object(host::newInstance("MDItemZNK"));
  EXPECT_EQ(nullptr, toCFAlone(object));
  EXPECT_EQ((Texts{"MemoryBlock",       "TrueItem(Index as integer) as Folderitem",
                   "Dictionary",        "CGRectZNK",
                   "CGSizeZNK",         "CGPointZNK",
                   "CGImageZNK",        "CGColorSpaceZNK",
                   "CGColorZNK",        "CGDataProviderZNK",
                   "CGDataConsumerZNK", "CGFontZNK",
                   "CGContextZNK",      "CGEventZNK",
                   "CGEventSourceZNK",  "CGLayerZNK",
                   "CGPathZNK",         "CGPSConverterZNK",
                   "KeychainZNK",       "KeychainItemZNK",
                   "CFObjectZNK",       "NSAttributedStringZNK",
                   "NSTimerZNK",        "NSCalendarZNK",
                   "NSCharacterSetZNK", "NSErrorZNK",
                   "NSLocaleZNK",       "NSTimeZoneZNK"}),
            noted);
}

// The function by which the reference in a wrapper of the class is retained.
struct Retain {
  const char* className;
  const char* function;
};
const Retain kRetains[] = {
    {"CGImageZNK", "CGImageRetain"},
    {"CGColorSpaceZNK", "CGColorSpaceRetain"},
    {"CGColorZNK", "CGColorRetain"},
    {"CGDataProviderZNK", "CGDataProviderRetain"},
    {"CGDataConsumerZNK", "CGDataConsumerRetain"},
    {"CGFontZNK", "CFRetain"},
    {"CGContextZNK", "CFRetain"},
    {"CGEventZNK", "CFRetain"},
    {"CGEventSourceZNK", "CFRetain"},
    {"CGLayerZNK", "CFRetain"},
    {"CGPathZNK", "CFRetain"},
    {"CGPSConverterZNK", "CFRetain"},
    {"KeychainZNK", "CFRetain"},
    {"KeychainItemZNK", "CFRetain"},
    {"CFObjectZNK", "CFRetain"},
    {"NSAttributedStringZNK", "CFRetain"},
    {"NSTimerZNK", "CFRetain"},
    {"NSCalendarZNK", "CFRetain"},
    {"NSCharacterSetZNK", "CFRetain"},
    {"NSErrorZNK", "CFRetain"},
    {"NSLocaleZNK", "CFRetain"},
    {"NSTimeZoneZNK", "CFRetain"},
};

CFOwner instanceFor(const std::string& className) {
  const std::string type = className.substr(0, className.size() - strlen("ZNK"));
  return type.starts_with("CG") ? own(standin::makeInstance(type)) : cfText("any value");
}

TEST_F(Order, OfAWrapperEndsWithTheRetainOfItsRow) {
  startOn(2014.1);
  for (const auto& [className, function] : kRetains) {
    host::addWrapperClass(className, true);
    const host::Value wrapper = host::newInstance(className);
    host::setWrapped(wrapper, instanceFor(className).leak());
    const Calls calls = callsToCF(wrapper);
    ASSERT_GE(calls.size(), 2u);
    EXPECT_EQ("RuntimeObjectIsa", calls.end()[-2]) << className;
    EXPECT_EQ(function, calls.back()) << className;
  }
}

}  // namespace
