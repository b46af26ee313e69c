// Programs that use the classes of a plug-in.
#include "tests/standin/host/fake_plugin.h"
#include "tests/standin/host/interpreter/run_program.h"

namespace {

class WithPlugin : public fake::PluginTest, public testing::WithParamInterface<Case> {};

TEST_P(WithPlugin, ProgramsDoAsTheyShow) {
  EXPECT_EQ(outputOf(GetParam().program), GetParam().output) << GetParam().program;
}

INSTANTIATE_TEST_SUITE_P(Programs, WithPlugin, testing::ValuesIn(casesIn("plugin")),
                         testing::PrintToStringParamName());

class WhatIsForgotten : public fake::PluginTest {};

// What the plug-in itself forgets stays in the ledger.
TEST_F(WhatIsForgotten, ByThePlugInIsStillTold) {
  fake::Object forgotten = nullptr;
  EXPECT_EQ(outputOf("Dim t As New ThingZNK\nt = Nil\n"), "");
  forgotten = fake::newInstance("ThingZNK");
  EXPECT_EQ(outputOf("Dim d As New Dictionary\nd.Value(1) = d\n"), "");
  EXPECT_EQ(standin::ledgerLine("host object lock"), 1);
  EXPECT_EQ(standin::ledgerLine("host object"), 1);
  fake::unlockObject(forgotten);
}

// An array is taken back only where the plug-in raised an exception instead of giving one.
TEST_F(WhatIsForgotten, AnArrayIsToldAfterOtherExceptions) {
  constexpr int32_t kObjects = 4;
  const fake::Object array = fake::createArray(kObjects, -1);
  EXPECT_EQ(outputOf("Dim t As New ThingZNK\nTry\nPrint t.Fail\nCatch\nEnd Try\n"), "");
  EXPECT_EQ(standin::ledgerLine("host object lock"), 1);
  fake::unlockObject(array);
}

TEST_F(WhatIsForgotten, TwoProgramsOneAfterTheOtherMayHaveTheSameClasses) {
  const char* const program = "Class A\nInherits ThingZNK\nEnd Class\nDim a1 As New A\nPrint a1 IsA A\n";
  EXPECT_EQ(outputOf(program), "True\n");
  EXPECT_EQ(outputOf(program), "True\n");
}

}  // namespace
