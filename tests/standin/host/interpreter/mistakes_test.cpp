// Mistakes in programs: found before anything runs, told with the place and with what would fit.
#include "tests/standin/host/fake_plugin.h"
#include "tests/standin/host/interpreter/run_program.h"

namespace {

class Mistakes : public fake::HostTest, public testing::WithParamInterface<Case> {};

TEST_P(Mistakes, AreTold) {
  EXPECT_EQ(outputOf(GetParam().program), GetParam().output) << GetParam().program;
}

TEST_P(Mistakes, AreFoundBeforeAnythingRuns) {
  EXPECT_FALSE(outputOf("Print \"runs\"\n" + GetParam().program).starts_with("runs"));
}

INSTANTIATE_TEST_SUITE_P(Programs, Mistakes, testing::ValuesIn(casesIn("mistakes")),
                         testing::PrintToStringParamName());

std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

class Limits : public fake::HostTest {};

TEST_F(Limits, OfNestingAreMistakesAndNoOverflow) {
  const std::string brackets = repeated("(", 20000);
  EXPECT_EQ(outputOf("Print " + brackets), "1:207: this nests more than 200 deep\n");
  EXPECT_NE(outputOf("Print " + repeated("Not ", 20000)).find("nests more than 200 deep"), std::string::npos);
  EXPECT_NE(outputOf("Print 1" + repeated(" + 1", 20000)).find("nests more than 200 deep"),
            std::string::npos);
  EXPECT_NE(outputOf(repeated("If True Then\n", 20000)).find("nests more than 200 deep"), std::string::npos);
  EXPECT_NE(outputOf("Print a" + repeated(".a", 20000)).find("nests more than 200 deep"), std::string::npos);
  EXPECT_NE(outputOf(repeated("If True Then ", 20000)).find("nests more than 200 deep"), std::string::npos);
}

// What is checked again at each level would never be done.
TEST_F(Limits, OfTimeAreNoMatterWhereCallsNest) {
  const std::string calls = repeated("F(", 150) + "1" + repeated(")", 150);
  EXPECT_EQ(outputOf("Function F() As Integer()\nReturn Array(1, 0)\nEnd Function\nPrint " + calls +
                     "\nDim a() As Integer = F\na(" + calls + ") = " + calls + "\n"),
            "1\n");
}

TEST_F(Limits, AProgramThatNeverEndsIsInterrupted) {
  int questions = 0;
  standin::host::Surroundings surroundings;
  surroundings.mayGoOn = [&questions] { return ++questions < 10; };
  EXPECT_EQ(outputOf("Try\nWhile True\nWend\nCatch\nPrint \"caught\"\nFinally\nPrint \"finally\"\nEnd Try\n",
                     surroundings),
            "interrupted\n");
  EXPECT_EQ(questions, 10);
}

TEST_F(Limits, ADestructorThatNeverEndsIsInterruptedToo) {
  int questions = 0;
  standin::host::Surroundings surroundings;
  surroundings.mayGoOn = [&questions] { return ++questions < 10; };
  EXPECT_EQ(
      outputOf(
          "Class A\nSub Destructor()\nDo\nLoop\nEnd Sub\nEnd Class\nDim a1 As New A\na1 = Nil\nPrint 1\n",
          surroundings),
      "interrupted\n");
}

TEST_F(Limits, ArgumentsAreAnArray) {
  standin::host::Surroundings surroundings;
  surroundings.arguments = {"one", "two"};
  EXPECT_EQ(outputOf("Print Ubound(args)\nPrint args(0) + args(1)\n", surroundings), "1\nonetwo\n");
}

}  // namespace
