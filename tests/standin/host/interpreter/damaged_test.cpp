// Programs that nobody would write: whatever is in them, they end, and nothing is left of them.
#include <cctype>
#include <random>

#include "tests/standin/host/fake_plugin.h"
#include "tests/standin/host/interpreter/run_program.h"
#include "tests/support/sanitizers.h"
#include "tests/support/tier.h"

namespace {

const char kDeclarations[] = R"(Dim a As Integer = 1
Dim s As String = "x"
Dim t As New ThingZNK
Dim v As Variant
Dim list() As Variant
Dim d As New Dictionary
Dim o As New Own
Sub Note(sender As ThingZNK)
  t = Nil
  list.Append sender
End Sub
Sub Recurse()
  a = a + 1
  o.other.Again t
  Recurse
End Sub
Class Own
  Inherits ThingZNK
  Dim other As Own
  Sub Destructor()
    v = Me
    list.Append Me
    a = a \ (a - 3)
  End Sub
  Sub Again(sender As ThingZNK)
    other = Own(sender)
  End Sub
  Event Done()
    other = Nil
    o = Nil
    Raise New RuntimeException("done")
  End Event
End Class
)";

// In the place of % comes a block of others.
const char* const kStatements[] = {
    "t = o",
    "t = New ThingZNK",
    "o = New Own",
    "list.Append t",
    "list.Append v",
    "list.Append o",
    "list.Append list",
    "d.Value(a) = list",
    "d.Value(v) = d",
    "d.Value(t) = o",
    "v = d",
    "v = list",
    "v = t",
    "v = s",
    "v = a",
    "t.Tag = list",
    "t.Tag = t",
    "o.Tag = o",
    "o.other = o",
    "o.other = New Own",
    "o.other.other = o",
    "list = Array(v, t)",
    "Print a / 0",
    "Print a \\ (a - 1)",
    "a = v",
    "s = v",
    "t = v",
    "o = Own(t)",
    "v = t.Echo(v)",
    "t.Fire 0, 3",
    "t.Fire 1, 0",
    "o.Fire 1, 0",
    "AddHandler t.Done, AddressOf Note",
    "AddHandler t.Done, AddressOf o.Again",
    "RemoveHandler t.Done, AddressOf Note",
    "Print t.Fail",
    "a = a + 1",
    "a = a * 3",
    "Raise New RuntimeException(s)",
    "Return",
    "Quit a",
    "Recurse",
    "list.Remove 0",
    "Redim list(a)",
    "d.Clear",
    "d.Remove a",
    "Print Mid(s, a, 2) + s.Left(1)",
    "t = Nil",
    "o = Nil",
    "v = Nil",
    "Print Format(a, \"#,0.00;(0)\")",
    "s = s + s",
    "Print t.Names(a)",
    "Print t.Put(s)",
    "list(0) = list",
    "v = v + v",
    "Print v = list(0)",
    "list.Insert 0, Nil",
    "list.Remove list.Ubound",
    "For i As Integer = 0 To 3\n%\nNext",
    "While a < 5\na = a + 1\n%\nWend",
    "If a > 2 Then\n%\nElse\n%\nEnd If",
    "Do\n%\nLoop Until a > 9",
    "Try\n%\nCatch e As NilObjectException\n%\nCatch f\n%\nFinally\n%\nEnd Try",
    "Select Case a\nCase 1 To 3\n%\nEnd Select",
    "For Each x As Variant In list\n%\nNext",
    "Do\n%\nExit\nLoop",
    "Try\n%\nFinally\n%\nEnd Try"};

class Damaged : public fake::PluginTest {};

std::string block(std::mt19937& random, int depth) {
  std::string text;
  for (size_t i = random() % 8; i > 0; --i) {
    std::string statement = kStatements[random() % std::size(kStatements)];
    for (size_t at; (at = statement.find("%\n")) != std::string::npos;)
      statement.replace(at, 2, depth < 3 ? block(random, depth + 1) : "");
    text += statement + '\n';
  }
  return text;
}

void spoil(std::string& program, std::mt19937& random) {
  const size_t at = random() % program.size();
  switch (random() % 3) {
    case 0:
      program[at] = static_cast<char>(random() % 256);
      break;
    case 1:
      program.erase(at, random() % 6);
      break;
    default:
      program.insert(at, program.substr(random() % program.size(), random() % 10));
  }
}

TEST_F(Damaged, ProgramsEndAndLeaveNothing) {
  std::mt19937 random(20140131);
  const int count = isLongTier() ? 20000 : underAddressSanitizer() ? 150 : 600;
  int ran = 0;
  for (int i = 0; i < count; ++i) {
    std::string program = kDeclarations + block(random, 0) + block(random, 0);
    for (int j = i % 4; j > 1; --j) spoil(program, random);
    int questions = 0;
    standin::host::Surroundings surroundings;
    surroundings.mayGoOn = [&questions] { return ++questions < 3; };
    const std::string output = outputOf(program, surroundings);
    ran += !std::isdigit(static_cast<unsigned char>(output[0]));
    ASSERT_EQ(standin::ledgerLine("host object"), 0) << program << output;
    ASSERT_EQ(standin::ledgerLine("host object lock"), 0) << program << output;
    ASSERT_EQ(standin::ledgerLine("host string"), 0) << program << output;
  }
  EXPECT_GT(ran, count / 3);
}

}  // namespace
