// Programs of the host language: what the command does around them. What they may say is tested with the
// host.
#include <signal.h>

#include "tests/shotlight/run.h"

namespace {

class Program : public testing::Test {
 protected:
  std::vector<std::string> command(const std::string& text,
                                   const std::vector<std::string>& arguments = {}) const {
    std::vector<std::string> all = {"program", scratch_.file("a program.txt", text)};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
  }

  Result runs(const std::string& text, const std::vector<std::string>& arguments = {}) const {
    return run({.arguments = command(text, arguments)});
  }

  std::string file() const { return scratch_.at("a program.txt"); }

  const ScratchFolder scratch_;
};

TEST_F(Program, PrintsAndEndsWithStatus0) {
  const Result result = runs("Print \"one\"\r\nPrint 2\r\n");
  EXPECT_EQ(result.status, 0) << result;
  EXPECT_EQ(result.output, "one\n2\n");
  EXPECT_EQ(result.errors, "");
}

TEST_F(Program, WithNothingInItDoesNothing) {
  const Result result = runs("");
  EXPECT_EQ(result.status, 0) << result;
  EXPECT_EQ(result.output + result.errors, "");
}

TEST_F(Program, EndsWithTheStatusOfQuit) {
  const Result result = runs("Print 1\nQuit 7\nPrint 2\n");
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(result.output, "1\n");
}

TEST_F(Program, HasTheArgumentsBehindItsName) {
  auto arguments = command("Print Join(args, \"|\")\n", {"a b", "--help", "--plugin", "--", "\xC3\xA9"});
  arguments.insert(arguments.begin() + 1, "--");
  EXPECT_EQ(run({.arguments = arguments}).output, "a b|--help|--plugin|--|\xC3\xA9\n");
  EXPECT_EQ(runs("Print args.Ubound\n").output, "-1\n");
}

TEST_F(Program, SearchesThroughEitherPlugIn) {
  scratch_.file("folder/a.txt", "abc");
  scratch_.file("folder/b.pdf");
  const std::string text =
      "Dim folders() As FolderItem = Array(GetFolderItem(args(0)))\nDim q As New MDQueryZNK(\"kMDItemFSName "
      "== '*.txt'\")\n"
      "q.SetSearchScope folders, Nil\nPrint q.Execute(MDQueryZNK.kMDQuerySynchronous)\nFor Each it As "
      "MDItemZNK In q.Results\n"
      "Print it.FSName + Str(it.FSSize) + it.GetAttribute(MDItemZNK.kMDItemFSName)\nPrint "
      "it.GetAttributes(Array(\"kMDItemFSSize\")).Value(\"kMDItemFSSize\")\nNext\n";
  for (const std::string& plugin : {files.dylib, files.elf}) {
    auto arguments = command(text, {scratch_.at("folder")});
    arguments.insert(arguments.begin() + 1, {"--plugin", plugin, "--no-store"});
    const Result result = run({.arguments = arguments});
    EXPECT_EQ(result.output, "True\na.txt3a.txt\n3\n") << result;
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
  }
}

TEST_F(Program, HasTheCallsOfThePlugInCheckedBeforeItRuns) {
  const Result result = runs("Print 1\nDim q As New MDQueryZNK(\"x\")\n  q.Execut 1\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "shotlight: " + file() +
                               ":3:5: MDQueryZNK has no member Execut; did you mean Execute?\n"
                               "    q.Execut 1\n"
                               "      ^\n");
}

TEST_F(Program, MarksThePlaceAlsoBehindWideCharacters) {
  const Result result = runs("Print \"東京\" ? 1\n");
  EXPECT_EQ(result.errors, "shotlight: " + file() +
                               ":1:12: no '?' has a meaning here\n  Print \"東京\" ? 1\n" +
                               std::string(2 + 13, ' ') + "^\n");
}

TEST_F(Program, ShowsTheLineWhateverLinesEndWith) {
  for (const char* const end : {"\n", "\r", "\r\n"}) {
    const std::string text = std::string("Print 1") + end + end + "Prnt 2" + end + "Print 3";
    EXPECT_EQ(runs(text).errors,
              "shotlight: " + file() +
                  ":3:1: there is no variable, method or class Prnt; did you mean Print?\n  Prnt 2\n  ^\n");
  }
}

TEST_F(Program, ShowsTheEndsOfADeepStack) {
  const std::vector<std::string> told = lines(runs("Sub Deeper()\n  Deeper\nEnd Sub\nDeeper\n").errors);
  ASSERT_EQ(told.size(), 1U + 50 + 1 + 1);
  EXPECT_TRUE(told[0].find("StackOverflowException") != std::string::npos) << told[0];
  EXPECT_EQ(told[50], "  in Deeper, " + file() + ":2: Deeper");
  EXPECT_TRUE(matches(told[51], "  \\.\\.\\. [0-9]+ more"));
  EXPECT_EQ(told[52], "  in the program, " + file() + ":4: Deeper");
}

TEST_F(Program, TellsTheExceptionThatNobodyCatches) {
  const Result result =
      runs("Sub Use(q As MDQueryZNK)\n  Print q.ResultCount\nEnd Sub\nPrint 1\nUse New MDQueryZNK(\"==\")\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "1\n");
  EXPECT_EQ(result.errors,
            "shotlight: " + file() + ": NilObjectException: MDQuery Reference is nil\n  in Use, " + file() +
                ":2: Print q.ResultCount\n  in the program, " + file() + ":5: Use New MDQueryZNK(\"==\")\n");
}

TEST_F(Program, TellsTheExceptionOfAnEventHandler) {
  scratch_.file("folder/a.txt");
  const Result result = runs(
      "Class Search\nInherits MDQueryZNK\nEvent Finish()\nRaise New RuntimeException(\"in the handler\", "
      "4)\nEnd Event\nEnd Class\n"
      "Dim s As New Search(\"kMDItemFSName == '*'\")\ns.SetSearchScope Array(GetFolderItem(args(0))), Nil\n"
      "Call s.Execute(0)\nTry\nDo\nApp.DoEvents 100\nLoop\nCatch\nPrint \"caught\"\nEnd Try\n",
      {scratch_.at("folder")});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "shotlight: " + file() + ": RuntimeException: in the handler (error 4)\n  in Search.Finish, " +
                file() +
                ":4: Raise New RuntimeException(\"in the handler\", 4)\n  in an event\n  in the program, " +
                file() + ":12: App.DoEvents 100\n");
}

// It would wait for more than three weeks.
std::string waitingWithHandler(const std::string& statement) {
  return "Class Search\nInherits MDQueryZNK\nEvent Finish()\n" + statement +
         "\nEnd Event\nEnd Class\nDim s As New Search(\"kMDItemFSName == '*'\")\n"
         "s.SetSearchScope Array(GetFolderItem(\"/dev/null\")), Nil\nCall s.Execute(0)\nApp.DoEvents "
         "2000000000\n";
}

TEST_F(Program, EndsAtOnceWhenAHandlerQuits) {
  const Result result = runs(waitingWithHandler("Quit 4"));
  EXPECT_EQ(result.status, 4) << result;
}

TEST_F(Program, EndsAtOnceWhenAHandlerFails) {
  const Result result = runs(waitingWithHandler("Raise New RuntimeException(\"here\")"));
  EXPECT_EQ(result.status, 2) << result;
}

TEST_F(Program, FollowsAQueryLive) {
  scratch_.file("folder/a.txt");
  const std::string text =
      "Class Live\nInherits MDQueryZNK\nDim count As Integer\nEvent Finish()\nPrint \"gathered \" + "
      "Str(ResultCount)\nEnd Event\n"
      "Event Update(AddedItems() As MDItemZNK, ChangedItems() As MDItemZNK, RemovedItems() As MDItemZNK)\n"
      "For Each it As MDItemZNK In AddedItems\nPrint \"+ \" + it.FSName\ncount = count + 1\nNext\nEnd "
      "Event\nEnd Class\n"
      "Dim q As New Live(\"kMDItemFSName == '*.txt'\")\n"
      "q.SetSearchScope Array(GetFolderItem(args(0))), Nil\nDim b As New "
      "MDQueryBatchingParamsZNK\nb.firstMaxMS = 20\nb.updateMaxMS = 20\n"
      "q.BatchingParameters = b\nCall q.Execute(MDQueryZNK.kMDQueryWantsUpdates)\nWhile q.count = "
      "0\nApp.DoEvents 20\nWend\nq.Stop\n";
  Running program({.arguments = command(text, {scratch_.at("folder")})});
  ASSERT_TRUE(program.waitForLine("gathered 1"));
  scratch_.file("folder/b.txt");
  const Result result = program.finish();
  EXPECT_EQ(result.output, "gathered 1\n+ b.txt\n") << result;
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
}

TEST_F(Program, ThatHoldsThePlugInsObjectsInCirclesBlamesNobody) {
  const Result result = runs(
      "Class Own\nInherits MDQueryZNK\nDim other As Own\nEnd Class\nDim a As New Own(\"kMDItemFSName == "
      "'x'\")\na.other = a\n"
      "Dim b As New Own(\"kMDItemFSName == 'y'\")\na.Tag = b\nb.Tag = a\n");
  EXPECT_EQ(result.status, 0) << result;
  EXPECT_EQ(result.errors, "");
}

// The plug-in leaves the arrays that it makes before it finds out that it has no reference.
TEST_F(Program, ThatCatchesWhatMembersWithArraysRaiseBlamesNobody) {
  const Result result = runs(R"(Class Item Inherits MDItemZNK
Sub Constructor()
End Sub
End Class
Class Query Inherits MDQueryZNK
Sub Constructor()
End Sub
End Class
Dim q As New Query
Dim none() As String
For i As Integer = 1 To 6
Dim it As New Item
it.Tag = none
Try
Select Case i
Case 1
Print it.AttributeNames.Ubound
Case 2
Print it.AttributeStringArray("kMDItemAuthors").Ubound
Case 3
Print q.Results.Ubound
Case 4
Print q.ValuesOfAttribute("kMDItemKind").Ubound
Case 5
Print q.ValueListAttributes.Ubound
Case 6
Print q.SortingAttributes.Ubound
End Select
Catch e As NilObjectException
Print e.Message
End Try
Next
)");
  const std::string item = "MDItem Reference is nil\n", query = "MDQuery Reference is nil\n";
  EXPECT_EQ(result.output, item + item + query + query + query + query);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
}

class InterruptedProgram : public Program {
 protected:
  void expectEnd(const std::string& text) {
    Running program({.arguments = command("App.DoEvents\nPrint 1\nApp.DoEvents\n" + text)});
    ASSERT_TRUE(program.waitForLine("1"));
    program.send(SIGINT);
    const Result result = program.finish();
    EXPECT_EQ(result.status, 128 + SIGINT) << result;
    EXPECT_EQ(result.errors, "shotlight: interrupted\n");
  }
};

TEST_F(InterruptedProgram, EndsInTheMiddleOfALoop) {
  expectEnd("Try\nDo\nLoop\nCatch\nPrint \"caught\"\nFinally\nPrint \"finally\"\nEnd Try\n");
}

TEST_F(InterruptedProgram, EndsWhileItWaitsForEvents) {
  expectEnd("Do\nApp.DoEvents 100000\nLoop\n");
}

TEST_F(Program, IsNamedByErrors) {
  expectError(run({.arguments = {"program"}}),
              "program needs a file with a program in it; see shotlight program --help");
  expectError(run({.arguments = {"program", "--nonsense", "x"}}),
              "unknown option '--nonsense'; see shotlight program --help");
  expectError(run({.arguments = {"program", "/there/is/none"}}),
              "program '/there/is/none': No such file or directory; name a file with a program in it");
  expectError(run({.arguments = {"program", scratch_.path()}}),
              "program '" + scratch_.path() + "': Is a directory; name a file with a program in it");
}

}  // namespace
