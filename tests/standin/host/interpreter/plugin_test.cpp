// Programs that use the classes of a plug-in.
#include "tests/standin/host/fake_plugin.h"
#include "tests/standin/host/interpreter/run_program.h"

namespace {

class WithPlugin : public fake::PluginTest, public testing::WithParamInterface<Row> {};

TEST_P(WithPlugin, DoesWhatTheRowSays) {
  EXPECT_EQ(outputOf(GetParam().program), GetParam().output);
}

const Row kRows[] = {
    {"Methods",
     "Dim t As New ThingZNK(\"abc\")\nPrint t.Put(\"x\")\nPrint t.Put(5)\nPrint t.Limit\nPrint t.Limit(3)\n"
     "Print t.Half(1, 5.0)\nPrint t.Wide(5000000000)\nPrint t.Truth(True)\nPrint ThingZNK.Twice(4)\n"
     "Print ThingZNK.Key\nPrint ThingZNK.kText\nPrint t.kHalf\nPrint Length(\"four\")\n",
     "text x\nnumber 5\n-1\n3\n1102.5\n5000000001\nFalse\n8\nkKey\na \"b\"\n0.5\n4\n"},
    {"TheMethodIsThatOfTheTypes",
     "Dim t As New ThingZNK\nPrint t.Pick(1)\nPrint t.Pick(1.5)\nDim v As Variant = 1\nPrint "
     "t.Pick(v)\nPrint t.Put(t)\n",
     "2\n3\n2\nthing 0\n"},
    {"Properties",
     "Dim t As New ThingZNK\nt.Level = 50\nPrint t.Level\nt.Tag = \"mine\"\nPrint t.Tag\nPrint "
     "t.Handle\nPrint t.Label = \"\"\n"
     "Dim other As New ThingZNK(\"m\")\nt.Mode = other\nPrint t.Mode Is t\nPrint t.Names(1)\nPrint "
     "t.Names.Ubound\n",
     "43\nmine\n0\nTrue\nFalse\nname 1\n2\n"},
    {"VariantsComeAsWhatIsInThem",
     "Dim t As New ThingZNK\nPrint t.Echo(5) + 1\nPrint t.Echo(\"a\") + \"b\"\nPrint "
     "t.Echo(Nil).IsNull\nPrint t.Echo(t) = t\n",
     "6\nab\nTrue\nTrue\n"},
    {"ExceptionsOfThePlugInAreCaught",
     "Dim t As New ThingZNK\nTry\nPrint t.Fail\nCatch e As RuntimeException\nPrint e.Message + "
     "Str(e.ErrorNumber)\n"
     "Print e IsA NilObjectException\nEnd Try\nPrint t.Fail\n",
     "Thing is nil7\nTrue\nNilObjectException: Thing is nil\n  the program:8\n"},
    {"AnEventOfAClassOfTheProgram",
     "Class Watcher\nInherits ThingZNK\nDim seen As Integer\nEvent Changed(Items() As ThingZNK, count As "
     "Integer)\n"
     "seen = seen + count + Items.Ubound * 100\nEnd Event\nEvent Done()\nPrint \"done after \" + "
     "Str(seen)\nEnd Event\nEnd Class\n"
     "Dim w As New Watcher(\"x\")\nw.Fire 0, 2\nw.Fire(0, 3)\nw.Fire 1, 0\nDim t As ThingZNK = w\nPrint t "
     "IsA Watcher\nPrint t.Handle = w.Handle\nPrint Watcher(t).seen\n"
     "Print w.Put(w)\n",
     "done after 305\nTrue\nTrue\n305\nthing 1\n"},
    {"AHandlerThatIsAdded",
     "Dim n As Integer\nSub Note(sender As ThingZNK, Items() As ThingZNK, count As Integer)\nn = n + "
     "count\nsender.Level = 5\nEnd Sub\n"
     "Class Listener\nDim name As String = \"L\"\nSub Done(sender As ThingZNK)\nPrint name + \" done\"\nEnd "
     "Sub\nSub Destructor()\nPrint \"gone\"\nEnd Sub\nEnd Class\n"
     "Dim t As New ThingZNK\nAddHandler t.Changed, AddressOf Note\nt.Fire 0, 4\nPrint n\nPrint t.Level\n"
     "Sub Listen(t As ThingZNK)\nDim l As New Listener\nAddHandler t.Done, AddressOf l.Done\nEnd Sub\nListen "
     "t\nt.Fire 1, 0\n"
     "Try\nAddHandler t.Changed, AddressOf Note\nCatch e\nPrint e.Message\nEnd Try\n"
     "RemoveHandler t.Changed, AddressOf Note\nt.Fire 0, 4\nPrint n\nt = Nil\nPrint \"end\"\n",
     "4\n-2\nL done\nChanged of this object has a handler already\n4\ngone\nend\n"},
    {"WhatAHandlerRaisesEndsTheProgram",
     "Sub Bad(sender As ThingZNK)\nDim d As Dictionary\nPrint d.Count\nEnd Sub\nDim t As New "
     "ThingZNK\nAddHandler t.Done, AddressOf Bad\n"
     "Try\nt.Fire 1, 0\nCatch\nPrint \"caught\"\nEnd Try\n",
     "NilObjectException: Count of an object that is Nil\n  Bad:3\n  an event:0\n  the program:8\n"},
    {"AHandlerMayQuit",
     "Sub Done(sender As ThingZNK)\nQuit 4\nEnd Sub\nDim t As New ThingZNK\nAddHandler t.Done, AddressOf "
     "Done\nt.Fire 1, 0\n"
     "Print \"no\"\n",
     "status 4\n"},
    {"AnObjectEndsWithItsLastReferenceAndItsPropertiesWithIt",
     "Class Holder\nInherits ThingZNK\nDim other As Holder\nDim name As String\nSub Destructor()\nPrint "
     "\"end of \" + name + Str(Handle <> 0)\nEnd Sub\nEnd Class\n"
     "Dim h As New Holder(\"a\")\nh.name = \"h\"\nh.other = New Holder(\"b\")\nh.other.name = \"other\"\nh = "
     "Nil\nPrint \"last\"\n",
     "end of hTrue\nend of otherTrue\nlast\n"},
    {"ConstructorsOfThePlugInAreCalledBySuper",
     "Class Own\nInherits ThingZNK\nSub Constructor(a As Integer, b As "
     "Integer)\nSuper.Constructor(\"x\")\nEnd Sub\nEnd Class\n"
     "Dim o As New Own(1, 2)\nPrint o.Handle <> 0\n",
     "True\n"},
    {"CirclesThroughThePlugInEndWithTheProgram",
     "Class Own\nInherits ThingZNK\nDim me1 As Own\nEvent Done()\nEnd Event\nEnd Class\nDim t As New "
     "ThingZNK\nt.Tag = t\nDim o As New Own\no.me1 = o\nDim p As New Own\np.Tag = o\no.Tag = p\n",
     ""},
    {"AReferenceOfThePlugInsIsNotWritten", "Dim t As New ThingZNK\nt.Handle = 5\n",
     "2:3: an Integer can't be assigned here\n"},
    {"AnEventMustHaveItsParameters",
     "Class Own\nInherits ThingZNK\nEvent Changed(count As Integer)\nEnd Event\nEnd Class\n",
     "3:1: expected Event Changed(Items As ThingZNK(), count As Integer)\n"},
    {"AHandlerMustHaveItsParameters",
     "Sub Note(count As Integer)\nEnd Sub\nDim t As New ThingZNK\nAddHandler t.Done, AddressOf Note\n",
     "4:30: expected a Sub of the program: Note(sender As ThingZNK)\n"},
    {"AMethodThatFitsNone", "Dim t As New ThingZNK\nPrint t.Limit(\"a\")\n",
     "2:9: Limit(String) fits none of: Limit(limit as integer = -1) as integer\n"},
};
INSTANTIATE_TEST_SUITE_P(Rows, WithPlugin, testing::ValuesIn(kRows), testing::PrintToStringParamName());

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

TEST_F(WhatIsForgotten, TwoProgramsOneAfterTheOtherMayHaveTheSameClasses) {
  const char* const program = "Class A\nInherits ThingZNK\nEnd Class\nDim a1 As New A\nPrint a1 IsA A\n";
  EXPECT_EQ(outputOf(program), "True\n");
  EXPECT_EQ(outputOf(program), "True\n");
}

}  // namespace
