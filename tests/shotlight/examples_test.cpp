// The programs of examples/programs: each prints what stands beside it, run on a copy of examples/library.
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "tests/shotlight/run.h"
#include "tests/support/sanitizers.h"

namespace {

namespace filesystem = std::filesystem;

std::string textOf(const filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// As cameras write it.
std::string dayOfLastMonth() {
  const std::time_t now = std::time(nullptr);
  std::tm day = *std::localtime(&now);
  day.tm_mon -= 1;
  day.tm_mday = 15;
  std::mktime(&day);
  char text[16];
  std::strftime(text, sizeof text, "%Y:%m:%d", &day);
  return text;
}

const char* const kNewFiles[] = {"new 1.txt", "new 2.txt", "new 3.txt"};  // for a program that waits for them

class Examples : public testing::Test {
 protected:
  Examples() {
    filesystem::copy(files.library, library_, filesystem::copy_options::recursive);
    takenLastMonth("Photos/Fog.heic", "2011:11:02");
    takenLastMonth("Photos/Gulls in a storm.jpg", "2011:10:18");
  }

  // The names of the files in the folder of programs that end so, without that end.
  std::set<std::string> namesWith(const std::string& extension) const {
    std::set<std::string> names;
    for (const auto& entry : filesystem::directory_iterator(programs_)) {
      if (entry.path().extension() == extension) names.insert(entry.path().stem());
    }
    return names;
  }

  void expectOutput(const std::string& name, const std::string& plugin) const {
    SCOPED_TRACE(name + " on " + plugin);
    Running program({.arguments = {"program", "--plugin", plugin, programs_ / (name + ".txt"), library_},
                     .environment = {"XDG_CACHE_HOME=" + scratch_.at("cache")}});
    const bool waits = program.waitForLine("Waiting for three text files");
    for (const char* const file : kNewFiles) {
      if (waits) scratch_.file(std::string("library/") + file);
    }
    const Result result = program.finish();
    EXPECT_EQ(result.output, textOf(programs_ / (name + ".expected")));
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
    for (const char* const file : kNewFiles) filesystem::remove(scratch_.at(std::string("library/") + file));
  }

  const filesystem::path programs_ = filesystem::path(files.library).parent_path() / "programs";

 private:
  void takenLastMonth(const std::string& photo, const std::string& day) const {
    const std::string file = library_ + '/' + photo;
    std::string bytes = textOf(file);
    size_t replaced = 0;
    for (size_t at = 0; (at = bytes.find(day, at)) != std::string::npos; ++replaced)
      bytes.replace(at, day.size(), dayOfLastMonth());
    EXPECT_GT(replaced, 0u) << photo;
    std::ofstream(file, std::ios::binary) << bytes;
  }

  const ScratchFolder scratch_;
  const std::string library_ = scratch_.at("library");
};

TEST_F(Examples, HaveWhatTheyPrintBesideThem) {
  EXPECT_EQ(namesWith(".txt"), namesWith(".expected"));
  EXPECT_FALSE(namesWith(".txt").empty());
}

TEST_F(Examples, AreListed) {
  std::set<std::string> listed;
  for (const std::string& line : lines(textOf(programs_ / "README"))) {
    if (line.starts_with("  ")) listed.insert(line.substr(2, line.find(' ', 2) - 2));
  }
  EXPECT_EQ(listed, namesWith(".txt"));
}

TEST_F(Examples, PrintWhatIsBesideThem) {
  const std::vector<std::string> plugins =
      underAddressSanitizer() ? std::vector{files.elf} : std::vector{files.dylib, files.elf};
  for (const std::string& plugin : plugins) {
    for (const std::string& name : namesWith(".txt")) expectOutput(name, plugin);
  }
}

}  // namespace
