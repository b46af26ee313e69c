// readers/: programs that read what is in files, several at once, beside this process: a file that makes one
// of them fail, hang or swell costs that file only. It includes no other room.
//
// Here: so many processes of one program, which are asked about one file after the other.
//
// A process prints "ready\n" once it can be asked. A question is any bytes without a zero byte, and a zero
// byte. Answers come in the order of the questions, each a line and so many bytes: "ok LENGTH\n" and what is
// in the file; "error LENGTH\n" and why there is nothing to be said of what is in it, for people; "unreadable
// LENGTH\n" and why it can't be read now; "part LENGTH\n" as "ok", where there is more than is told. It ends
// at the end of its input.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "standin/coreservices/readers/child_process.h"
#include "standin/coreservices/readers/reader_answer.h"

namespace standin::metadata {

class ReaderPool {
 public:
  using Ticket = uint64_t;
  using Milliseconds = std::chrono::milliseconds;

  struct Options {
    std::string name;     // for people
    std::string program;  // looked up in PATH unless it has a slash
    std::string package;  // of Debian, which the program is in; empty for one of ours
    // Of the program, asked for when it is started.
    std::function<std::vector<std::string>()> arguments = [] { return std::vector<std::string>(); };
    size_t processes = 1;   // at the most
    size_t mostMemory = 0;  // bytes of address space of each; 0: no limit of ours
    Milliseconds timeToStart = std::chrono::seconds(30);
    Milliseconds timeToAnswer = std::chrono::seconds(5);  // for one file
    // Called once where the program can't be used.
    std::function<void(const std::string&)> complain = [](const std::string&) {};
  };
  // Called from within wait(), and may ask again.
  using Take = std::function<void(Ticket, ReaderAnswer)>;

  ReaderPool(Options options, Take take);
  // Ends the processes.
  ~ReaderPool();
  ReaderPool(const ReaderPool&) = delete;
  ReaderPool& operator=(const ReaderPool&) = delete;

  // Every question is answered in the end, but for those that are forgotten.
  enum class Turn { First, Last };  // among those that no process was asked yet
  void ask(Ticket ticket, std::string question, Turn turn = Turn::Last);
  // Questions that no process was asked yet.
  void forget(const std::function<bool(Ticket)>& which);
  bool isIdle() const { return asked_ == 0 && questions_.empty(); }

  // Asks what can be asked and takes the answers that are there; waits for some where there are none, no
  // longer than that. A signal ends the waiting.
  void wait(Milliseconds time);

  int starts() const { return starts_; }

 private:
  using Clock = std::chrono::steady_clock;

  struct Question {
    Ticket ticket;
    std::string text;
    bool again = false;  // the process that was asked first ended without an answer
  };

  struct Reader {
    std::unique_ptr<ChildProcess> process;
    std::list<Question> asked;  // the first is being read
    std::string received;
    bool ready = false;
    Clock::time_point deadline;  // for being ready, then for the first answer
  };

  bool start();
  void startAsNeeded();
  bool askMore(Reader& reader);
  void forgetOthersProcesses();
  bool takeAnswers(Reader& reader);
  void fail(Reader& reader, const std::string& how, bool ended);
  void giveUp(const std::string& why);
  std::string howToHave() const;
  void answer(Question question, ReaderAnswer answer);
  int millisecondsToWait(Milliseconds time) const;

  const Options options_;
  const Take take_;
  std::list<Question> questions_;  // that no process was asked
  size_t asked_ = 0;               // questions
  std::vector<std::unique_ptr<Reader>> readers_;
  int starts_ = 0;
  int failedStarts_ = 0;  // in a row
  bool usable_ = true;
};

}  // namespace standin::metadata
