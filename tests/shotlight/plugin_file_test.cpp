// Files that are no plug-in: each is named, with what is wrong and what to do.
#include <elf.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

std::string contentOf(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

class PluginFile : public testing::Test {
 protected:
  Result with(const std::string& plugin) {
    return find({"kMDItemFSName == \"*\"", "--in", scratch_.path(), "--plugin", plugin});
  }

  void expectRefused(const std::string& plugin, const std::string& why) {
    expectError(with(plugin), "the plug-in '" + plugin + "': " + why);
  }

  // For what the loaders say in words of their own: the file, what is wrong, and what a plug-in is.
  void expectRefusedByLoader(const std::string& plugin, const std::string& why) {
    const Result result = with(plugin);
    EXPECT_EQ(result.status, 2) << result;
    EXPECT_EQ(result.output, "");
    const auto said = lines(result.errors);
    ASSERT_EQ(said.size(), 2u) << result;
    EXPECT_TRUE(startsWith(said[0], "shotlight: the plug-in " + plugin + ": "));
    EXPECT_PRED_FORMAT2(testing::IsSubstring, why, said[0]);
    EXPECT_EQ(said[1], "a plug-in is a Mach-O dylib for i386, or an ELF library for 32-bit Linux");
  }

  // The ELF library with one byte of its header changed.
  std::string changedELF(const std::string& name, size_t index, unsigned char value) {
    std::string content = contentOf(files.elf);
    content.at(index) = static_cast<char>(value);
    return scratch_.file(name, content);
  }

  ScratchFolder scratch_;
};

TEST_F(PluginFile, ThatIsMissing) {
  expectRefused(scratch_.at("none"), "No such file or directory; name a plug-in that exists");
  expectRefused(scratch_.file("file") + "/none", "Not a directory; name a plug-in that exists");
}

TEST_F(PluginFile, ThatIsAFolder) {
  expectRefused(scratch_.path(), "a folder; name the file of the plug-in");
}

TEST_F(PluginFile, ThatIsAPipeOrADevice) {
  const std::string pipe = scratch_.at("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  expectRefused(pipe, "not a plain file; name the file of the plug-in");
  expectRefused("/dev/zero", "not a plain file; name the file of the plug-in");
}

TEST_F(PluginFile, ThatIsEmpty) {
  expectRefused(scratch_.file("empty"), "an empty file; build or copy the file again");
}

TEST_F(PluginFile, ThatIsFarTooLarge) {
  const std::string plugin = scratch_.file("large");
  ASSERT_EQ(truncate(plugin.c_str(), off_t{3} << 30), 0);
  expectRefused(plugin, "3221225472 bytes, more than any plug-in has; name the plug-in's file");
}

TEST_F(PluginFile, ThatMayNotBeRead) {
  const std::string plugin = scratch_.file("secret", "x");
  ASSERT_EQ(chmod(plugin.c_str(), 0), 0);
  expectError(run({.arguments = {"find", "kMDItemFSSize == 1", "--plugin", plugin}, .unprivileged = true}),
              "the plug-in '" + plugin + "': Permission denied; name a file that you may read");
}

TEST_F(PluginFile, ThatIsText) {
  expectRefusedByLoader(scratch_.file("short.txt", "hi\n"), "");
  expectRefusedByLoader(scratch_.file("long.txt", std::string(10000, 'x')), "not a 32-bit Mach-O file");
}

TEST_F(PluginFile, ThatIsADylibCutShort) {
  const std::string whole = contentOf(files.dylib);
  ASSERT_GT(whole.size(), 1000u);
  for (const size_t size :
       {size_t{1}, size_t{27}, size_t{28}, size_t{500}, whole.size() / 2, whole.size() - 1}) {
    SCOPED_TRACE(size);
    expectRefusedByLoader(scratch_.file("cut.dylib", whole.substr(0, size)), "truncated");
  }
}

TEST_F(PluginFile, ThatIsAnELFLibraryCutShort) {
  const std::string whole = contentOf(files.elf);
  for (const size_t size : {4, 51, 52, 100, 500, 4096, 20000}) {
    SCOPED_TRACE(size);
    const std::string cut = scratch_.file("cut.so", whole.substr(0, size));
    const Result result = with(cut);
    EXPECT_EQ(result.status, 2) << result;
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(startsWith(result.errors, "shotlight: the plug-in '" + cut + "': cut short: "));
    EXPECT_TRUE(matches(result.errors, "[^\n]* [0-9]+ bytes are wanted of " + std::to_string(size) +
                                           "; build or copy the file again\n"));
  }
}

TEST_F(PluginFile, ThatIsA64BitELFFile) {
  expectRefused(changedELF("64.so", EI_CLASS, ELFCLASS64),
                "a 64-bit ELF file; build the plug-in for 32 bits (-m32)");
}

TEST_F(PluginFile, ThatIsAnELFFileOfAnotherKind) {
  expectRefused(changedELF("arm.so", offsetof(Elf32_Ehdr, e_machine), EM_ARM),
                "an ELF file for another machine; build the plug-in for i386");
  expectRefused(changedELF("object.o", offsetof(Elf32_Ehdr, e_type), ET_REL),
                "an ELF file, but no library; link the plug-in with -shared");
  expectRefused(changedELF("damaged.so", offsetof(Elf32_Ehdr, e_phentsize), 7),
                "an ELF file with a damaged header; build or copy the file again");
}

TEST_F(PluginFile, ThatIsAnELFProgram) {
  // This one: it may lie anywhere, as a library.
  const std::string testProgram = std::filesystem::read_symlink("/proc/self/exe");
  expectRefusedByLoader(testProgram, "");
}

TEST_F(PluginFile, ThatIsALibraryButNoPlugin) {
  expectRefusedByLoader(files.otherLibrary, "exports no REALPluginMain, so it is not a plug-in");
}

TEST_F(PluginFile, ThatRegistersNothing) {
  expectError(with(files.emptyPlugin),
              "the plug-in registered no classes; name the right file with --plugin");
}

TEST_F(PluginFile, MayBeNamedFromTheCurrentFolder) {
  for (const auto& [plugin, name] :
       {std::pair{files.dylib, "a plugin.dylib"}, std::pair{files.elf, "a plugin.so"}}) {
    scratch_.file(name, contentOf(plugin));
    const Result result = run({.arguments = {"find", std::string("kMDItemFSName == \"") + name + '"',
                                             "--plugin", name, "--show", "kMDItemFSName"},
                               .folder = scratch_.path()});
    EXPECT_EQ(result.status, 0) << result;
    EXPECT_EQ(result.output, std::string(name) + "\n");
  }
}

TEST_F(PluginFile, IsLeftAloneAndNothingIsLeftBehind) {
  const std::string temporary = scratch_.folder("temporary");
  const std::string plugin = scratch_.file("copy.so", contentOf(files.elf));
  const Result result =
      run({.arguments = {"find", "kMDItemFSName == \"copy.so\"", "--in", scratch_.path(), "--plugin", plugin},
           .environment = {"TMPDIR=" + temporary}});
  EXPECT_EQ(result.status, 0) << result;
  EXPECT_TRUE(std::filesystem::is_empty(temporary));
  EXPECT_EQ(contentOf(plugin), contentOf(files.elf));
}

}  // namespace
