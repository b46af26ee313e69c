// The program document-text, as one that asks it for texts.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <chrono>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/scratch_folder.h"

struct Answer {
  std::string status;  // "ok", "error" or "unreadable"; empty when there was no answer
  std::string text;
  bool operator==(const Answer&) const = default;
};

inline Answer ok(std::string text) {
  return {"ok", std::move(text)};
}

inline Answer error(std::string text) {
  return {"error", std::move(text)};
}

inline Answer unreadable(std::string text) {
  return {"unreadable", std::move(text)};
}

inline std::ostream& operator<<(std::ostream& out, const Answer& answer) {
  return out << answer.status << " '" << answer.text.substr(0, 200) << '\'';
}

class DocumentWorker {
 public:
  // `searchPath` is where it looks for programs; null for where this one does.
  explicit DocumentWorker(const char* searchPath = nullptr);
  ~DocumentWorker();
  DocumentWorker(const DocumentWorker&) = delete;
  DocumentWorker& operator=(const DocumentWorker&) = delete;

  void send(std::string_view bytes);
  void closeInput();
  Answer receive();
  Answer ask(std::string_view format, std::string_view path);

  // The processor's time that it has used so far: other than the time, it is the same on a busy machine.
  std::chrono::milliseconds processorTime() const;

  // The exit status, once it has ended; -1 when a signal ended it.
  int wait();

  // Of what it wrote on standard output and nobody took.
  std::string rest();

 private:
  std::string line();
  std::string bytes(size_t count);

  pid_t process_ = 0;
  int input_ = -1;
  int output_ = -1;
};

class DocumentTest : public testing::Test {
 protected:
  // The answer about a file with this content.
  Answer read(std::string_view format, std::string_view content) {
    return worker.ask(format, scratch.file("document", content));
  }

  ScratchFolder scratch;
  DocumentWorker worker;
};
