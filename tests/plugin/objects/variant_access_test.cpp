// Reading values out of host variants.
#include "host/variant_access.h"

#include "tests/plugin/objects/fixture.h"

namespace {

// A variant holding the value, as the plug-in gets one: the only element of an array.
class Variants : public ObjectsTest {
 protected:
  Owned<REALobject> variant(const host::Value& value) {
    array_ = host::objectArray({value});
    return adopt(REALGetArrayValueObject(objectHandle(array_), 0));
  }
  void TearDown() override {
    array_ = {};
    ObjectsTest::TearDown();
  }

 private:
  host::Value array_;
};

// Each accessor through its function, through its property, and with neither.
enum class Way { function, property, neither };
void PrintTo(Way way, std::ostream* out) {
  const char* const names[] = {"function", "property", "neither"};
  *out << names[static_cast<int>(way)];
}

class VariantAccess : public Variants, public testing::WithParamInterface<Way> {
 protected:
  void SetUp() override {
    host::Settings settings;
    if (GetParam() != Way::function) {
      settings.hidden = {"REALLoadGlobalMethod", "VariantToString", "VariantToInt32",
                         "VariantToInt64",       "VariantToSingle", "VariantToDouble"};
    }
    if (GetParam() == Way::neither) {
      settings.hidden.insert({"REALGetPropValueInt", "REALGetPropValueInt64", "REALGetPropValueSingle",
                              "REALGetPropValueDouble", "REALGetPropValueString"});
    }
    start(settings);
  }

  template <typename Value>
  Value orZero(Value value) const {
    return GetParam() == Way::neither ? Value() : value;
  }
};

TEST_P(VariantAccess, ReadsTheType) {
  EXPECT_EQ(orZero(2), GetVariantType(variant(5).get()));
  EXPECT_EQ(orZero(3), GetVariantType(variant(int64_t{5}).get()));
  EXPECT_EQ(orZero(5), GetVariantType(variant(0.5).get()));
  EXPECT_EQ(orZero(8), GetVariantType(variant("text").get()));
  EXPECT_EQ(orZero(11), GetVariantType(variant(true).get()));
}

TEST_P(VariantAccess, ReadsNumbers) {
  EXPECT_EQ(orZero(-5), GetVariantInt32(variant(-5).get()));
  EXPECT_EQ(orZero(int64_t{0x123456789A}), GetVariantInt64(variant(int64_t{0x123456789A}).get()));
  EXPECT_EQ(orZero(0.25f), GetVariantSingle(variant(0.25).get()));
  EXPECT_EQ(orZero(1.0 / 3), GetVariantDouble(variant(1.0 / 3).get()));
}

TEST_P(VariantAccess, ReadsText) {
  const auto text = adopt(GetVariantString(variant("text").get()));
  EXPECT_EQ(orZero(std::string("text")), stringOf(text.get()).bytes());
}

TEST_P(VariantAccess, OfANullVariantIsZeroWithoutACall) {
  const auto calls = callsOf([] {
    EXPECT_EQ(0, GetVariantType(nullptr));
    EXPECT_EQ(0, GetVariantInt32(nullptr));
    EXPECT_EQ(0, GetVariantInt64(nullptr));
    EXPECT_EQ(0.0f, GetVariantSingle(nullptr));
    EXPECT_EQ(0.0, GetVariantDouble(nullptr));
    EXPECT_EQ(nullptr, GetVariantString(nullptr));
  });
  EXPECT_TRUE(calls.empty());
}

INSTANTIATE_TEST_SUITE_P(Ways, VariantAccess, testing::Values(Way::function, Way::property, Way::neither));

class VariantFunctions : public Variants {};

TEST_F(VariantFunctions, AreFoundOnceAndKept) {
  start();
  const auto number = variant(5);
  const auto readAll = [&] {
    GetVariantType(number.get());
    GetVariantInt32(number.get());
    GetVariantInt64(number.get());
    GetVariantSingle(number.get());
    GetVariantDouble(number.get());
    const auto text = adopt(GetVariantString(number.get()));
  };
  readAll();
  EXPECT_EQ((std::vector<std::string>{"VarType", "VariantToInt32", "VariantToInt64", "VariantToSingle",
                                      "VariantToDouble", "VariantToString", "REALUnlockString"}),
            callsOf(readAll));
}

}  // namespace
