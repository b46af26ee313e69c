// What programs do, without a plug-in: each row is a program and what it prints.
#include "standin/host/host.h"
#include "tests/standin/host/fake_plugin.h"
#include "tests/standin/host/interpreter/run_program.h"
#include "tests/support/scratch_folder.h"

namespace {

class Language : public fake::HostTest, public testing::WithParamInterface<Row> {};

TEST_P(Language, DoesWhatTheRowSays) {
  EXPECT_EQ(outputOf(GetParam().program), GetParam().output);
}

const Row kExpressions[] = {
    {"TheOppositeOfASingleIsADouble", "Dim s As Single = 0.5\nDim t As Single = -s\nPrint t\nPrint -s\n",
     "-0.5\n-0.5\n"},
    {"Precedence",
     "Print 1 + 2 * 3 - 8 / 2\nPrint (1 + 2) * 3\nPrint -2 ^ 2\nPrint 7 Mod 4 + 1\nPrint 7 \\ 2\n",
     "3\n9\n-4\n4\n3\n"},
    {"LogicBindsLooserThanComparisons",
     "Print 1 < 2 And 3 > 4 Or True\nPrint Not True Or True\nPrint True Xor True\n", "True\nTrue\nFalse\n"},
    {"LogicOfWholeNumbersIsOfTheirBits", "Print 12 And 10\nPrint 12 Or 3\nPrint 12 Xor 10\nPrint Not 0\n",
     "8\n15\n6\n-1\n"},
    {"AndAndOrStopWhereTheResultIsKnown",
     "Function Tell(b As Boolean) As Boolean\nPrint \"told\"\nReturn b\nEnd Function\n"
     "Print False And Tell(True)\nPrint True Or Tell(True)\nPrint True And Tell(False)\n",
     "False\nTrue\ntold\nFalse\n"},
    {"WholeNumbersWrap",
     "Dim i As Integer = 2147483647\ni = i + 1\nPrint i\nDim u As UInt32 = 0\nu = u - 1\nPrint u\nDim w As "
     "Int64 = &h7FFFFFFFFFFFFFFF\n"
     "Print w + 1\nDim least As Integer = &h80000000\nPrint least \\ -1\nPrint least Mod -1\n",
     "-2147483648\n4294967295\n-9223372036854775808\n-2147483648\n0\n"},
    {"DivisionIsOfReals", "Print 7 / 2\nPrint 1 / 4\nPrint 6 / 3\n", "3.5\n0.25\n2\n"},
    {"WholeDivisionByZeroRaises", "Dim zero As Integer\nPrint 1 \\ zero\n",
     "RuntimeException: a whole number divided by zero\n  the program:2\n"},
    {"NumbersChangeIntoEachOther",
     "Dim i As Integer = 3.9\nPrint i\nDim d As Double = i\nPrint d / 2\nPrint Integer(-2.7)\nPrint "
     "UInt32(5)\n",
     "3\n1.5\n-2\n5\n"},
    {"LiteralsOfOtherBases", "Print &hFF\nPrint &b101\nPrint &o17\nPrint 1.5e3\nPrint .5\nPrint &cFF8000\n",
     "255\n5\n15\n1500\n0.5\n&h00FF8000\n"},
    {"TextsCompareWhateverTheirCase",
     "Print \"abc\" = \"ABC\"\nPrint \"a\" < \"B\"\nPrint \"\xC3\xA9t\xC3\xA9\" = "
     "\"\xC3\x89T\xC3\x89\"\nPrint StrComp(\"a\", \"A\", 0)\nPrint StrComp(\"a\", \"a\")\n"
     "Print StrComp(\"b\", \"A\", 1)\n",
     "True\nTrue\nTrue\n1\n0\n1\n"},
    {"QuotesAreDoubled", "Print \"say \"\"hi\"\"\"\n", "say \"hi\"\n"},
    {"ContinuedLinesAndComments", "Print 1 + _ // one\n  2 ' and two\n' nothing\nRem nothing\n// nothing\n",
     "3\n"},
    {"NamesInAnyCase", "DIM aBc As INTEGER = 2\nprint ABC * abc\n", "4\n"},
    {"PrintTakesBracketsAsAPartOfItsValue", "Print (1 + 2) * 2\nPrint(\"x\")\nPrint (\"a\") + \"b\"\n",
     "6\nx\nab\n"},
    {"NumbersAsText",
     "Print 0.1 + 0.2\nPrint 1e20\nPrint 1/3\nPrint True\nDim s As Single = 0.1\nPrint s\nPrint "
     "Str(1234567890123)\n",
     "0.3\n1e+20\n0.333333333333333\nTrue\n0.1\n1234567890123\n"},
};
INSTANTIATE_TEST_SUITE_P(Expressions, Language, testing::ValuesIn(kExpressions),
                         testing::PrintToStringParamName());

const Row kStatements[] = {
    {"If",
     "For i As Integer = 1 To 4\nIf i = 1 Then\nPrint \"one\"\nElseIf i = 2 Then\nPrint \"two\"\nElse\nPrint "
     "\"more\"\nEnd If\nNext\n",
     "one\ntwo\nmore\nmore\n"},
    {"IfInOneLine",
     "If 1 = 1 Then Print \"yes\" Else Print \"no\"\nIf 1 = 2 Then Print \"yes\" Else Print \"no\"\nIf False "
     "Then Print \"x\"\n",
     "yes\nno\n"},
    {"SelectCase",
     "For i As Integer = 0 To 7\nSelect Case i\nCase 0\nPrint \"none\"\nCase 1, 2\nPrint \"few\"\nCase 3 To "
     "5\nPrint \"some\"\nCase Is > 6\n"
     "Print \"many\"\nCase Else\nPrint \"six\"\nEnd Select\nNext\n",
     "none\nfew\nfew\nsome\nsome\nsome\nsix\nmany\n"},
    {"ForCounts",
     "For i As Integer = 1 To 3\nPrint i\nNext\nFor i As Integer = 3 DownTo 1 Step 2\nPrint i\nNext i\nFor d "
     "As Double = 0 To 1 Step 0.5\nPrint d\nNext\n"
     "For i As Integer = 2 To 1\nPrint \"never\"\nNext\nDim j As Integer\nFor j = 1 To 2\nNext\nPrint j\nFor "
     "i As Integer = 5 To 1 Step -2\nPrint i\nNext\n",
     "1\n2\n3\n3\n1\n0\n0.5\n1\n3\n5\n3\n1\n"},
    {"ForEndsWithTheNumbersOfItsType",
     "Dim n As Integer\nFor i As Integer = 2147483646 To 2147483647\nn = n + 1\nNext\nPrint n\n", "2\n"},
    {"TheEndOfForIsAskedForEachTime",
     "Dim a() As Integer = Array(1, 2, 3)\nFor i As Integer = 0 To a.Ubound\nPrint a(i)\nIf i = 0 Then "
     "a.Remove(2)\nNext\n",
     "1\n2\n"},
    {"ForEach",
     "For Each s As String In Split(\"a b c\")\nPrint s\nNext\nDim n As Integer\nFor Each n In Array(4, "
     "5)\nPrint n\nNext\n",
     "a\nb\nc\n4\n5\n"},
    {"WhileAndDo",
     "Dim i As Integer\nWhile i < 2\ni = i + 1\nWend\nPrint i\nDo\ni = i + 1\nLoop Until i >= 5\nPrint i\nDo "
     "Until i = 7\ni = i + 1\nLoop\nPrint i\n"
     "Do While i < 7\nPrint \"never\"\nLoop\nDo\ni = i + 1\nIf i > 9 Then Exit\nLoop\nPrint i\n",
     "2\n5\n7\n10\n"},
    {"ExitAndContinueOfTheirLoop",
     "For i As Integer = 1 To 3\nDim n As Integer\nDo\nn = n + 1\nIf i = 2 Then Continue For\nIf n = 3 Then "
     "Exit Do\nIf i = 3 Then Exit For\nLoop\nPrint i * 10 + n\nNext\n"
     "Dim j As Integer\nWhile True\nj = j + 1\nIf j < 3 Then Continue While\nExit While\nWend\nPrint j\n",
     "13\n3\n"},
    {"VariablesOfABlockBeginAnew", "For i As Integer = 1 To 2\nDim n As Integer\nn = n + 1\nPrint n\nNext\n",
     "1\n1\n"},
    {"SeveralVariablesOfAType",
     "Dim a, b As Integer, c As String = \"x\"\na = 1\nb = 2\nPrint Str(a + b) + c\n", "3x\n"},
    {"Constants",
     "Const kTwo = 2\nConst kFour As Integer = kTwo * kTwo\nSub Tell()\nConst kOwn = kFour + 1\nPrint "
     "kOwn\nEnd Sub\nTell\n",
     "5\n"},
    {"Methods",
     "Function Twice(n As Integer = 5) As Integer\nReturn n * 2\nEnd Function\nSub Tell(what As String, "
     "Optional times As Integer = 1)\nFor i As Integer = 1 To times\n"
     "Print what\nNext\nEnd Sub\nPrint Twice\nPrint Twice(1)\nTell \"a\", 2\nTell(\"b\")\nCall Twice(3)\n",
     "10\n2\na\na\nb\n"},
    {"MethodsByTheirParameters",
     "Function Kind(n As Integer) As String\nReturn \"whole\"\nEnd Function\nFunction Kind(n As Double) As "
     "String\nReturn \"real\"\nEnd Function\n"
     "Function Kind(s As String) As String\nReturn \"text\"\nEnd Function\nPrint Kind(1)\nPrint "
     "Kind(1.5)\nPrint Kind(\"\")\n",
     "whole\nreal\ntext\n"},
    {"Recursion",
     "Function Factorial(n As Int64) As Int64\nIf n < 2 Then Return 1\nReturn n * Factorial(n - 1)\nEnd "
     "Function\nPrint Factorial(20)\n",
     "2432902008176640000\n"},
    {"AFunctionWithoutReturnGivesNothing",
     "Function F() As Integer\nEnd Function\nFunction S() As String\nExit Function\nEnd Function\nPrint "
     "F\nPrint S\n",
     "0\n\n"},
    {"GlobalVariablesAreSeenInMethods",
     "Dim count As Integer = 1\nSub Add()\ncount = count + 1\nEnd Sub\nAdd\nAdd()\nPrint count\n", "3\n"},
    {"AssignsIsAssignedTo",
     "Dim last As String\nSub Slot(i As Integer, Assigns s As String)\nlast = Str(i) + s\nEnd Sub\nSlot(3) = "
     "\"x\"\nPrint last\n",
     "3x\n"},
    {"Quit", "Print 1\nQuit 7\nPrint 2\n", "1\nstatus 7\n"},
    {"QuitInsideOfTry", "Try\nQuit 3\nCatch\nPrint \"caught\"\nFinally\nPrint \"finally\"\nEnd Try\n",
     "status 3\n"},
    {"ReturnOutsideOfMethodsEndsTheProgram", "Print 1\nReturn\nPrint 2\n", "1\n"},
};
INSTANTIATE_TEST_SUITE_P(Statements, Language, testing::ValuesIn(kStatements),
                         testing::PrintToStringParamName());

const Row kTexts[] = {
    {"Parts",
     "Dim s As String = \"h\xC3\xA9llo\"\nPrint Len(s)\nPrint LenB(s)\nPrint Left(s, 2)\nPrint Right(s, "
     "3)\nPrint Mid(s, 2, 2)\nPrint s.Mid(4)\nPrint s.Left(99)\nPrint Left(s, -1)\nPrint s.Length\n",
     "5\n6\nh\xC3\xA9\nllo\n\xC3\xA9l\nlo\nh\xC3\xA9llo\n\n5\n"},
    {"Searching",
     "Print InStr(\"banana\", \"AN\")\nPrint InStr(3, \"banana\", \"an\")\nPrint InStr(\"x\", \"y\")\nPrint "
     "Replace(\"aXbx\", \"x\", \"-\")\nPrint ReplaceAll(\"aXbx\", \"x\", \"-\")\nPrint ReplaceAll(\"a\", "
     "\"\", \"-\")\n",
     "2\n4\n0\na-bx\na-b-\na\n"},
    {"Splitting",
     "Print Join(Split(\"a,b,,c\", \",\"), \"|\")\nPrint Ubound(Split(\"\", \",\"))\nPrint "
     "Join(Split(\"abc\", \"\"))\nPrint NthField(\"a;b\", \";\", 2)\nPrint CountFields(\"a;b\", "
     "\";\")\nPrint NthField(\"a\", \";\", 9)\n",
     "a|b||c\n-1\na b c\nb\n2\n\n"},
    {"Cases",
     "Print Uppercase(\"stra\xC3\x9F\x65 \xC3\xA9\")\nPrint Lowercase(\"ABC\")\nPrint Titlecase(\"a quick "
     "FOX\")\nPrint \"[\" + Trim(\"  a b  \") + \"]\"\nPrint LTrim(\"  a\") + RTrim(\"b  \") + \"|\"\n",
     "STRA\xC3\x9F\x45 \xC3\x89\nabc\nA Quick Fox\n[a b]\nab|\n"},
    {"Characters",
     "Print Chr(65) + Chr(233) + Chr(128512)\nPrint Asc(\"A\")\nPrint Asc(\"\")\nPrint EndOfLine = Chr(10)\n",
     "A\xC3\xA9\xF0\x9F\x98\x80\n65\n-1\nTrue\n"},
    {"NumbersInTexts",
     "Print Val(\"12.5abc\") + 1\nPrint CDbl(\"-3\")\nPrint Val(\"x\")\nPrint Str(2.5)\nPrint Hex(255) + "
     "Oct(8) + Bin(5)\nPrint Hex(-1)\n",
     "13.5\n-3\n0\n2.5\nFF10101\nFFFFFFFF\n"},
    {"Formats",
     "Print Format(1234.567, \"#,##0.00\")\nPrint Format(0.256, \"0.0%\")\nPrint Format(5, \"000\")\nPrint "
     "Format(-5, \"0\")\nPrint Format(3.10, \"0.##\")\nPrint Format(0, \"#\")\n"
     "Print Format(7, \"+0\")\nPrint Format(-1, \"0;(0)\")\nPrint Format(0, \"0;(0);none\")\nPrint Str(2, "
     "\"0.0\")\nPrint Format(1, \"\\#0\")\n",
     "1,234.57\n25.6%\n005\n-5\n3.1\n\n+7\n(1)\nnone\n2.0\n#1\n"},
    {"Mathematics",
     "Print Abs(-2)\nPrint Ceil(1.2)\nPrint Floor(-1.2)\nPrint Round(2.5)\nPrint Sqrt(9)\nPrint Max(1, "
     "2)\nPrint Min(1, 2)\nPrint Pow(2, 10)\nPrint Sin(0) + Cos(0)\n",
     "2\n2\n-2\n3\n3\n2\n1\n1024\n1\n"},
    {"MoreMathematics",
     "Print Exp(0)\nPrint Log(1)\nPrint Tan(0)\nPrint ATan(0)\nPrint Microseconds > 0\nPrint CType(2.9, "
     "Integer)\n",
     "1\n0\n0\n0\nTrue\n2\n"},
};
INSTANTIATE_TEST_SUITE_P(Texts, Language, testing::ValuesIn(kTexts), testing::PrintToStringParamName());

const Row kValues[] = {
    {"Arrays",
     "Dim a() As Integer\nPrint a.Ubound\na.Append 5\na.Append(7)\na.Insert 0, 3\nPrint a(0) + a(1) + "
     "a(2)\na(1) = 9\nPrint a(1)\na.Remove 0\nPrint a(0)\nPrint a.Ubound\nPrint a.IndexOf(7)\n"
     "Print a.IndexOf(8)\nPrint a.Pop\nRedim a(3)\nPrint Ubound(a)\nRedim a(-1)\nPrint Ubound(a)\nDim b(2) "
     "As String\nb(2) = \"z\"\nPrint Join(b, \"-\")\n",
     "-1\n15\n9\n9\n1\n1\n-1\n7\n3\n-1\n--z\n"},
    {"ArraysAreShared",
     "Sub Add(a() As String)\na.Append \"x\"\nEnd Sub\nDim a() As String\nAdd a\nDim b() As String = "
     "a\nAdd(b)\nPrint a.Ubound\n",
     "1\n"},
    {"ArraysOfEveryType",
     "Dim b() As Boolean = Array(True, False)\nb(1) = True\nPrint b(1)\nDim w() As Int64 = "
     "Array(5000000000)\nPrint w(0)\nDim s(0) As Single\ns(0) = 0.5\nPrint s(0)\nDim u(0) As UInt32\nu(0) = "
     "-1\nPrint u(0)\n"
     "Dim c(0) As Color\nc(0) = &c102030\nPrint c(0).Green\nDim v() As Variant\nv.Append 1\nv.Append "
     "\"a\"\nv.Append Nil\nPrint v(1)\nPrint v(2).IsNull\nDim d(0) As Date\nPrint d(0) Is Nil\nDim o() As "
     "Dictionary\no.Append New Dictionary\nPrint o(0).Count\n",
     "True\n5000000000\n0.5\n4294967295\n32\na\nTrue\nTrue\n0\n"},
    {"ArraysAreSorted",
     "Dim a() As Integer = Array(3, 1, 2)\na.Sort\nPrint Str(a(0)) + Str(a(2))\nDim s() As String = "
     "Array(\"b\", \"A\", \"c\")\ns.Sort\nPrint Join(s)\n",
     "13\nA b c\n"},
    {"ArraysHaveBounds",
     "Dim a(1) As Integer\nTry\nPrint a(2)\nCatch e As OutOfBoundsException\nPrint e.Message\nEnd "
     "Try\na.Insert(9, 1)\n",
     "no element 2; the last one is 1\nOutOfBoundsException: no element 9; the last one is 2\n  the "
     "program:7\n"},
    {"Variants",
     "Dim v As Variant\nPrint v.IsNull\nv = 5\nPrint v.Type\nPrint v + 1\nPrint v.StringValue + \"!\"\nv = "
     "\"12\"\nPrint v.Type = Variant.TypeString\nPrint v.IntegerValue * 2\nDim i As Integer = v\nPrint i\nv "
     "= True\nPrint v\n"
     "v = 2.5\nPrint v * 2\nPrint v > 2\nPrint v.DoubleValue\nv = Array(1)\nPrint v.Type\nDim a() As Integer "
     "= v\nPrint a(0)\n",
     "True\n2\n6\n5!\nTrue\n24\n12\nTrue\n5\nTrue\n2.5\n4098\n1\n"},
    {"VariantsAsEveryKind",
     "Dim v As Variant = 65.7\nPrint v.Int32Value\nPrint v.Int64Value\nPrint v.UInt32Value\nPrint "
     "v.SingleValue\n"
     "Print v.BooleanValue\nv = &c000041\nPrint v.ColorValue\nv = New Date(2000)\nPrint "
     "v.DateValue.Year\nPrint v.ObjectValue Is v\n"
     "Print v.DoubleValue = v.DateValue.TotalSeconds\nPrint VarType(v) = Variant.TypeDate\nPrint "
     "VarType(Nil)\nv = \"1.5x\"\nPrint v.DoubleValue\n"
     "Print v.BooleanValue\nDim b As Boolean = Variant(\"TRUE\")\nPrint b\nPrint Variant.TypeNil + "
     "Variant.TypeInteger + Variant.TypeLong + "
     "Variant.TypeSingle + Variant.TypeDouble + Variant.TypeObject + Variant.TypeBoolean + "
     "Variant.TypeColor\nTry\nPrint v.ObjectValue Is Nil\n"
     "Catch e As TypeMismatchException\nPrint e.Message\nEnd Try\n",
     "65\n65\n65\n65.7\nTrue\n&h00000041\n2000\nTrue\nTrue\nTrue\n0\n1.5\nFalse\nTrue\n50\nexpected an "
     "object, not \"1.5x\"\n"},
    {"VariantsAreComputedWithByWhatIsInThem",
     "Dim a As Variant = 5, b As Variant = \"x\"\nPrint a + 2.5\nPrint b + \"y\"\nPrint a = b\nPrint a <> "
     "b\nPrint b = \"X\"\nPrint -a\nPrint a \\ 2\n"
     "Print a / 2\nPrint a Mod 3\nDim t As Variant = True\nPrint t And False\nPrint Not t\nPrint a > 4 And "
     "t\nTry\nPrint a < b\nCatch e As "
     "TypeMismatchException\nPrint e.Message\nEnd Try\n",
     "7.5\nxy\nFalse\nTrue\nTrue\n-5\n2\n2.5\n2\nFalse\nFalse\nTrue\n5 and \"x\" don't fit each other\n"},
    {"VariantsAreCheckedWhenTheyAreUsed",
     "Dim v As Variant = New Dictionary\nTry\nDim d As Date = v\nCatch e As TypeMismatchException\nPrint "
     "\"no date\"\nEnd Try\nTry\nPrint v\nCatch e As TypeMismatchException\nPrint \"no text\"\nEnd Try\n"
     "Try\nPrint v + 1\nCatch e As TypeMismatchException\nPrint \"no number\"\nEnd Try\nDim d As Dictionary "
     "= v\nPrint d.Count\n",
     "no date\nno text\nno number\n0\n"},
    {"Dictionaries",
     "Dim d As New Dictionary\nd.Value(\"a\") = 1\nd.Value(\"b\") = \"two\"\nPrint d.Count\nPrint "
     "d.Value(\"A\")\nPrint d.HasKey(\"c\")\nPrint d.Lookup(\"c\", \"none\")\nPrint d.Key(1)\nFor Each k As "
     "Variant In d.Keys\nPrint k\nNext\n"
     "Dim all() As Variant = d.Values\nPrint all(1)\nd.Remove \"a\"\nPrint d.HasKey(\"a\")\nPrint "
     "d.Value(\"b\")\nTry\nPrint d.Value(\"a\")\nCatch e As KeyNotFoundException\nPrint e.Message\nEnd "
     "Try\nd.Clear\nPrint d.Count\n",
     "2\n1\nFalse\nnone\nb\na\nb\ntwo\nFalse\ntwo\nthe dictionary has no key \"a\"\n0\n"},
    {"Dates",
     "Dim d As New Date(2014, 1, 31, 13, 5, 9)\nPrint d.SQLDateTime\nd.Month = d.Month + 1\nPrint "
     "d.SQLDate\nd.Day = 0\nPrint d.SQLDate\nDim e As New Date(d)\nPrint e = d\ne.Second = e.Second + "
     "60\nPrint e > d\nPrint e.TotalSeconds - d.TotalSeconds\n"
     "Dim f As New Date(1904, 1, 1)\nPrint f.TotalSeconds\nf.TotalSeconds = -1\nPrint f.SQLDateTime\nPrint "
     "d.DayOfWeek\nDim g As New Date\nPrint g.Year > 2020\nDim v As Variant = d\nPrint v\n",
     "2014-01-31 13:05:09\n2014-03-03\n2014-02-28\nTrue\nTrue\n60\n0\n1903-12-31 "
     "23:59:59\n6\nTrue\n2014-02-28 13:05:09\n"},
    {"Colours",
     "Dim c As Color = RGB(1, 2, 300)\nPrint c\nPrint c.Red + c.Green + c.Blue\nPrint c = &c0102FF\n",
     "&h000102FF\n258\nTrue\n"},
    {"MemoryBlocks",
     "Dim m As New MemoryBlock(4)\nPrint m.Size\nm.Byte(1) = 65\nPrint m.Byte(1)\nm.StringValue(2, 2) = "
     "\"bc\"\nPrint m.StringValue(1, 3)\nm.Size = 1\nPrint m.Size\nm.Byte(1) = 1\n",
     "4\n65\nAbc\n1\nOutOfBoundsException: the memory block has 1 bytes\n  the program:9\n"},
    {"NilIsNoObject", "Dim d As Dictionary\nPrint d Is Nil\nPrint d = Nil\nPrint d.Count\n",
     "True\nTrue\nNilObjectException: Count of an object that is Nil\n  the program:4\n"},
};
INSTANTIATE_TEST_SUITE_P(Values, Language, testing::ValuesIn(kValues), testing::PrintToStringParamName());

const Row kExceptions[] = {
    {"AreCaughtByTheirClass",
     "Try\nRaise New KeyNotFoundException\nCatch e As NilObjectException\nPrint \"no\"\nCatch e As "
     "RuntimeException\nPrint \"yes\"\nEnd Try\nTry\nRaise New RuntimeException(\"why\", 3)\nCatch e\nPrint "
     "e.Message + Str(e.ErrorNumber)\nEnd Try\n",
     "yes\nwhy3\n"},
    {"PassThroughFinally",
     "Sub Inner()\nTry\nRaise New RuntimeException(\"x\")\nFinally\nPrint \"first\"\nEnd Try\nEnd "
     "Sub\nTry\nInner\nCatch\nPrint \"then\"\nFinally\nPrint \"last\"\nEnd Try\n",
     "first\nthen\nlast\n"},
    {"FinallyComesWithReturn",
     "Function F() As Integer\nTry\nReturn 1\nFinally\nPrint \"finally\"\nEnd Try\nEnd Function\nPrint F\n",
     "finally\n1\n"},
    {"ARaisedAgainOneKeepsItsMessage",
     "Try\nTry\nRaise New RuntimeException(\"a\")\nCatch e\ne.Message = e.Message + \"b\"\nRaise e\nEnd "
     "Try\nCatch f\nPrint f.Message\nEnd Try\n",
     "ab\n"},
    {"TellTheirLines",
     "Sub Inner(n As Integer)\nDim d As Dictionary\nIf n = 0 Then\nPrint d.Count\nEnd If\nInner(n - 1)\nEnd "
     "Sub\n\nInner 1\n",
     "NilObjectException: Count of an object that is Nil\n  Inner:4\n  Inner:6\n  the program:9\n"},
    {"OfAClassOfTheProgram",
     "Class Mine\nInherits RuntimeException\nDim more As String = \"m\"\nEnd Class\nTry\nRaise New "
     "Mine\nCatch e As Mine\nPrint e.more\nEnd Try\nDim m As New Mine\nm.Message = \"own\"\nRaise m\n",
     "m\nMine: own\n  the program:12\n"},
    {"CallsThatNeverEndOverflowTheStack",
     "Sub Deeper()\nDeeper\nEnd Sub\nTry\nDeeper\nCatch e As StackOverflowException\nPrint \"overflow\"\nEnd "
     "Try\n",
     "overflow\n"},
    {"TheCastOfAnotherObject",
     "Dim o As Object = New Date\nPrint o IsA Date\nPrint Date(o).Hour >= 0\nTry\nPrint "
     "Dictionary(o).Count\nCatch e As IllegalCastException\nPrint \"no\"\nEnd Try\n",
     "True\nTrue\nno\n"},
    {"TooMuchMemory",
     "Dim s As String = \"0123456789abcdef\"\nTry\nWhile True\ns = s + s\nWend\nCatch e As "
     "OutOfMemoryException\nPrint e.Message\nEnd Try\nDim a() As Integer\nRedim a(2000000000)\n",
     "a text of more than 32 MB\nOutOfMemoryException: an array of more than 10 million elements\n  the "
     "program:10\n"},
};
INSTANTIATE_TEST_SUITE_P(Exceptions, Language, testing::ValuesIn(kExceptions),
                         testing::PrintToStringParamName());

const Row kClasses[] = {
    {"PropertiesAndMethods",
     "Class Counter\nDim count As Integer = 10\nProperty Names() As String\nSub Constructor(start As Integer "
     "= 0)\ncount = count + start\nEnd Sub\nSub Add(n As Integer = 1)\ncount = count + n\nEnd Sub\n"
     "Function Twice() As Integer\nReturn Me.count * 2\nEnd Function\nEnd Class\nDim c As New "
     "Counter(5)\nc.Add\nc.Add(4)\nPrint c.count\nPrint c.Twice\nc.count = 1\nc.Names.Append \"x\"\nPrint "
     "c.Names(0)\nDim other As New Counter\nPrint other.count\nPrint other.Names.Ubound\n",
     "20\n40\nx\n10\n-1\n"},
    {"ComputedProperties",
     "Class Box\nPrivate width As Integer = 3\nProperty Area As Integer\nGet\nReturn width * width\nEnd "
     "Get\nSet\nwidth = Sqrt(value)\nEnd Set\nEnd Property\nEnd Class\nDim b As New Box\nPrint "
     "b.Area\nb.Area = 16\nPrint b.Area\n",
     "9\n16\n"},
    {"SharedMembers",
     "Class Maker\nShared Dim made As Integer\nConst kMost = 3\nShared Function Make() As Maker\nmade = made "
     "+ 1\nReturn New Maker\nEnd Function\nEnd Class\nDim m As Maker = Maker.Make\nm = Maker.Make()\nPrint "
     "Maker.made\nPrint Maker.kMost\nPrint m.kMost\n",
     "2\n3\n3\n"},
    {"AClassThatInheritsReplacesMethods",
     "Class Animal\nFunction Sound() As String\nReturn \"?\"\nEnd Function\nFunction Say() As String\nReturn "
     "\"says \" + Sound\nEnd Function\nEnd Class\n"
     "Class Dog Inherits Animal\nFunction Sound() As String\nReturn \"woof\" + Super.Sound\nEnd "
     "Function\nEnd Class\nDim a As Animal = New Dog\nPrint a.Say\nPrint a IsA Dog\nPrint Dog(a).Sound\nDim "
     "b As New Animal\nPrint b.Say\nPrint b IsA Dog\n",
     "says woof?\nTrue\nwoof?\nsays ?\nFalse\n"},
    {"PrivateMembersAreForTheirClassAlone",
     "Class A\nPrivate Dim n As Integer = 1\nPrivate Function F() As String\nReturn \"a\"\nEnd "
     "Function\nFunction Both() As String\nReturn F + Str(n)\nEnd Function\nEnd Class\n"
     "Class B Inherits A\nFunction F() As String\nReturn \"b\"\nEnd Function\nFunction N() As "
     "Integer\nReturn 2\nEnd Function\nEnd Class\n"
     "Dim b1 As New B\nPrint b1.Both + b1.F + Str(b1.N)\n",
     "a1b2\n"},
    {"ConstructorsAreInherited",
     "Class A\nDim n As Integer\nSub Constructor(n0 As Integer)\nn = n0\nEnd Sub\nEnd Class\nClass B "
     "Inherits A\nEnd Class\nClass C Inherits A\nSub Constructor()\nSuper.Constructor(8)\nEnd Sub\nEnd "
     "Class\nDim b1 As New B(7)\nPrint b1.n\nDim c1 As New C\nPrint c1.n\n",
     "7\n8\n"},
    {"ObjectsEndWithTheirLastReference",
     "Class Noisy\nDim name As String\nSub Constructor(n As String)\nname = n\nEnd Sub\nSub "
     "Destructor()\nPrint \"end of \" + name\nEnd Sub\nEnd Class\n"
     "Sub Use()\nDim a As New Noisy(\"a\")\nDim b As Noisy = a\na = Nil\nPrint \"still\"\nEnd Sub\nUse\nDim "
     "g As New Noisy(\"g\")\ng = New Noisy(\"h\")\nFor i As Integer = 1 To 2\nDim x As New "
     "Noisy(Str(i))\nNext\nPrint New Noisy(\"t\").name\nPrint \"last line\"\n",
     "still\nend of a\nend of g\nend of 1\nend of 2\nend of t\nt\nlast line\nend of h\n"},
    {"DestructorsOfInheritedClassesComeAfter",
     "Class A\nSub Destructor()\nPrint \"A\"\nEnd Sub\nEnd Class\nClass B Inherits A\nSub "
     "Destructor()\nPrint \"B\"\nEnd Sub\nEnd Class\nDim b1 As New B\nb1 = Nil\n",
     "B\nA\n"},
    {"AnObjectThatItsDestructorKeepsStays",
     "Dim kept As A\nClass A\nDim n As Integer = 4\nSub Destructor()\nPrint \"ends\"\nkept = Me\nEnd "
     "Sub\nEnd Class\nDim a1 As New A\na1 = Nil\nPrint kept.n\n",
     "ends\n4\nends\n"},
    {"WhatADestructorRaisesComesOutBehindTheStatement",
     "Class A\nSub Destructor()\nRaise New RuntimeException(\"d\")\nEnd Sub\nEnd Class\nDim a1 As New "
     "A\nTry\na1 = Nil\nCatch e\nPrint e.Message\nEnd Try\n",
     "d\n"},
    {"CirclesEndWithTheProgramAndSilently",
     "Class Node\nDim other As Node\nDim all() As Variant\nDim d As Dictionary\nSub Destructor()\nPrint "
     "\"never\"\nEnd Sub\nEnd Class\nDim a As New Node\nDim b As New Node\na.other = b\nb.other = "
     "a\na.all.Append a\nb.d = New Dictionary\nb.d.Value(1) = b\n",
     ""},
    {"ALongChainEndsWithoutAnOverflow",
     "Class Node\nDim tail As Node\nEnd Class\nDim head As Node\nFor i As Integer = 1 To 100000\nDim n As "
     "New Node\nn.tail = head\nhead = n\nNext\nhead = Nil\nPrint \"done\"\n",
     "done\n"},
};
INSTANTIATE_TEST_SUITE_P(Classes, Language, testing::ValuesIn(kClasses), testing::PrintToStringParamName());

class FilesOfPrograms : public fake::HostTest {};

TEST_F(FilesOfPrograms, TellOfFiles) {
  const ScratchFolder scratch;
  scratch.file("folder/b.txt", "12345");
  scratch.folder("folder/a");
  standin::host::Surroundings surroundings;
  surroundings.arguments = {scratch.at("folder")};
  EXPECT_EQ(
      outputOf(
          "Dim f As FolderItem = GetFolderItem(args(0))\nPrint f.Name\nPrint f.NativePath = args(0)\nPrint "
          "f.Exists\nPrint f.Directory\n"
          "Print f.Count\nPrint f.Item(1).Name\nPrint f.Item(2).Length\nDim b As FolderItem = "
          "f.Child(\"b.txt\")\nPrint b.Length\nPrint b.Directory\n"
          "Print b.Parent.NativePath = f.NativePath\nPrint b.ModificationDate.Year > 2020\nPrint "
          "f.Child(\"none\").Exists\n"
          "Print f.Child(\"none\").ModificationDate Is Nil\nPrint f.Child(\"none\").Length\nPrint f.Length\n"
          "Dim c As New FolderItem(args(0) + \"/b.txt\")\nPrint c.Exists\nPrint GetFolderItem(\"/\").Parent "
          "Is Nil\nPrint GetFolderItem(\"\") Is Nil\n"
          "Print GetFolderItem(\"x\").Parent.Exists\nPrint f.Item(3).Name\n",
          surroundings),
      "folder\nTrue\nTrue\nTrue\n2\na\n5\n5\nFalse\nTrue\nTrue\nFalse\nTrue\n0\n0\nTrue\nTrue\nTrue\nTrue\n"
      "OutOfBoundsException: no item 3; there are 2\n  the program:23\n");
}

}  // namespace
