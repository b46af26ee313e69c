#include "tests/standin/documents/document_worker.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "tests/support/build_folder.h"

DocumentWorker::DocumentWorker(const char* searchPath) {
  const std::string program = builtFile("libexec/document-text");
  int questions[2];
  int answers[2];
  if (::pipe2(questions, O_CLOEXEC) != 0 || ::pipe2(answers, O_CLOEXEC) != 0)
    throw std::runtime_error("no pipe");
  process_ = ::fork();
  if (process_ == 0) {
    ::dup2(questions[0], STDIN_FILENO);
    ::dup2(answers[1], STDOUT_FILENO);
    if (searchPath) ::setenv("PATH", searchPath, 1);
    ::execl(program.c_str(), program.c_str(), nullptr);
    ::_exit(127);
  }
  ::close(questions[0]);
  ::close(answers[1]);
  input_ = questions[1];
  output_ = answers[0];
  ::signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(line(), "ready");
}

DocumentWorker::~DocumentWorker() {
  closeInput();
  ::close(output_);
  if (process_ <= 0) return;
  EXPECT_EQ(wait(), 0);  // it is not, after a crash or a leak
}

void DocumentWorker::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(input_, bytes.data(), bytes.size());
    if (written < 0) return;  // it has ended; no answer will tell
    bytes.remove_prefix(static_cast<size_t>(written));
  }
}

void DocumentWorker::closeInput() {
  if (input_ >= 0) ::close(input_);
  input_ = -1;
}

std::string DocumentWorker::bytes(size_t count) {
  std::string bytes(count, '\0');
  size_t got = 0;
  while (got < count) {
    const ssize_t now = ::read(output_, bytes.data() + got, count - got);
    if (now <= 0) break;
    got += static_cast<size_t>(now);
  }
  bytes.resize(got);
  return bytes;
}

std::string DocumentWorker::line() {
  std::string line;
  for (std::string next; !(next = bytes(1)).empty() && next != "\n";) line += next;
  return line;
}

Answer DocumentWorker::receive() {
  const std::string head = line();
  const size_t blank = head.find(' ');
  if (blank == std::string::npos) return {};
  return {head.substr(0, blank), bytes(std::stoul(head.substr(blank + 1)))};
}

Answer DocumentWorker::ask(std::string_view format, std::string_view path) {
  send(std::string(format) + ' ' + std::string(path) + '\0');
  return receive();
}

std::chrono::milliseconds DocumentWorker::processorTime() const {
  clockid_t clock{};
  timespec time{};
  if (::clock_getcpuclockid(process_, &clock) != 0 || ::clock_gettime(clock, &time) != 0) {
    throw std::runtime_error("the worker has no clock");
  }
  return std::chrono::milliseconds(time.tv_sec * 1000 + time.tv_nsec / 1000000);
}

int DocumentWorker::wait() {
  int status = 0;
  ::waitpid(process_, &status, 0);
  process_ = 0;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string DocumentWorker::rest() {
  std::string rest;
  for (std::string some; !(some = bytes(1)).empty();) rest += some;
  return rest;
}
