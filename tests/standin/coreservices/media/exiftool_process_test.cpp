// The process that reads the metadata of media: one for many files, started when it is needed, and no harm to
// anyone when it is missing, ends, hangs or talks nonsense.
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>

#include "standin/coreservices/media/media_reader.h"
#include "tests/standin/coreservices/media/sample_files.h"
#include "tests/standin/coreservices/metadata/item_fixture.h"

namespace {

using namespace standin::metadata;
using namespace std::chrono_literals;
using Strings = std::vector<std::string>;

std::string contentOf(const std::string& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// The children of this process, zombies included.
std::set<pid_t> children() {
  std::ifstream stream("/proc/self/task/" + std::to_string(::getpid()) + "/children");
  return {std::istream_iterator<pid_t>(stream), {}};
}

class ExiftoolProcess : public ItemTest {
 protected:
  // A program of the test's own in place of exiftool. It may call itself $log to write what happens.
  std::string program(const std::string& script) {
    const std::string path = scratch.file("bin/exiftool", "#!/bin/sh\nlog='" + log() + "'\n" + script + '\n');
    EXPECT_EQ(::chmod(path.c_str(), 0755), 0);
    return path;
  }
  std::string log() const { return scratch.at("log"); }

  MediaReader::Options options(const std::string& program) {
    MediaReader::Options options;
    options.program = program;
    options.timeout = 1min;  // a busy system is not what these tests are about
    options.complain = [this](const std::string& message) { complaints.push_back(message); };
    return options;
  }

  // The width of the picture, 0 when the reader tells none.
  int64_t width(MediaReader& reader, const std::string& path) {
    struct statx info;
    EXPECT_EQ(::statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS, &info), 0);
    const auto attributes = reader.read({AT_FDCWD, path.c_str(), path.c_str(), path, info});
    std::vector<Value> values;
    attributes->values(FileAttribute::PixelWidth, values);
    return values.empty() ? 0 : std::get<int64_t>(values.front());
  }
  std::string picture(int number) {
    return scratch.file("photo " + std::to_string(number) + ".jpg", sample::jpeg());
  }

  // The children that this test has made.
  std::set<pid_t> ownChildren() const {
    std::set<pid_t> own = children();
    for (const pid_t pid : before_) own.erase(pid);
    return own;
  }

  static void reap(const std::set<pid_t>& orphans) {
    for (const pid_t pid : orphans) ::waitpid(pid, nullptr, 0);
  }

  Strings complaints;

 private:
  const std::set<pid_t> before_ = children();
};

TEST_F(ExiftoolProcess, IsOneForManyFiles) {
  {
    MediaReader reader(options("exiftool"));
    for (int i = 0; i < 50; ++i) EXPECT_EQ(width(reader, picture(i)), 32) << i;
    EXPECT_EQ(reader.starts(), 1);
    EXPECT_EQ(reader.filesRead(), 50);
    EXPECT_EQ(complaints, Strings{});
  }
  EXPECT_EQ(ownChildren(), std::set<pid_t>{});
}

TEST_F(ExiftoolProcess, IsNotAskedTwiceAboutAFileThatIsAsItWas) {
  MediaReader reader(options("exiftool"));
  const std::string path = picture(1);
  EXPECT_EQ(width(reader, path), 32);
  EXPECT_EQ(width(reader, path), 32);
  EXPECT_EQ(reader.filesRead(), 1);
  scratch.file("photo 1.jpg", sample::png());
  EXPECT_EQ(width(reader, path), 3);
  EXPECT_EQ(reader.filesRead(), 2);
}

TEST_F(ExiftoolProcess, IsAskedAgainAboutWhatWasUsedLongestAgo) {
  MediaReader::Options few = options("exiftool");
  few.filesKept = 2;
  MediaReader reader(few);
  const Strings paths = {picture(1), picture(2), picture(3)};
  for (const size_t used : {0, 1, 0, 2, 0, 2}) EXPECT_EQ(width(reader, paths[used]), 32);
  EXPECT_EQ(reader.filesRead(), 3);
  EXPECT_EQ(width(reader, paths[1]), 32);
  EXPECT_EQ(reader.filesRead(), 4);
}

TEST_F(ExiftoolProcess, ThatIsMissingIsComplainedOfOnce) {
  MediaReader reader(options("exiftool-that-is-nowhere"));
  for (int i = 0; i < 5; ++i) EXPECT_EQ(width(reader, picture(i)), 0);
  EXPECT_EQ(reader.starts(), 0);
  ASSERT_EQ(complaints.size(), 1u);
  EXPECT_NE(complaints[0].find("libimage-exiftool-perl"), std::string::npos) << complaints[0];
}

TEST_F(ExiftoolProcess, ThatDiesIsGivenUpAfterAWhile) {
  MediaReader reader(options(program("echo start >> \"$log\"; exit 1")));
  for (int i = 0; i < 6; ++i) EXPECT_EQ(width(reader, picture(i)), 0);
  EXPECT_EQ(reader.starts(), 3);
  EXPECT_EQ(contentOf(log()), "start\nstart\nstart\n");
  EXPECT_EQ(complaints.size(), 1u);
  EXPECT_EQ(ownChildren(), std::set<pid_t>{});
}

TEST_F(ExiftoolProcess, ThatCannotBeRunCountsAsDying) {
  const std::string path = scratch.file("exiftool", "#!/no/such/interpreter\n");
  ASSERT_EQ(::chmod(path.c_str(), 0755), 0);
  MediaReader reader(options(path));
  EXPECT_EQ(width(reader, picture(1)), 0);
  EXPECT_EQ(complaints.size(), 1u);
}

TEST_F(ExiftoolProcess, ThatWasEndedFromOutsideIsStartedAgain) {
  MediaReader reader(options("exiftool"));
  EXPECT_EQ(width(reader, picture(1)), 32);
  const std::set<pid_t> running = ownChildren();
  ASSERT_EQ(running.size(), 1u);
  const pid_t pid = *running.begin();
  ASSERT_EQ(::kill(pid, SIGKILL), 0);
  siginfo_t ended;
  ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(pid), &ended, WEXITED | WNOWAIT), 0);
  EXPECT_EQ(width(reader, picture(2)), 32);
  EXPECT_EQ(reader.starts(), 2);
  EXPECT_EQ(complaints, Strings{});
  EXPECT_EQ(ownChildren().size(), 1u);
}

TEST_F(ExiftoolProcess, ThatHangsCostsOneFileItsTimeAndIsEndedWithAllItStarted) {
  MediaReader::Options hasty = options(program("sleep 1000 & echo $! > \"$log\"; wait"));
  ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);  // orphans come to this process, to be waited for
  // Again with more time where the system was too busy for the program to start what it is to start.
  std::string sleeper;
  for (auto time = 300ms; sleeper.empty() && time < 1min; time *= 3) {
    complaints.clear();
    hasty.timeout = time;
    MediaReader reader(hasty);
    EXPECT_EQ(width(reader, picture(1)), 0);
    EXPECT_EQ(complaints.size(), 1u);
    sleeper = contentOf(log());
    if (sleeper.empty()) reap(ownChildren());
  }
  ASSERT_FALSE(sleeper.empty());
  int status = 0;
  EXPECT_EQ(::waitpid(std::stoi(sleeper), &status, 0), std::stoi(sleeper));
  EXPECT_TRUE(WIFSIGNALED(status));
  ::prctl(PR_SET_CHILD_SUBREAPER, 0);
  EXPECT_EQ(ownChildren(), std::set<pid_t>{});
}

TEST_F(ExiftoolProcess, ThatTalksNonsenseIsGivenUp) {
  const char* const kScript =
      "while read -r line; do case $line in -execute*) echo \"no { json {ready${line#-execute}}\";; esac; "
      "done";
  MediaReader reader(options(program(kScript)));
  for (int i = 0; i < 6; ++i) EXPECT_EQ(width(reader, picture(i)), 0);
  EXPECT_EQ(reader.starts(), 3);
  ASSERT_EQ(complaints.size(), 1u);
  EXPECT_NE(complaints[0].find("makes no sense"), std::string::npos) << complaints[0];
}

TEST_F(ExiftoolProcess, ThatNeverStopsTalkingIsEnded) {
  MediaReader reader(options(program("exec yes")));
  EXPECT_EQ(width(reader, picture(1)), 0);
  ASSERT_EQ(complaints.size(), 1u);
  EXPECT_NE(complaints[0].find("without end"), std::string::npos) << complaints[0];
  EXPECT_EQ(ownChildren(), std::set<pid_t>{});
}

TEST_F(ExiftoolProcess, ThatRecoversIsGoodAgain) {
  // Fails every other time that it is started.
  const char* const kScript =
      "echo x >> \"$log\"; [ $(($(wc -l < \"$log\") % 2)) = 1 ] && exit 1\n"
      "while read -r line; do case $line in -execute*)\n"
      "  echo '[{\"File:ImageWidth\": 7}]'; echo \"{ready${line#-execute}}\"; exit;;\nesac; done";
  MediaReader reader(options(program(kScript)));
  int read = 0;
  for (int i = 0; i < 10; ++i) read += width(reader, picture(i)) == 7;
  EXPECT_GE(read, 5);
  EXPECT_EQ(complaints.size(), 1u);
}

TEST_F(ExiftoolProcess, InheritsNoDescriptorAndNoSignals) {
  const std::string secret = scratch.file("secret");
  const int open = ::open(secret.c_str(), O_RDONLY);  // without O_CLOEXEC, as a host may have it
  ASSERT_GE(open, 0);
  sigset_t blocked, before;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGUSR1);
  ::sigprocmask(SIG_BLOCK, &blocked, &before);
  const auto pipe = ::signal(SIGPIPE, SIG_IGN);
  MediaReader reader(
      options(program("ls -l /proc/$$/fd > \"$log\"; grep Sig /proc/self/status >> \"$log\"")));
  width(reader, picture(1));
  ::signal(SIGPIPE, pipe);
  ::sigprocmask(SIG_SETMASK, &before, nullptr);
  ::close(open);
  const std::string logged = contentOf(log());
  EXPECT_NE(logged.find("0 -> socket"), std::string::npos) << logged;
  EXPECT_NE(logged.find("2 -> /dev/null"), std::string::npos) << logged;
  EXPECT_EQ(logged.find(secret), std::string::npos) << logged;
  EXPECT_NE(logged.find("SigBlk:\t0000000000000000"), std::string::npos) << logged;
  EXPECT_NE(logged.find("SigIgn:\t0000000000000000"), std::string::npos) << logged;
}

TEST_F(ExiftoolProcess, SurvivesAForkOfItsOwner) {
  MediaReader reader(options("exiftool"));
  EXPECT_EQ(width(reader, picture(1)), 32);
  const pid_t child = ::fork();
  if (child == 0) {
    const bool reads = width(reader, picture(2)) == 32 && reader.starts() == 2;
    reader.~MediaReader();
    ::_exit(reads ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(width(reader, picture(3)), 32);
  EXPECT_EQ(reader.starts(), 1);
}

TEST_F(ExiftoolProcess, EndsWithAnOwnerThatIsKilled) {
  ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  const std::string started = scratch.at("started");
  ASSERT_EQ(::mkfifo(started.c_str(), 0600), 0);
  const std::string script = program("echo $$ > '" + started + "'; exec sleep 1000");
  const std::string path = picture(1);
  const pid_t owner = ::fork();
  if (owner == 0) {
    MediaReader reader(options(script));
    width(reader, path);
    ::_exit(0);
  }
  const std::string pid = contentOf(started);
  ::kill(owner, SIGKILL);
  ASSERT_EQ(::waitpid(owner, nullptr, 0), owner);
  int status = 0;
  EXPECT_EQ(::waitpid(std::stoi(pid), &status, 0), std::stoi(pid));
  EXPECT_TRUE(WIFSIGNALED(status));
  ::prctl(PR_SET_CHILD_SUBREAPER, 0);
}

// Reads attributes in a process of its own, in which a program of the test's own is found in PATH.
class LazyReading : public ExiftoolProcess {
 protected:
  void SetUp() override {
    program("echo start >> \"$log\"; exec /usr/bin/exiftool \"$@\"");
    photo = picture(1);
    notes = scratch.file("notes.txt", "text");
  }

  // How often the program was started while `work` was done.
  int startsDuring(const std::function<void()>& work) {
    std::filesystem::remove(log());
    const pid_t child = ::fork();
    if (child == 0) {
      ::setenv("PATH", (scratch.at("bin") + ':' + std::getenv("PATH")).c_str(), 1);
      work();
      ::_exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    return static_cast<int>(contentOf(log()).size() / std::strlen("start\n"));
  }

  static void search(const std::string& folder, const char* query, CFIndex results) {
    const auto found = makeQuery(query);
    standin::setIndexedFolders({folder});
    ASSERT_TRUE(MDQueryExecute(found.get(), kMDQuerySynchronous));
    EXPECT_EQ(MDQueryGetResultCount(found.get()), results) << query;
  }

  std::string photo, notes;
};

TEST_F(LazyReading, StartsNothingForWhatTheFileSystemKnows) {
  EXPECT_EQ(startsDuring([&] {
              const auto item = make(photo);
              for (const CFStringRef key :
                   {kMDItemFSName, kMDItemDisplayName, kMDItemPath, kMDItemFSSize, kMDItemFSCreationDate,
                    kMDItemFSContentChangeDate, kMDItemContentModificationDate, kMDItemAttributeChangeDate,
                    kMDItemFSOwnerUserID, kMDItemFSInvisible, kMDItemFSLabel, kMDItemContentType,
                    kMDItemContentTypeTree, kMDItemKind}) {
                EXPECT_TRUE(get(item, key)) << textOf(key);
              }
              EXPECT_FALSE(get(item, kMDItemWhereFroms));
              EXPECT_FALSE(get(item, kMDItemDueDate));
            }),
            0);
}

TEST_F(LazyReading, StartsNothingForContentThatSaysNothingAboutItself) {
  EXPECT_EQ(startsDuring([&] {
              const auto item = make(notes);
              EXPECT_FALSE(get(item, kMDItemTitle));
              EXPECT_TRUE(get(item, kMDItemContentCreationDate));
              const Owned<CFArrayRef> names(MDItemCopyAttributeNames(item.get()));
              EXPECT_TRUE(names);
            }),
            0);
}

TEST_F(LazyReading, StartsOneProcessForAllThatIsReadOfContent) {
  EXPECT_EQ(startsDuring([&] {
              EXPECT_EQ(number(make(photo), kMDItemPixelWidth), 32);
              EXPECT_EQ(number(make(picture(2)), kMDItemPixelHeight), 16);
              const Owned<CFArrayRef> names(MDItemCopyAttributeNames(make(picture(3)).get()));
              EXPECT_TRUE(names);
            }),
            1);
}

TEST_F(LazyReading, SearchesByNameSizeAndTypeWithoutStartingAnything) {
  const std::string folder = scratch.folder("box");
  scratch.file("box/photo.jpg", sample::jpeg());
  scratch.file("box/notes.txt", "text");
  EXPECT_EQ(startsDuring([&] {
              search(folder, "kMDItemFSName == \"*.jpg\" && kMDItemFSSize > 10", 1);
              search(folder, "kMDItemContentTypeTree == \"public.image\"", 1);
            }),
            0);
  EXPECT_EQ(startsDuring([&] { search(folder, "kMDItemPixelWidth == 32", 1); }), 1);
  EXPECT_EQ(startsDuring([&] { search(folder, "kMDItemFSName == \"*.txt\" && kMDItemPixelWidth == 32", 0); }),
            0);
}

TEST_F(LazyReading, ComplainsOnStandardErrorOnce) {
  const std::string message = scratch.at("message");
  const std::string other = picture(2);
  std::filesystem::remove(scratch.at("bin/exiftool"));
  const pid_t child = ::fork();
  if (child == 0) {
    ::setenv("PATH", scratch.at("bin").c_str(), 1);
    std::freopen(message.c_str(), "w", stderr);
    for (const std::string& path : {photo, other}) {
      EXPECT_FALSE(get(make(path), kMDItemPixelWidth));
      EXPECT_TRUE(get(make(path), kMDItemFSSize));
    }
    std::fflush(stderr);
    ::_exit(::testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(contentOf(message),
            "standin: metadata: exiftool isn't there: install Debian's libimage-exiftool-perl, or set PATH. "
            "Attributes of media and documents may be missing.\n");
}

}  // namespace
