// The typed getters of items: each takes values of one type and raises for all others.
#include <CoreServices/CoreServices.h>

#include <cmath>
#include <limits>

#include "standin/coreservices/metadata/planned_answers.h"
#include "tests/plugin/cf_values.h"
#include "tests/plugin/item/item_fixture.h"

namespace {

const host::Exception kWrongType = {"RuntimeException", "Wrong type used for getting attribute value.", 0};

class TypedAttributes : public ItemTest {
 protected:
  // What the getter answers for an attribute of that value.
  static host::Value answerFor(const host::Value& item, const char* getter, CFOwner value) {
    standin::planAnswer("MDItemCopyAttribute", value.leak());
    return host::call(item, getter, "key");
  }
};

bool isNeutral(const std::string& getter, const host::Value& value) {
  if (getter == "AttributeString") return value.isNil();
  if (getter == "AttributeBoolean") return !value.boolean();
  if (getter == "AttributeDouble") return value.number() == 0 && !std::signbit(value.number());
  return !value.isNil() && host::elements(value).empty();
}

const char* const kGetters[] = {"AttributeString", "AttributeBoolean", "AttributeDouble",
                                "AttributeStringArray"};

// Every type of value against every getter.

struct ValueCase {
  const char* type;
  CFOwner (*make)();
  const char* accepted;  // by this getter alone; null: by none
};
void PrintTo(const ValueCase& row, std::ostream* out) {
  *out << row.type;
}

CFOwner makeURL() {
  const CFOwner path = cfText("/");
  return own(CFURLCreateWithFileSystemPath(kCFAllocatorDefault, static_cast<CFStringRef>(path.get()),
                                           kCFURLPOSIXPathStyle, true));
}

const ValueCase kValues[] = {
    {"string", [] { return cfText("text"); }, "AttributeString"},
    {"empty string", [] { return cfText(""); }, "AttributeString"},
    {"true", [] { return own(CFRetain(kCFBooleanTrue)); }, "AttributeBoolean"},
    {"false", [] { return own(CFRetain(kCFBooleanFalse)); }, "AttributeBoolean"},
    {"number 0", [] { return cfInt64(0); }, "AttributeDouble"},
    {"number 1", [] { return cfInt64(1); }, "AttributeDouble"},
    {"real number", [] { return cfReal(0.5); }, "AttributeDouble"},
    {"array", [] { return cfUnretainedArray({}); }, "AttributeStringArray"},
    {"null", [] { return own(CFRetain(kCFNull)); }, nullptr},
    {"date", [] { return own(CFDateCreate(kCFAllocatorDefault, 0)); }, nullptr},
    {"data", [] { return own(CFDataCreate(kCFAllocatorDefault, nullptr, 0)); }, nullptr},
    {"dictionary", [] { return cfDictionary({}); }, nullptr},
    {"URL", makeURL, nullptr},
    {"UUID", [] { return own(CFUUIDCreate(kCFAllocatorDefault)); }, nullptr},
    {"set", [] { return own(CFSetCreate(kCFAllocatorDefault, nullptr, 0, &kCFTypeSetCallBacks)); }, nullptr},
    {"bag", [] { return own(CFBagCreate(kCFAllocatorDefault, nullptr, 0, &kCFTypeBagCallBacks)); }, nullptr},
    {"time zone", [] { return own(CFTimeZoneCreateWithTimeIntervalFromGMT(kCFAllocatorDefault, 0)); },
     nullptr},
    {"error", [] { return own(CFErrorCreate(kCFAllocatorDefault, CFSTR("domain"), 1, nullptr)); }, nullptr},
    {"attributed string",
     [] { return own(CFAttributedStringCreate(kCFAllocatorDefault, CFSTR("text"), nullptr)); }, nullptr},
    {"value of an unknown type", cfWitness, nullptr},
};

class ValueType : public TypedAttributes, public testing::WithParamInterface<ValueCase> {
 protected:
  static bool isAcceptedBy(const std::string& getter) {
    return GetParam().accepted && getter == GetParam().accepted;
  }
};

TEST_P(ValueType, IsAcceptedByItsOwnGetterAndRaisesFromTheOthersWithTheirNeutralValue) {
  start();
  const host::Value item = this->item();
  for (const char* getter : kGetters) {
    standin::countCalls();
    const host::Value answer = answerFor(item, getter, GetParam().make());
    const auto raised = host::takeExceptions();
    EXPECT_EQ(static_cast<long>(raised.size()), standin::callCount("PluginNewInstance"));
    if (isAcceptedBy(getter)) {
      EXPECT_EQ(Exceptions(), raised) << getter;
    } else {
      EXPECT_EQ(Exceptions{kWrongType}, raised) << getter;
      EXPECT_TRUE(isNeutral(getter, answer)) << getter << " answers " << answer.describe();
    }
  }
}

TEST_P(ValueType, RaisedByUnwindingLeavesNothingBehind) {
  host::Settings settings;
  settings.raiseByUnwinding = true;
  start(settings);
  const host::Value item = this->item();
  for (const char* getter : kGetters) {
    answerFor(item, getter, GetParam().make());
    EXPECT_EQ(isAcceptedBy(getter) ? Exceptions() : Exceptions{kWrongType}, host::takeExceptions()) << getter;
  }
}

INSTANTIATE_TEST_SUITE_P(Types, ValueType, testing::ValuesIn(kValues));

// What is read

TEST_F(TypedAttributes, AttributeStringGivesTheText) {
  start();
  const host::Value item = this->item();
  EXPECT_EQ("f", host::call(item, "AttributeString", "kMDItemFSName").text());
  EXPECT_EQ("Grüße, 世界", answerFor(item, "AttributeString", cfText("Grüße, 世界")).text());
  EXPECT_TRUE(answerFor(item, "AttributeString", cfText("")).isNil()) << "as every empty text";
}

TEST_F(TypedAttributes, AttributeBooleanGivesTheTruth) {
  start();
  const host::Value item = this->item();
  EXPECT_TRUE(answerFor(item, "AttributeBoolean", own(CFRetain(kCFBooleanTrue))).boolean());
  EXPECT_FALSE(answerFor(item, "AttributeBoolean", own(CFRetain(kCFBooleanFalse))).boolean());
}

TEST_F(TypedAttributes, AttributeBooleanOfANumberRaisesAlsoFor0And1) {
  start();
  const host::Value item = this->item();
  for (const int64_t number : {0, 1}) {
    EXPECT_FALSE(answerFor(item, "AttributeBoolean", cfInt64(number)).boolean());
    EXPECT_EQ(Exceptions{kWrongType}, host::takeExceptions());
  }
}

TEST_F(TypedAttributes, AttributeDoubleOfTheSizeIsTheSizeAndOfTheNameRaises) {
  start();
  const host::Value item = this->item();
  EXPECT_EQ(5.0, host::call(item, "AttributeDouble", "kMDItemFSSize").number());
  EXPECT_EQ(0.0, host::call(item, "AttributeDouble", "kMDItemDisplayName").number());
  EXPECT_EQ(Exceptions{kWrongType}, host::takeExceptions());
}

TEST_F(TypedAttributes, AttributeDoubleGivesEveryNumberAsADouble) {
  start();
  const host::Value item = this->item();
  EXPECT_EQ(0.1, answerFor(item, "AttributeDouble", cfReal(0.1)).number());
  const float single = 0.1f;
  EXPECT_EQ(static_cast<double>(single),
            answerFor(item, "AttributeDouble", cfNumber(kCFNumberFloat32Type, &single)).number());
  EXPECT_EQ(-3.0, answerFor(item, "AttributeDouble", cfInt64(-3)).number());
  EXPECT_EQ(9007199254740992.0, answerFor(item, "AttributeDouble", cfInt64(int64_t{1} << 53)).number());
  EXPECT_EQ(std::numeric_limits<double>::infinity(),
            answerFor(item, "AttributeDouble", cfReal(std::numeric_limits<double>::infinity())).number());
  EXPECT_TRUE(std::isnan(
      answerFor(item, "AttributeDouble", cfReal(std::numeric_limits<double>::quiet_NaN())).number()));
}

TEST_F(TypedAttributes, AttributeDoubleOfANumberThatCantBeReadIs0) {
  start();
  const host::Value item = this->item();
  standin::failCall("CFNumberGetValue", 1);
  EXPECT_EQ(0.0, answerFor(item, "AttributeDouble", cfReal(2.5)).number());
  // The platform writes the nearest double of this one, and says that it failed.
  EXPECT_EQ(0.0, answerFor(item, "AttributeDouble", cfInt64((int64_t{1} << 53) + 1)).number());
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(TypedAttributes, AttributeStringOfSeveralAuthorsRaisesAndAttributeStringArrayGivesThem) {
  start();
  const host::Value item = this->item();
  const CFOwner one = cfText("Ada"), two = cfText("Émile");
  EXPECT_TRUE(answerFor(item, "AttributeString", cfUnretainedArray({one.get(), two.get()})).isNil());
  EXPECT_EQ(Exceptions{kWrongType}, host::takeExceptions());
  EXPECT_EQ((Texts{"Ada", "Émile"}),
            host::texts(answerFor(item, "AttributeStringArray", cfUnretainedArray({one.get(), two.get()}))));
}

TEST_F(TypedAttributes, AttributeStringArrayLeavesOutNullElementsWithoutAHole) {
  start();
  const host::Value item = this->item();
  const CFOwner one = cfText("1"), two = cfText("2");
  EXPECT_EQ((Texts{"1", "2"}), host::texts(answerFor(item, "AttributeStringArray",
                                                     cfUnretainedArray({one.get(), nullptr, two.get()}))));
}

TEST_F(TypedAttributes, OfAnAbsentAttributeAreNeutralWithoutAnException) {
  start();
  const host::Value item = this->item();
  for (const char* getter : kGetters) {
    EXPECT_TRUE(isNeutral(getter, host::call(item, getter, "kMDItemNoSuchKey"))) << getter;
  }
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(TypedAttributes, OfAnUnconvertibleNameAreNeutralAndAskForNothing) {
  start();
  const host::Value item = this->item();
  const Calls calls = callsOf([&] {
    for (const char* getter : kGetters) {
      EXPECT_TRUE(isNeutral(getter, host::call(item, getter, host::Value::nullString()))) << getter;
      EXPECT_TRUE(isNeutral(getter, host::call(item, getter, unconvertible()))) << getter;
    }
  });
  EXPECT_EQ(0, std::count(calls.begin(), calls.end(), "MDItemCopyAttribute"));
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(TypedAttributes, AttributeStringArrayIsNilWithoutTheServiceThatMakesArrays) {
  host::Settings settings;
  settings.hidden = {"RuntimeArrayCreateSingleDimBoundedArray"};
  start(settings);
  const host::Value item = this->item();
  const CFOwner one = cfText("1");
  EXPECT_TRUE(answerFor(item, "AttributeStringArray", cfUnretainedArray({one.get()})).isNil());
  EXPECT_TRUE(answerFor(item, "AttributeStringArray", cfText("no array")).isNil());
  EXPECT_EQ(Exceptions{kWrongType}, host::takeExceptions());
}

// Calls, in order

TEST_F(TypedAttributes, AreReadWithTheseCalls) {
  start();
  const host::Value item = this->item();
  const CFOwner one = cfText("1");
  struct {
    const char* getter;
    std::function<CFOwner()> value;
    Calls calls;
  } const rows[] = {
      {"AttributeString",
       [] { return cfText("x"); },
       {"REALGetStringCFString", "MDItemCopyAttribute", "CFGetTypeID", "CFStringGetTypeID",
        "CFStringGetLength", "CFStringGetCString", "REALBuildString", "REALSetStringEncoding", "CFRelease",
        "CFRelease"}},
      {"AttributeBoolean",
       [] { return own(CFRetain(kCFBooleanTrue)); },
       {"REALGetStringCFString", "MDItemCopyAttribute", "CFGetTypeID", "CFBooleanGetTypeID",
        "CFBooleanGetValue", "CFRelease", "CFRelease"}},
      {"AttributeDouble",
       [] { return cfInt64(1); },
       {"REALGetStringCFString", "MDItemCopyAttribute", "CFGetTypeID", "CFNumberGetTypeID",
        "CFNumberGetValue", "CFRelease", "CFRelease"}},
      {"AttributeStringArray",
       [&] { return cfUnretainedArray({one.get()}); },
       {"RuntimeArrayCreateSingleDimBoundedArray", "REALGetStringCFString", "MDItemCopyAttribute",
        "CFGetTypeID", "CFArrayGetTypeID", "CFArrayGetCount", "CFArrayGetValueAtIndex", "CFStringGetLength",
        "CFStringGetCString", "REALBuildString", "REALSetStringEncoding", "RuntimeArrayDirectGetInsertProc",
        "array insert", "REALUnlockString", "CFRelease", "CFRelease"}},
  };
  for (const auto& row : rows) {
    answerFor(item, row.getter, row.value());  // finds the services
    host::Value answer;
    standin::planAnswer("MDItemCopyAttribute", row.value().leak());
    EXPECT_EQ(row.calls, callsOf([&] { answer = host::call(item, row.getter, "key"); })) << row.getter;
  }
}

TEST_F(TypedAttributes, OfAWrongTypeReleaseTheValueThenTheKeyAfterRaising) {
  start();
  const host::Value item = this->item();
  for (const char* getter : kGetters) {
    answerFor(item, getter, cfWitness());
    standin::planAnswer("MDItemCopyAttribute", cfWitness().leak());
    host::Value answer;
    const Calls calls = callsOf([&] { answer = host::call(item, getter, "key"); });
    EXPECT_EQ((Calls{"REALUnlockObject", "REALUnlockString", "CFRelease", "value finalized", "CFRelease"}),
              lastOf(calls, 5))
        << getter;
  }
  EXPECT_EQ(8u, host::takeExceptions().size());
}

}  // namespace
