// Programs that read files beside this process: many questions for one process, and no harm to anyone when it
// is missing, ends, hangs or talks nonsense.
#include "standin/coreservices/readers/reader_pool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

#include "tests/support/scratch_folder.h"

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

// A reader that says "read QUESTION" of every question, but for what `special` does with some of them.
std::string reader(const std::string& special = "") {
  return "#!/usr/bin/perl\n$| = 1; $/ = \"\\0\"; print \"ready\\n\";\n"
         "sub say_ { print \"$_[0] \" . length($_[1]) . \"\\n$_[1]\" }\n"
         "while (my $question = <STDIN>) { chomp $question;\n" +
         special + "\nsay_('ok', \"read $question\"); }\n";
}

class Readers : public ::testing::Test {
 protected:
  // A program of the test's own.
  std::string program(const std::string& script) {
    const std::string path = scratch.file("bin/reader", script);
    EXPECT_EQ(::chmod(path.c_str(), 0755), 0);
    return path;
  }
  std::string shell(const std::string& script) {
    return program("#!/bin/sh\nlog='" + log() + "'\n" + script + '\n');
  }
  std::string log() const { return scratch.at("log"); }

  ReaderPool::Options options(const std::string& program) {
    ReaderPool::Options options;
    options.name = "reader";
    options.program = program;
    options.package = "reader-package";
    options.timeToStart = options.timeToAnswer = 1min;  // a busy system is not what these tests are about
    options.complain = [this](const std::string& message) { complaints.push_back(message); };
    return options;
  }

  ReaderPool::Take take() {
    return [this](ReaderPool::Ticket ticket, ReaderAnswer answer) {
      EXPECT_TRUE(answers.emplace(ticket, std::move(answer)).second) << "two answers to " << ticket;
    };
  }

  // Asks as many questions, and waits for all answers.
  void askAll(ReaderPool& pool, ReaderPool::Ticket questions) {
    for (ReaderPool::Ticket i = 0; i < questions; ++i) pool.ask(i, "question " + std::to_string(i));
    waitForAll(pool);
    EXPECT_EQ(answers.size(), questions);
  }
  static void waitForAll(ReaderPool& pool) {
    while (!pool.isIdle()) pool.wait(1s);
  }

  size_t count(ReaderAnswer::Kind kind) const {
    size_t count = 0;
    for (const auto& [ticket, answer] : answers) count += answer.kind == kind;
    return count;
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

  ScratchFolder scratch;
  Strings complaints;
  std::map<ReaderPool::Ticket, ReaderAnswer> answers;

 private:
  const std::set<pid_t> before_ = children();
};

TEST_F(Readers, AreFewForManyFiles) {
  {
    ReaderPool::Options three = options(program(reader()));
    three.processes = 3;
    ReaderPool pool(three, take());
    askAll(pool, 500);
    EXPECT_EQ(pool.starts(), 3);
    EXPECT_EQ(ownChildren().size(), 3u);
    for (const auto& [ticket, answer] : answers) {
      EXPECT_EQ(answer.kind, ReaderAnswer::Read);
      EXPECT_EQ(answer.bytes, "read question " + std::to_string(ticket));
    }
  }
  EXPECT_EQ(complaints, Strings{});
  EXPECT_EQ(ownChildren(), std::set<pid_t>{});
}

TEST_F(Readers, AreOneForFewFiles) {
  ReaderPool::Options three = options(program(reader()));
  three.processes = 3;
  ReaderPool pool(three, take());
  askAll(pool, 5);
  EXPECT_EQ(pool.starts(), 1);
}

TEST_F(Readers, StartNothingUnlessAsked) {
  ReaderPool pool(options(shell("echo start >> \"$log\"")), take());
  pool.wait(0ms);
  EXPECT_EQ(pool.starts(), 0);
  EXPECT_TRUE(pool.isIdle());
}

TEST_F(Readers, AnswerWithAnyBytesAndRefuse) {
  const std::string special =
      "if ($question =~ / 1$/) { say_('error', 'is no picture'); next }\n"
      "if ($question =~ / 2$/) { say_('unreadable', 'is locked'); next }\n"
      "if ($question =~ / 3$/) { say_('ok', ''); next }\n"
      "if ($question =~ / 4$/) { say_('ok', join '', map { chr } 0 .. 255); next }\n";
  ReaderPool pool(options(program(reader(special))), take());
  askAll(pool, 6);
  EXPECT_EQ(answers[0].bytes, "read question 0");
  EXPECT_EQ(answers[1].kind, ReaderAnswer::Refused);
  EXPECT_EQ(answers[1].bytes, "is no picture");
  EXPECT_EQ(answers[2].kind, ReaderAnswer::Unreadable);
  EXPECT_EQ(answers[2].bytes, "is locked");
  EXPECT_EQ(answers[3].kind, ReaderAnswer::Read);
  EXPECT_EQ(answers[3].bytes, "");
  EXPECT_EQ(answers[4].bytes.size(), 256u);
  EXPECT_EQ(answers[4].bytes[255], '\xFF');
  EXPECT_EQ(answers[5].bytes, "read question 5");
}

TEST_F(Readers, AnswerAtLength) {
  ReaderPool pool(options(program(reader("say_('ok', $question x 1000000); next;"))), take());
  askAll(pool, 3);
  for (const auto& [ticket, answer] : answers) EXPECT_EQ(answer.bytes.size(), 10000000u);
}

TEST_F(Readers, ForgetWhatWasNotBegun) {
  ReaderPool pool(options(program(reader())), take());
  for (ReaderPool::Ticket i = 0; i < 100; ++i) pool.ask(i, "question");
  pool.forget([](ReaderPool::Ticket ticket) { return ticket >= 50; });
  waitForAll(pool);
  EXPECT_EQ(answers.size(), 50u);
}

TEST_F(Readers, AreAskedFirstWhatIsWaitedFor) {
  ReaderPool pool(options(program(reader("open my $log, '>>', '" + log() +
                                         "'; print $log \"$question\\n\"; close $log;"))),
                  take());
  for (ReaderPool::Ticket i = 0; i < 3; ++i) pool.ask(i, "later");
  pool.ask(3, "now", ReaderPool::Turn::First);
  waitForAll(pool);
  EXPECT_EQ(contentOf(log()), "now\nlater\nlater\nlater\n");
}

TEST_F(Readers, ThatAreMissingAreComplainedOfOnce) {
  ReaderPool pool(options("reader-that-is-nowhere"), take());
  askAll(pool, 5);
  EXPECT_EQ(count(ReaderAnswer::Unreadable), 5u);
  EXPECT_EQ(pool.starts(), 0);
  ASSERT_EQ(complaints.size(), 1u);
  EXPECT_EQ(complaints[0], "reader isn't there: install Debian's reader-package, or set PATH");
}

TEST_F(Readers, ThatNeverStartAreGivenUp) {
  ReaderPool pool(options(shell("echo start >> \"$log\"; exit 1")), take());
  askAll(pool, 100);
  EXPECT_EQ(count(ReaderAnswer::Unreadable), 100u);
  EXPECT_EQ(contentOf(log()), "start\nstart\nstart\n");
  EXPECT_EQ(complaints,
            Strings{"reader can't be used, it ended without an answer: see that Debian's reader-package is "
                    "installed whole"});
  EXPECT_EQ(ownChildren(), std::set<pid_t>{});
}

TEST_F(Readers, ThatCannotBeRunAreGivenUp) {
  ReaderPool pool(options(program("#!/no/such/interpreter\n")), take());
  askAll(pool, 2);
  EXPECT_EQ(complaints.size(), 1u);
}

TEST_F(Readers, AreNotGivenUpForFilesThatTheyFailAt) {
  ReaderPool::Options two = options(program(reader("exit 1 if $question =~ /0$/;")));
  two.processes = 2;
  ReaderPool pool(two, take());
  askAll(pool, 100);
  EXPECT_EQ(count(ReaderAnswer::Unreadable), 10u);
  EXPECT_EQ(count(ReaderAnswer::Read), 90u);
  EXPECT_EQ(answers[10].bytes, "reader ended without an answer");
  EXPECT_EQ(complaints, Strings{});
}

// The file that was asked about had nothing to do with that.
TEST_F(Readers, ThatWereEndedFromOutsideAreStartedAgain) {
  ReaderPool pool(options(program(reader())), take());
  pool.ask(0, "one");
  waitForAll(pool);
  const std::set<pid_t> running = ownChildren();
  ASSERT_EQ(running.size(), 1u);
  const pid_t pid = *running.begin();
  ASSERT_EQ(::kill(pid, SIGKILL), 0);
  siginfo_t ended;
  ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(pid), &ended, WEXITED | WNOWAIT), 0);
  pool.ask(1, "two");
  waitForAll(pool);
  EXPECT_EQ(answers[1].bytes, "read two");
  EXPECT_EQ(pool.starts(), 2);
  EXPECT_EQ(complaints, Strings{});
  EXPECT_EQ(ownChildren().size(), 1u);
}

TEST_F(Readers, ThatHangCostOneFileItsTimeAndAreEndedWithAllTheyStarted) {
  const std::string script = program(reader(
      "if ($question =~ / 3$/) { my $pid = fork; exec 'sleep', 1000 unless $pid; open my $log, '>', '" +
      log() + "'; print $log $pid; close $log; sleep 1000 }\n"));
  ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);  // orphans come to this process, to be waited for
  // Again with more time where the system was too busy for the program to start what it is to start.
  std::string sleeper;
  for (auto time = 300ms; sleeper.empty() && time < 1min; time *= 3) {
    answers.clear();
    ReaderPool::Options hasty = options(script);
    hasty.timeToAnswer = time;
    ReaderPool pool(hasty, take());
    askAll(pool, 6);
    sleeper = contentOf(log());
    if (sleeper.empty()) reap(ownChildren());
  }
  ASSERT_FALSE(sleeper.empty());
  EXPECT_EQ(answers[3].kind, ReaderAnswer::Unreadable);
  EXPECT_EQ(answers[3].bytes, "reader gave no answer in time");
  EXPECT_EQ(count(ReaderAnswer::Read), 5u);
  int status = 0;
  EXPECT_EQ(::waitpid(std::stoi(sleeper), &status, 0), std::stoi(sleeper));
  EXPECT_TRUE(WIFSIGNALED(status));
  ::prctl(PR_SET_CHILD_SUBREAPER, 0);
  EXPECT_EQ(ownChildren(), std::set<pid_t>{});
}

TEST_F(Readers, ThatTalkNonsenseCostThatFile) {
  for (const char* const nonsense :
       {"what?\\n", "ok many\\n", "ok -1\\n", "ok 99999999999\\n", "ok 1", "ok 3\\nabcdef"}) {
    answers.clear();
    ReaderPool::Options brief = options(
        program(reader("if ($question =~ / 1$/) { print \"" + std::string(nonsense) + "\"; sleep 1000 }")));
    brief.timeToAnswer = 1s;
    ReaderPool pool(brief, take());
    askAll(pool, 4);
    EXPECT_EQ(count(ReaderAnswer::Read) + count(ReaderAnswer::Unreadable), 4u) << nonsense;
    EXPECT_EQ(answers[0].kind, ReaderAnswer::Read) << nonsense;
    EXPECT_EQ(answers[3].kind, ReaderAnswer::Read) << nonsense;
  }
}

TEST_F(Readers, ThatNeverStopTalkingAreEnded) {
  ReaderPool pool(options(shell("exec yes")), take());
  askAll(pool, 1);
  EXPECT_EQ(answers[0].kind, ReaderAnswer::Unreadable);
  EXPECT_EQ(complaints,
            Strings{"reader can't be used, it gave an answer that makes no sense: see that Debian's "
                    "reader-package is installed whole"});
  EXPECT_EQ(ownChildren(), std::set<pid_t>{});
}

TEST_F(Readers, GetNoMoreMemoryThanIsSaid) {
  ReaderPool::Options little =
      options(program(reader("if ($question =~ / 1$/) { my @much = map { 'x' x 10_000_000 } 1 .. 100 }")));
  little.mostMemory = 200'000'000;
  ReaderPool pool(little, take());
  askAll(pool, 3);
  EXPECT_EQ(answers[1].kind, ReaderAnswer::Unreadable);
  EXPECT_EQ(answers[2].bytes, "read question 2");
}

TEST_F(Readers, InheritNoDescriptorAndNoSignals) {
  const std::string secret = scratch.file("secret");
  const int open = ::open(secret.c_str(), O_RDONLY);  // without O_CLOEXEC, as a host may have it
  ASSERT_GE(open, 0);
  sigset_t blocked, before;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGUSR1);
  ::sigprocmask(SIG_BLOCK, &blocked, &before);
  const auto pipe = ::signal(SIGPIPE, SIG_IGN);
  ReaderPool pool(options(shell("ls -l /proc/$$/fd > \"$log\"; grep Sig /proc/self/status >> \"$log\"")),
                  take());
  askAll(pool, 1);
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

TEST_F(Readers, SurviveAForkOfTheirOwner) {
  ReaderPool pool(options(program(reader())), take());
  askAll(pool, 1);
  const pid_t child = ::fork();
  if (child == 0) {
    pool.ask(2, "two");
    waitForAll(pool);
    const bool reads = answers[2].bytes == "read two" && pool.starts() == 2;
    pool.~ReaderPool();
    ::_exit(reads ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  pool.ask(3, "three");
  waitForAll(pool);
  EXPECT_EQ(answers[3].bytes, "read three");
  EXPECT_EQ(pool.starts(), 1);
}

TEST_F(Readers, EndWithAnOwnerThatIsKilled) {
  ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  const std::string started = scratch.at("started");
  ASSERT_EQ(::mkfifo(started.c_str(), 0600), 0);
  const std::string script = shell("echo $$ > '" + started + "'; exec sleep 1000");
  const pid_t owner = ::fork();
  if (owner == 0) {
    ReaderPool pool(options(script), take());
    askAll(pool, 1);
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

}  // namespace
