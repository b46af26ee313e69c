// Operations on an instance without a reference: each raises, answers the neutral value of its type, and
// calls the service not at all.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "tests/plugin/fixture.h"

struct GuardCase {
  const char* name;
  std::vector<host::Value> (*arguments)();
  enum { kNone, kNil, kZero, kFalse } neutral;  // none: it answers nothing
  bool leavesArray = false;
};
inline void PrintTo(const GuardCase& row, std::ostream* out) {
  *out << row.name;
}

// The operation, and whether the host raises by unwinding.
class GuardTest : public PluginTest, public testing::WithParamInterface<std::tuple<GuardCase, bool>> {
 protected:
  // Runs the operation on a new instance of that class. None of the calls that it leads to may have one of
  // these in its name.
  void expectGuarded(const char* className, const host::Exception& raised, const Texts& service) {
    const GuardCase& row = std::get<GuardCase>(GetParam());
    const bool unwinding = std::get<bool>(GetParam());
    host::Settings settings;
    settings.raiseByUnwinding = unwinding;
    start(settings);
    const host::Value instance = host::newInstance(className);
    const auto arguments = row.arguments();
    host::Value result;
    const Calls calls = callsOf([&] { result = host::callWith(instance, row.name, arguments); });
    EXPECT_EQ(Exceptions{raised}, host::takeExceptions());
    for (const std::string& call : calls) {
      for (const std::string& name : service) EXPECT_EQ(std::string::npos, call.find(name)) << call;
    }
    if (row.leavesArray) expectLeftBehind({"host array of 0"});
    if (unwinding) return;  // there is no result then
    switch (row.neutral) {
      case GuardCase::kNone:
        break;
      case GuardCase::kNil:
        EXPECT_TRUE(result.isNil());
        break;
      case GuardCase::kZero:
        EXPECT_EQ(0, result.number());
        break;
      case GuardCase::kFalse:
        EXPECT_FALSE(result.boolean());
        break;
    }
  }
};
