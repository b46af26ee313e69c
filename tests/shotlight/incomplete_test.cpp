// What the program says, and its exit status, when something could not be read.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

const char kNotSearched[] = "; what is in it is not searched";

// In the place of perl with exiftool's library: a picture that is called bad ends it, others are 100 pixels
// wide. It notes what it was asked.
const char kReader[] = R"(#!/usr/bin/perl
$| = 1; $/ = "\0"; print "ready\n"; binmode STDOUT;
while (my $path = <STDIN>) {
  chomp $path;
  open my $log, '>>', $ENV{READER_LOG}; print $log "$path\n"; close $log;
  exit 1 if $path =~ /bad/;
  my $tags = "File:ImageWidth\x00100\x00";
  print "ok " . length($tags) . "\n$tags";
}
)";

class Incomplete : public testing::Test {
 protected:
  Incomplete() { scratch.folder("tree"); }
  ~Incomplete() override {
    for (const std::string& path : locked) ::chmod(path.c_str(), 0700);
  }

  std::string tree() const { return scratch.at("tree"); }
  // What nobody may read.
  std::string lock(const std::string& path) {
    locked.push_back(path);
    EXPECT_EQ(::chmod(path.c_str(), 0), 0);
    return path;
  }
  std::string lockedFile(const std::string& name) { return lock(scratch.file("tree/" + name, "harbour")); }

  Result runHere(std::vector<std::string> arguments, std::vector<std::string> environment = {}) {
    environment.push_back("XDG_CACHE_HOME=" + scratch.at("cache"));
    return run({.arguments = std::move(arguments),
                .folder = tree(),
                .unprivileged = true,
                .environment = std::move(environment)});
  }
  static Texts complaints(const Result& result) {
    Texts complaints;
    for (const std::string& line : lines(result.errors)) {
      if (line.starts_with("shotlight: ")) complaints.push_back(line.substr(11));
    }
    return complaints;
  }

  // Pictures that tell their width, and some that can't be read between them.
  void makePictures(int bad) {
    const std::string program = scratch.file("programs/perl", kReader);
    ASSERT_EQ(::chmod(program.c_str(), 0755), 0);
    for (int i = 10; i < 30; ++i) scratch.file("tree/" + std::to_string(i) + ".jpg", "x");
    for (int i = 10; i < 10 + bad; ++i) scratch.file("tree/20 bad " + std::to_string(i) + ".jpg", "x");
  }
  Result findNarrow() {
    return runHere({"find", "!(kMDItemPixelWidth > 0)", "--show", "kMDItemFSName"},
                   {"PATH=" + scratch.at("programs") + ":/usr/bin:/bin", "READER_LOG=" + scratch.at("log")});
  }
  std::string complaintOf(const std::string& name) const {
    return tree() + '/' + name + ": exiftool ended without an answer" + kNotSearched;
  }
  std::vector<std::string> asked() const {
    std::ifstream stream(scratch.at("log"));
    Texts paths;
    for (std::string path; std::getline(stream, path);) paths.push_back(path);
    return paths;
  }

  ScratchFolder scratch;
  std::vector<std::string> locked;
};

TEST_F(Incomplete, NothingIsWhereAllIsRead) {
  scratch.file("tree/a.txt", "harbour");
  const Result result = runHere({"find", "kMDItemTextContent == harbour"});
  EXPECT_EQ(result.status, 0) << result;
  EXPECT_EQ(complaints(result), Texts{});
  EXPECT_EQ(runHere({"find", "kMDItemTextContent == forest"}).status, 1);
}

TEST_F(Incomplete, AreTheOthersOfBadFilesNever) {
  for (const int bad : {3, 10}) {
    SCOPED_TRACE(bad);
    makePictures(bad);
    Texts names;
    for (int i = 10; i < 10 + bad; ++i) names.push_back("20 bad " + std::to_string(i) + ".jpg");
    Texts expected;
    for (int i = 0; i < std::min(bad, 5); ++i) expected.push_back(complaintOf(names[static_cast<size_t>(i)]));
    if (bad > 5) expected.push_back(std::to_string(bad - 5) + " more files can't be read, or not in full");
    for (int round = 0; round < 2; ++round) {
      const Result result = findNarrow();
      EXPECT_EQ(result.status, 3) << result;
      EXPECT_EQ(lines(result.output), names);
      EXPECT_EQ(complaints(result), expected);
    }
    const Texts paths = asked();
    for (int i = 10; i < 30; ++i)
      EXPECT_TRUE(std::count(paths.begin(), paths.end(), tree() + '/' + std::to_string(i) + ".jpg")) << i;
  }
}

TEST_F(Incomplete, AreSearchesOfFoldersThatMayNotBeRead) {
  scratch.file("tree/a.txt", "");
  for (const char* const name : {"f", "e", "d", "c", "b", "a"})
    lock(scratch.folder(std::string("tree/") + name));
  Texts expected;
  for (const char* const name : {"a", "b", "c", "d", "e"})
    expected.push_back(tree() + '/' + name + ": this folder can't be read: Permission denied" + kNotSearched);
  expected.emplace_back("1 more folder can't be read");
  for (const std::vector<std::string>& how :
       std::vector<std::vector<std::string>>{{},
                                             {"--count"},
                                             {"--sort", "kMDItemFSSize"},
                                             {"--show", "kMDItemFSName"},
                                             {"--limit", "1"},
                                             {"--values", "kMDItemFSSize"},
                                             {"--live", "--for", "0"}}) {
    std::vector<std::string> arguments = {"find", "kMDItemFSName == \"*.txt\""};
    arguments.insert(arguments.end(), how.begin(), how.end());
    const Result result = runHere(arguments);
    EXPECT_EQ(result.status, 3) << result;
    EXPECT_EQ(complaints(result), expected) << result;
    EXPECT_NE(result.output, "");
  }
}

TEST_F(Incomplete, AreCountsOfWhatIsInFoldersThatMayNotBeRead) {
  lock(scratch.folder("tree/a"));
  const Texts expected = {tree() + "/a: this folder can't be read: Permission denied" + kNotSearched};
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"find", "!(kMDItemFSNodeCount > 0)", "--depth", "1"},
           {"find", "kMDItemFSName == a", "--depth", "1", "--values", "kMDItemFSNodeCount"},
           {"attrs", "a", "--keys", "kMDItemFSNodeCount"}}) {
    const Result result = runHere(arguments);
    EXPECT_EQ(result.status, 3) << result;
    EXPECT_EQ(complaints(result), expected) << result;
  }
}

TEST_F(Incomplete, AreSearchesForWhatIsInFilesThatMayNotBeRead) {
  const std::string text = lockedFile("a.txt"), picture = lockedFile("b.jpg");
  const std::string ofText = text + ": can't be read: Permission denied" + kNotSearched;
  const std::string ofPicture = picture + ": can't be opened: Permission denied" + kNotSearched;
  const struct {
    std::vector<std::string> arguments;
    int status;
    Texts expected;
  } rows[] = {
      {{"kMDItemFSName == \"*\""}, 0, {}},
      {{"kMDItemFSSize > 0", "--show", "kMDItemFSName,kMDItemContentType"}, 0, {}},
      {{"kMDItemTextContent == harbour"}, 3, {ofText}},
      {{"kMDItemTextContent == harbour", "--count"}, 3, {ofText}},
      {{"kMDItemTextContent == harbour && kMDItemFSName == \"b*\""}, 1, {}},
      {{"kMDItemTextContent == harbour || kMDItemFSName == \"*\""}, 0, {}},
      {{"kMDItemFSName == \"*\"", "--within", "kMDItemTextContent == harbour"}, 3, {ofText}},
      {{"kMDItemTitle == x"}, 3, {ofPicture}},
      {{"kMDItemFSName == \"*\"", "--show", "kMDItemTitle"}, 3, {ofPicture}},
      {{"kMDItemFSName == \"*\"", "--show", "kMDItemTitle", "--limit", "2"}, 3, {ofPicture}},
      {{"kMDItemFSName == \"*\"", "--sort", "kMDItemTitle"}, 3, {ofPicture}},
      {{"kMDItemFSName == \"*\"", "--values", "kMDItemTitle"}, 3, {ofPicture}},
      {{"kMDItemTitle != x", "--live", "--for", "0"}, 3, {ofPicture}},
  };
  for (const auto& [arguments, status, expected] : rows) {
    std::vector<std::string> all = {"find"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    for (int round = 0; round < 2; ++round) {
      const Result result = runHere(all);
      EXPECT_EQ(result.status, status) << arguments[0] << result;
      EXPECT_EQ(complaints(result), expected) << arguments[0];
    }
  }
}

TEST_F(Incomplete, AreAttributesOfFilesThatMayNotBeRead) {
  const std::string picture = lockedFile("b.jpg");
  lock(scratch.folder("tree/folder"));  // which isn't asked about
  const Result all = runHere({"attrs", "b.jpg"});
  EXPECT_EQ(all.status, 3) << all;
  EXPECT_NE(all.output.find("kMDItemFSSize"), std::string::npos);
  EXPECT_EQ(complaints(all), Texts{picture + ": can't be opened: Permission denied" + kNotSearched});
  const Result size = runHere({"attrs", "b.jpg", "--keys", "kMDItemFSSize"});
  EXPECT_EQ(size.status, 0) << size;
  EXPECT_EQ(size.errors, "");
  const Result both = runHere({"attrs", "b.jpg", "b.jpg", "none"});
  EXPECT_EQ(both.status, 2) << both;
  EXPECT_EQ(complaints(both).size(), 2u) << both;
  EXPECT_EQ(runHere({"attrs", "folder", "b.jpg"}).status, 3);
}

TEST_F(Incomplete, AreAnswersWithoutAReader) {
  fs::copy(exampleLibrary(), tree(), fs::copy_options::recursive);
  const std::string none = "PATH=" + scratch.folder("programs");
  const Result pictures = runHere({"find", "kMDItemPixelWidth > 0"}, {none});
  EXPECT_EQ(pictures.status, 3) << pictures;
  const Texts said = complaints(pictures);
  ASSERT_EQ(said.size(), 2u) << pictures;
  EXPECT_EQ(
      said[0],
      "exiftool isn't there: install Debian's libimage-exiftool-perl, or set PATH. Attributes of media and "
      "documents may be missing.");
  EXPECT_TRUE(matches(said[1], "[0-9]+ files can't be read, as a reader is missing"));
  EXPECT_EQ(runHere({"attrs", "Photos/Fog.heic"}, {none}).status, 3);
  EXPECT_EQ(runHere({"find", "kMDItemFSName == \"*.jpg\" && kMDItemFSSize > 0"}, {none}).status, 0);
  const Result texts = runHere({"find", "kMDItemTextContent == harbour"}, {none});
  EXPECT_EQ(texts.status, 3) << texts;
  EXPECT_EQ(complaints(texts), Texts{tree() +
                                     "/Documents/Harbour report.pdf: pdftotext isn't there: install "
                                     "Debian's poppler-utils" +
                                     kNotSearched});
}

TEST_F(Incomplete, AreSearchesInTextThatIsTooLong) {
  std::string text;
  while (text.size() <= (16 << 20)) text += "harbour ";
  scratch.file("tree/a.txt", text);
  scratch.file("tree/b.html", text);
  const Result result = runHere({"find", "kMDItemTextContent == forest"});
  EXPECT_EQ(result.status, 3) << result;
  EXPECT_EQ(complaints(result),
            (Texts{tree() + "/a.txt: is larger than 16 MB; its text is not searched",
                   tree() + "/b.html: has more than 16 MB of text; the rest is not searched"}));
  const Result found = runHere({"find", "kMDItemTextContent == harbour", "--show", "kMDItemFSName"});
  EXPECT_EQ(lines(found.output), Texts{"b.html"});
  EXPECT_EQ(complaints(found).size(), 1u) << found;
}

TEST_F(Incomplete, AreLiveUpdatesOfFoldersWithTooLongPaths) {
  const std::string name(250, 'x');
  int folder = ::open(tree().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(::mkdirat(folder, name.c_str(), 0700), 0);
    const int below = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ::close(folder);
    folder = below;
  }
  ::close(folder);
  EXPECT_EQ(runHere({"find", "kMDItemFSName == \"*.txt\""}).status, 1);
  const Result live = runHere({"find", "kMDItemFSName == \"*.txt\"", "--live", "--for", "0"});
  EXPECT_EQ(live.status, 3) << live;
  const Texts said = complaints(live);
  ASSERT_EQ(said.size(), 1u) << live;
  EXPECT_TRUE(startsWith(said[0], "not every change can be told: can't follow the changes in " + tree()));
  EXPECT_TRUE(said[0].ends_with(": File name too long"));
}

TEST_F(Incomplete, AreLiveUpdatesOfFoldersThatMayNotBeRead) {
  Running live({.arguments = {"find", "kMDItemFSName == \"locked\"", "--live"},
                .folder = tree(),
                .unprivileged = true});
  const std::string aside = lock(scratch.folder("locked"));
  scratch.file("tree/start/locked", "");
  ASSERT_TRUE(live.waitForLine("+ " + tree() + "/start/locked"));
  fs::rename(aside, scratch.at("tree/locked"));
  locked.back() = scratch.at("tree/locked");
  ASSERT_TRUE(live.waitForLine("+ " + tree() + "/locked"));
  live.send(SIGINT);
  const Result result = live.finish();
  EXPECT_EQ(result.status, 3) << result;
  EXPECT_EQ(complaints(result),
            Texts{tree() + "/locked: this folder can't be read: Permission denied" + kNotSearched});
}

}  // namespace
