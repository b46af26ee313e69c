// What is known of a file's content, from which program or store it came, and for how long.
#include "standin/coreservices/content/content_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "tests/standin/coreservices/content/reader_programs.h"
#include "tests/support/scratch_folder.h"

namespace standin::metadata {
namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

class Contents : public testing::Test {
 protected:
  Contents() {
    options.text.pool = textProgram(scratch);
    options.text.programs = {options.text.pool.program};
    options.complain = [this](const std::string& message) { complaints.push_back(message); };
  }
  void open() {
    reader.reset();
    reader = std::make_unique<ContentReader>(options);
  }

  struct Known {
    std::string path;
    struct statx info;
  };
  static Known justWritten(const std::string& path) {
    Known file{path, {}};
    EXPECT_EQ(::statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS, &file.info), 0) << path;
    return file;
  }
  // Of a file whose times say for sure what is in it.
  static Known known(const std::string& path) {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    return justWritten(path);
  }
  static FileLocation locationOf(const Known& file) {
    return {AT_FDCWD, file.path.c_str(), file.path.c_str() + file.path.rfind('/') + 1, file.path, file.info};
  }
  std::string read(const Known& file, const char* format = "html") {
    return reader->read(Content::Text, locationOf(file), format)->bytes;
  }
  bool isKnown(const Known& file, const char* format = "html") {
    return reader->known(Content::Text, locationOf(file), format) != nullptr;
  }
  // What isn't known of it; "nothing" where all is.
  std::string missing(const Known& file) {
    const ContentBytes answer = reader->read(Content::Text, locationOf(file), "html");
    return answer->isWhole ? "nothing" : answer->missing;
  }
  // Some times, a file of which nothing can be read and another one with text in it.
  void readInTurn(const Known& file, const Known& other) {
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(read(file), "");
      EXPECT_EQ(read(other), "html text");
    }
  }
  void ask(const Known& file) { reader->ask(Content::Text, locationOf(file), "html"); }

  ScratchFolder scratch;
  ContentReader::Options options;
  Strings complaints;
  std::unique_ptr<ContentReader> reader;
};

TEST_F(Contents, AreReadOnceAndFoundByTheNextProcess) {
  options.store.folder = scratch.at("store");
  const Known file = known(scratch.file("a.html", "some text"));
  open();
  EXPECT_FALSE(isKnown(file));
  EXPECT_EQ(read(file), "html some text");
  EXPECT_EQ(read(file), "html some text");
  EXPECT_EQ(reader->filesRead(), 1u);
  open();
  EXPECT_TRUE(isKnown(file));
  EXPECT_EQ(read(file), "html some text");
  EXPECT_EQ(reader->filesRead(), 0u);
}

// One file may have names of several kinds.
TEST_F(Contents, AreThoseOfTheFormat) {
  options.store.folder = scratch.at("store");
  const Known file = known(scratch.file("a.html", "some text"));
  fs::create_hard_link(file.path, scratch.at("a.rtf"));
  Known link = file;
  link.path = scratch.at("a.rtf");
  for (int round = 0; round < 2; ++round) {
    open();
    EXPECT_EQ(read(file), "html some text");
    EXPECT_EQ(read(link, "rtf"), "rtf some text");
    EXPECT_EQ(read(file), "html some text");
  }
}

TEST_F(Contents, MayStartWithAnyByte) {
  options.store.folder = scratch.at("store");
  const Known file = known(scratch.file("a.html", "nul"));
  for (int round = 0; round < 2; ++round) {
    open();
    EXPECT_EQ(read(file), std::string("\0\1\2", 3));
  }
  EXPECT_EQ(complaints, Strings{});
}

TEST_F(Contents, ThatAreRefusedAreNotReadAgainAndMissedAlike) {
  options.store.folder = scratch.at("store");
  const Known file = known(scratch.file("a.html", "refuse"));
  const Known other = known(scratch.file("b.html", "text"));
  for (int round = 0; round < 2; ++round) {
    open();
    readInTurn(file, other);
    EXPECT_EQ(missing(file), "makes no sense; what is in it is not searched");
    EXPECT_EQ(missing(other), "nothing");
    EXPECT_EQ(reader->filesRead(), round == 0 ? 2u : 0u);
  }
}

TEST_F(Contents, ThatAreReadInPartAreMissedInPart) {
  options.store.folder = scratch.at("store");
  const Known file = known(scratch.file("a.html", "part"));
  const Known other = known(scratch.file("b.html", "text"));
  for (int round = 0; round < 2; ++round) {
    open();
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(read(file), "html part");
      EXPECT_EQ(missing(file), "has more than 16 MB of text; the rest is not searched");
      EXPECT_EQ(missing(other), "nothing");
    }
    EXPECT_EQ(reader->filesRead(), round == 0 ? 2u : 0u);
  }
}

// A failure may have nothing to do with the file: the next process tries again.
TEST_F(Contents, ThatEndedTheReaderAreReadAgainByTheNextProcessOnly) {
  options.store.folder = scratch.at("store");
  const Known file = known(scratch.file("a.html", "end"));
  const Known other = known(scratch.file("b.html", "text"));
  for (int round = 0; round < 2; ++round) {
    open();
    readInTurn(file, other);
    EXPECT_EQ(missing(file), "text program ended without an answer; what is in it is not searched");
    EXPECT_EQ(reader->filesRead(), round == 0 ? 2u : 1u);
  }
}

// What is written twice within a tick of the system's clock has the same times.
TEST_F(Contents, OfAFileThatWasJustWrittenCountForAMoment) {
  options.store.folder = scratch.at("store");
  open();
  const Known other = known(scratch.file("b.html", "text"));
  read(other);  // the program is started
  const Known file = justWritten(scratch.file("a.html", "first"));
  EXPECT_EQ(read(file), "html first");
  scratch.file("a.html", "later");
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_EQ(read(file), "html later");
  open();
  EXPECT_FALSE(isKnown(file));
}

// Readers open files by their paths, where something else may be by then.
TEST_F(Contents, OfAFileThatTookThePlaceOfAnotherAreNotKeptAsTheOthers) {
  options.store.folder = scratch.at("store");
  const std::string path = scratch.file("one/a.html", "first");
  scratch.file("two/a.html", "other");
  const Known file = known(path), moved = known(scratch.at("two/a.html"));
  open();
  fs::rename(scratch.at("one"), scratch.at("aside"));
  fs::rename(scratch.at("two"), scratch.at("one"));
  fs::rename(scratch.at("aside"), scratch.at("two"));
  EXPECT_EQ(read(file), "html other");  // what is there
  open();
  EXPECT_FALSE(isKnown(file));
  const Known now = known(path);
  EXPECT_EQ(now.info.stx_ino, moved.info.stx_ino);
  EXPECT_EQ(read(now), "html other");
  EXPECT_EQ(read(known(scratch.at("two/a.html"))), "html first");
  open();
  EXPECT_TRUE(isKnown(now));
}

TEST_F(Contents, ThatNobodyHasSeenTakeLimitedMemory) {
  options.unseenLimit = 1000;
  options.store.memoryLimit = 0;  // so that what is forgotten is read again
  open();
  std::vector<Known> files;
  for (int i = 0; i < 10; ++i)
    files.push_back(known(scratch.file(std::to_string(i) + ".html", std::string(300, 'x'))));
  for (const Known& file : files) ask(file);
  while (reader->filesRead() < files.size()) reader->wait(std::chrono::seconds(1));
  int seen = 0;
  for (const Known& file : files) seen += isKnown(file);
  EXPECT_GE(seen, 1);
  EXPECT_LE(seen, 3);
  for (const Known& file : files) EXPECT_EQ(read(file).size(), 305u);
}

TEST_F(Contents, AreReadAnewWhenTheReaderIsAnother) {
  options.store.folder = scratch.at("store");
  const Known file = known(scratch.file("a.html", "text"));
  open();
  read(file);
  open();
  EXPECT_TRUE(isKnown(file));
  const std::string program = options.text.pool.program;
  for (const bool rewritten : {true, false}) {
    if (rewritten) fs::last_write_time(program, fs::last_write_time(program) + std::chrono::nanoseconds(1));
    if (!rewritten) fs::remove(program);
    open();
    EXPECT_FALSE(isKnown(file)) << rewritten;
    EXPECT_EQ(read(file), rewritten ? "html text" : "");
    EXPECT_EQ(missing(file), rewritten ? "nothing" : "");  // there is no reader
  }
  EXPECT_EQ(complaints,
            Strings{"text program isn't there: install Debian's text-package, or set PATH. Texts of "
                    "documents may be missing."});
}

TEST(Complaints, ReachNoTerminalWithWhatItWouldObey) {
  testing::internal::CaptureStderr();
  contentReaderOptions().complain("/tmp/\x1B[31m\nfake\xFF.pdf: why");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "standin: metadata: /tmp/\\x1B[31m\\nfake\\xFF.pdf: why\n");
}

}  // namespace
}  // namespace standin::metadata
