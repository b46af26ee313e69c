#include "tests/standin/host/fake_plugin.h"

namespace fake {
namespace {

using Dates = HostTest;

bool setField(Object date, const char* name, int32_t value) {
  return entry<bool(Object, const char*, int32_t)>("REALSetPropValueInt")(date, name, value);
}

bool getField(Object date, const char* name, int32_t& value) {
  return entry<bool(Object, const char*, int32_t*)>("REALGetPropValueInt")(date, name, &value);
}

TEST_F(Dates, FreshOnesAreTheSameInEveryRun) {
  EXPECT_EQ(host::fields(host::newInstance("Date")), (host::DateFields{1987, 6, 5, 4, 3, 2}));
}

TEST_F(Dates, AreReadFieldByField) {
  const auto date = host::date(2024, 13, -3, 25, 61, 62);  // kept as they are
  const std::pair<const char*, int32_t> expected[] = {{"Year", 2024}, {"Month", 13},  {"Day", -3},
                                                      {"Hour", 25},   {"Minute", 61}, {"Second", 62}};
  for (const auto& [name, value] : expected) {
    int32_t read = 0;
    EXPECT_TRUE(getField(date.handle(), name, read)) << name;
    EXPECT_EQ(read, value) << name;
  }
}

TEST_F(Dates, AreSetFieldByField) {
  const Object date = newInstance("Date");
  int32_t value = 1;
  for (const char* const name : {"Year", "Month", "Day", "Hour", "Minute", "Second"}) {
    EXPECT_TRUE(setField(date, name, value++));
  }
  const auto array = host::objectArray({});
  insertObject(array.handle(), 0, date);
  EXPECT_EQ(host::fields(host::elements(array)[0]), (host::DateFields{1, 2, 3, 4, 5, 6}));
  unlockObject(date);
}

TEST_F(Dates, MayHaveAFieldThatCantBeRead) {
  const auto date = host::date(2024, 1, 2);
  host::settings().unreadableProperties = {"Second"};
  int32_t value = 77;
  EXPECT_FALSE(getField(date.handle(), "Second", value));
  EXPECT_EQ(value, 3) << "whatever a host leaves there";
  EXPECT_TRUE(getField(date.handle(), "Minute", value));
}

TEST_F(Dates, FieldsOfAnythingElseAreRefused) {
  EXPECT_THROW(host::fields(host::newInstance("Dictionary")), host::CallError);
  EXPECT_THROW(host::fields(5), host::CallError);
}

}  // namespace
}  // namespace fake
