// What programs do, without a plug-in.
#include <unistd.h>

#include "standin/host/host.h"
#include "tests/standin/host/fake_plugin.h"
#include "tests/standin/host/interpreter/run_program.h"
#include "tests/support/scratch_folder.h"

namespace {

class Language : public fake::HostTest, public testing::WithParamInterface<Case> {};

TEST_P(Language, IsAsItsProgramsShow) {
  EXPECT_EQ(outputOf(GetParam().program), GetParam().output) << GetParam().program;
}

INSTANTIATE_TEST_SUITE_P(Expressions, Language, testing::ValuesIn(casesIn("expressions")),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(Statements, Language, testing::ValuesIn(casesIn("statements")),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(Texts, Language, testing::ValuesIn(casesIn("texts")),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(Values, Language, testing::ValuesIn(casesIn("values")),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(Exceptions, Language, testing::ValuesIn(casesIn("exceptions")),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(Classes, Language, testing::ValuesIn(casesIn("classes")),
                         testing::PrintToStringParamName());

class FilesOfPrograms : public fake::HostTest {};

TEST_F(FilesOfPrograms, TellOfFiles) {
  const ScratchFolder scratch;
  scratch.file("folder/b.txt", "12345");
  scratch.folder("folder/a");
  standin::host::Surroundings surroundings;
  surroundings.arguments = {scratch.at("folder")};
  EXPECT_EQ(outputOf(R"(Dim f As FolderItem = GetFolderItem(args(0))
Print f.Name
Print f.NativePath = args(0)
Print f.Exists And f.Directory
Dim b As FolderItem = f.Child("b.txt")
Print b.Length
Print b.Directory
Print b.Parent.NativePath = f.NativePath
Print f.Child("none").Exists
Print f.Child("none").Length + f.Length
Print GetFolderItem("/").Parent Is Nil And GetFolderItem("") Is Nil
Print GetFolderItem("x").Parent.Exists
)",
                     surroundings),
            R"(folder
True
True
5
False
True
False
0
True
True
)");
}

TEST_F(FilesOfPrograms, HaveAbsolutePathsWithoutDotsAndLinks) {
  const ScratchFolder scratch;
  scratch.file("file", "");
  ASSERT_EQ(::symlink(scratch.folder("folder").c_str(), scratch.at("link").c_str()), 0);
  standin::host::Surroundings surroundings;
  surroundings.arguments = {scratch.path()};
  EXPECT_EQ(outputOf(R"(Dim current As String = GetFolderItem(".").NativePath
Print current.Left(1) + current.Right(1) <> "/."
Print GetFolderItem("./a/.//b/").NativePath = current + "/a/b"
Print GetFolderItem("../nothing").NativePath = current + "/../nothing"
Print GetFolderItem(args(0) + "/.").NativePath = args(0)
Print GetFolderItem(args(0) + "/link/../file").NativePath = args(0) + "/file"
Print GetFolderItem(args(0) + "/link").NativePath = args(0) + "/folder"
Print GetFolderItem("//").NativePath + GetFolderItem("/./").NativePath
)",
                     surroundings),
            "True\nTrue\nTrue\nTrue\nTrue\nTrue\n//\n");
}

}  // namespace
