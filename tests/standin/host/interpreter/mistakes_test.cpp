// Mistakes in programs: found before anything runs, told with the place and with what would fit.
#include "tests/standin/host/fake_plugin.h"
#include "tests/standin/host/interpreter/run_program.h"

namespace {

class Mistakes : public fake::HostTest, public testing::WithParamInterface<Row> {};

TEST_P(Mistakes, AreTold) {
  EXPECT_EQ(outputOf(std::string("Print \"runs\"\n") + GetParam().program), GetParam().output);
}

const Row kMistakes[] = {
    {"UnknownName", "Dim count As Integer\nPrint cuont\n",
     "3:7: there is no variable, method or class cuont; did you mean count?\n"},
    {"UnknownMember", "Dim d As New Date\nPrint d.Yaer\n",
     "3:9: Date has no member Yaer; did you mean Year?\n"},
    {"UnknownType", "Dim a As Colour\n", "2:10: there is no type or class Colour\n"},
    {"TypeThatIsNotTaken", "Dim a As Byte\n",
     "2:10: Byte is not taken; of whole numbers there are Integer, Int32, UInt32 and Int64\n"},
    {"WrongType", "Dim s As String = 5\n",
     "2:19: expected a String, not an Integer; Str makes a text of a number\n"},
    {"WrongArgument", "Print Left(5, 1)\n",
     "2:7: Left(Integer, Integer) fits none of: Left(text As String, count As Integer) As String\n"},
    {"MissingArgument", "Sub Add(a As Integer, b As Integer)\nEnd Sub\nAdd 1\n",
     "4:1: Add(Integer) fits none of: Add(a As Integer, b As Integer)\n"},
    {"OperandsThatDoNotFit", "Print \"a\" + 1\n",
     "2:11: '+' takes no String and Integer; Str makes a text of a number\n"},
    {"ObjectsHaveNoText", "Print New Date\n",
     "2:1: Print(Date) fits none of: Print(text As String); Print(number As Int64); Print(number As Single); "
     "Print(number As Double); Print(truth As Boolean); Print(colour As Color)\n"},
    {"ConditionThatIsNone", "If 1 Then Print 1\n", "2:4: expected a Boolean, not an Integer\n"},
    {"MissingEnd", "If True Then\nPrint 1\n",
     "4:1: expected End If for the If of line 2, not the end of the program\n"},
    {"WrongEnd", "While True\nNext\n", "3:1: expected Wend for the While of line 2, not 'Next'\n"},
    {"WrongEndOfAMethod", "Sub A()\nEnd Function\n",
     "3:1: expected End Sub for the Sub of line 2, not 'End Function'\n"},
    {"MissingThen", "If True\n", "2:8: expected Then after the condition, not the end of the line\n"},
    {"NoValue", "Dim a As Integer =\n", "2:19: expected a value, not the end of the line\n"},
    {"OpenText", "Print \"abc\n", "2:7: expected a quote at the end of the text, in the same line\n"},
    {"StrayCharacter", "Print 1 ? 2\n", "2:9: no '?' has a meaning here\n"},
    {"ColumnsAreCharacters", "Print \"\xC3\xA9\xC3\xA9\" ? 1\n", "2:12: no '?' has a meaning here\n"},
    {"NumberTooLarge", "Print 99999999999999999999\n", "2:7: a whole number of more than 64 bits\n"},
    {"NumberWithLetters", "Print 12ab\n", "2:7: expected a number without letters in it\n"},
    {"WordAsName", "Dim end As Integer\n",
     "2:5: expected the name of a variable that is no word of the language, not 'End'\n"},
    {"DeclaredTwice", "Dim a As Integer\nDim A As String\n", "3:5: A is declared already\n"},
    {"DeclaredTwiceInAMethod", "Sub S(a As Integer)\nDim a As Integer\nEnd Sub\n",
     "3:5: a is declared already\n"},
    {"ConstantIsSet", "Const kA = 1\nkA = 2\n", "3:1: kA is a constant\n"},
    {"ConstantIsNone", "Dim n As Integer\nConst kA = n\n",
     "3:12: expected a value that is known before the program runs\n"},
    {"ReadOnlyIsSet", "Dim d As New Dictionary\nd.Count = 3\n", "3:3: an Integer can't be assigned here\n"},
    {"ExitWithoutLoop", "Exit For\n", "2:1: there is no For loop around this\n"},
    {"ReturnInASub", "Sub S()\nReturn 1\nEnd Sub\n",
     "3:1: a Sub gives nothing back; write Return alone, or make it a Function\n"},
    {"ReturnOfNothing", "Function F() As Integer\nReturn\nEnd Function\n",
     "3:1: expected an Integer after Return\n"},
    {"SubHasNoValue", "Sub S()\nEnd Sub\nPrint S\n",
     "4:1: Print(value of no type) fits none of: Print(text As String); Print(number As Int64); Print(number "
     "As Single); Print(number As Double); Print(truth As Boolean); Print(colour As Color)\n"},
    {"NoSuchClass", "Class A Inherits B\nEnd Class\n", "2:18: there is no type or class B\n"},
    {"InheritsItself", "Class A Inherits B\nEnd Class\nClass B Inherits A\nEnd Class\n",
     "2:1: A inherits itself\n"},
    {"ClassTwice", "Class Date\nEnd Class\n", "2:1: there is a class or type Date already\n"},
    {"PrivateMember", "Class A\nPrivate n As Integer\nEnd Class\nDim a1 As New A\nPrint a1.n\n",
     "6:10: n is private to A\n"},
    {"MeOutsideOfClasses", "Print Me.x\n",
     "2:7: there is no object here: this is no method of a class, or a shared one\n"},
    {"ObjectWhereThereIsNone", "Class A\nDim n As Integer\nShared Sub S()\nPrint n\nEnd Sub\nEnd Class\n",
     "5:7: n is a member of objects, and there is none here\n"},
    {"ObjectOfANumber", "Print New Integer\n", "2:11: New takes a class, not Integer\n"},
    {"VariantHasNoMembersOfObjects", "Dim v As Variant\nPrint v.Hour\n",
     "3:9: Variant has no member Hour; write CLASS(value).Hour\n"},
    {"CastThatNeverFits", "Dim d As New Date\nPrint Dictionary(d).Count\n",
     "3:7: a Date is never a Dictionary\n"},
    {"AnEventThatIsNone", "Class A\nEvent Done()\nEnd Event\nEnd Class\n", "3:1: A inherits no event Done\n"},
    {"ByRef", "Sub S(ByRef a As Integer)\nEnd Sub\n", "2:7: 'ByRef' is not taken\n"},
    {"Directive", "#If True\n", "2:1: expected a statement; directives for the compiler are not taken\n"},
    {"Colon", "Print 1 : Print 2\n", "2:9: expected the end of the line; each statement has its own line\n"},
    {"MethodInsideOfAMethod", "Sub A()\nSub B()\nEnd Sub\nEnd Sub\n",
     "3:1: 'Sub' can't stand inside of another statement, Sub, Function or Class\n"},
    {"StatementThatIsNone", "1 + 2\n", "2:1: expected a statement, not '1'\n"},
    {"ValueAsAStatement", "Dim a As Integer\na\n", "3:1: expected a statement, such as a call of a method\n"},
};
INSTANTIATE_TEST_SUITE_P(Rows, Mistakes, testing::ValuesIn(kMistakes), testing::PrintToStringParamName());

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
