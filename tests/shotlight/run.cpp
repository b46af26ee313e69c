#include "tests/shotlight/run.h"

#include <fcntl.h>
#include <limits.h>
#include <linux/capability.h>
#include <poll.h>
#include <pty.h>
#include <regex.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <stdexcept>

#include "tests/support/tier.h"

Files files;

std::string exampleLibrary() {
  return std::filesystem::canonical(files.library);
}

namespace {

const int kPatience = 60 * 1000;  // milliseconds
const int kNotStarted = 127;

struct Channel {
  int reader = -1;
  int writer = -1;
};

Channel makePipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  return {ends[0], ends[1]};
}

// Raw: what arrives is what was written.
Channel makeTerminal(unsigned short columns) {
  Channel channel;
  termios settings{};
  cfmakeraw(&settings);
  const winsize size = {.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
  if (openpty(&channel.reader, &channel.writer, nullptr, &settings, &size) != 0)
    throw std::runtime_error("no terminal");
  return channel;
}

Channel channelOf(Output output, unsigned short columns) {
  switch (output) {
    case Output::pipe:
      return makePipe();
    case Output::terminal:
      return makeTerminal(columns);
    case Output::full:
      return {-1, open("/dev/full", O_WRONLY | O_CLOEXEC)};
    case Output::closed:
      break;
  }
  return {};
}

void obeyPermissions() {
  for (const int capability : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH}) {
    if (geteuid() == 0 && prctl(PR_CAPBSET_DROP, capability, 0, 0, 0) != 0) _exit(kNotStarted);
  }
}

void replace(int descriptor, int by) {
  if (by >= 0) {
    dup2(by, descriptor);
  } else {
    close(descriptor);
  }
}

// Piece by piece, where the path is longer than the system takes in one call.
void enter(const std::string& folder) {
  for (size_t start = 0; start < folder.size();) {
    const size_t end =
        folder.size() - start < PATH_MAX ? folder.size() : folder.rfind('/', start + PATH_MAX - 1);
    if (chdir(folder.substr(start, end - start).c_str()) != 0) _exit(kNotStarted);
    start = end + 1;
  }
}

// To look for leaks takes a sanitized program longer than to do what is tested: in the quick tier each eighth
// run does.
bool looksForLeaks() {
  static unsigned runs = 0;
  return isLongTier() || runs++ % 8 == 0;
}

[[noreturn]] void become(const Launch& what, const std::string& cache, int output, int errors, bool leaks) {
  replace(STDOUT_FILENO, output);
  replace(STDERR_FILENO, errors);
  enter(what.folder);
  setenv("XDG_CACHE_HOME", cache.c_str(), 1);
  setenv("TERM", "dumb", 1);
  if (!leaks) setenv("ASAN_OPTIONS", "detect_leaks=0", 0);
  for (const char* const variable : {"LS_COLORS", "NO_COLOR", "COLUMNS"}) unsetenv(variable);
  for (const std::string& variable : what.environment) putenv(const_cast<char*>(variable.c_str()));
  if (what.unprivileged) obeyPermissions();
  if (what.pendingSignal != 0) {
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, what.pendingSignal);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    raise(what.pendingSignal);
  }
  std::vector<char*> words = {const_cast<char*>(what.program.c_str())};
  for (const std::string& argument : what.arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  execv(words[0], words.data());
  _exit(kNotStarted);
}

// False at the end. A terminal ends with an error.
bool readSome(int descriptor, std::string& text) {
  char buffer[4096];
  const ssize_t count = read(descriptor, buffer, sizeof buffer);
  if (count <= 0) return false;
  text.append(buffer, static_cast<size_t>(count));
  return true;
}

int statusOf(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Result& result) {
  return out << "status " << result.status << "\noutput: " << result.output << "\nerrors: " << result.errors;
}

Result run(const Launch& what) {
  return Running(what).finish();
}

Running::Running(const Launch& what) {
  const Channel output = channelOf(what.output, what.columns);
  const Channel errors = channelOf(what.errors, what.columns);
  const bool leaks = looksForLeaks();
  child_ = fork();
  if (child_ < 0) throw std::runtime_error("no process");
  if (child_ == 0) become(what, cache_.path(), output.writer, errors.writer, leaks);
  if (output.writer >= 0) close(output.writer);
  if (errors.writer >= 0) close(errors.writer);
  descriptors_[0] = output.reader;
  descriptors_[1] = errors.reader;
}

Running::~Running() {
  for (const int descriptor : descriptors_) {
    if (descriptor >= 0) close(descriptor);
  }
  if (child_ <= 0) return;
  kill(child_, SIGKILL);
  statusOf(child_);
}

// False when there is no more to read.
bool Running::readSome() {
  pollfd waiting[] = {{descriptors_[0], POLLIN, 0}, {descriptors_[1], POLLIN, 0}};
  if (waiting[0].fd < 0 && waiting[1].fd < 0) return false;
  if (poll(waiting, 2, kPatience) == 0) {
    kill(child_, SIGKILL);
    ADD_FAILURE() << "the program said nothing for " << kPatience << " ms";
    return false;
  }
  std::string* const texts[] = {&result_.output, &result_.errors};
  for (int i = 0; i < 2; ++i) {
    if (waiting[i].fd < 0 || !waiting[i].revents || ::readSome(waiting[i].fd, *texts[i])) continue;
    close(descriptors_[i]);
    descriptors_[i] = -1;
  }
  return true;
}

bool Running::waitUntil(const std::function<bool(const std::string&)>& enough) {
  while (!enough(result_.output.substr(0, result_.output.rfind('\n') + 1))) {
    if (!readSome()) return false;
  }
  return true;
}

bool Running::waitForLine(const std::string& line) {
  return waitUntil([&](const std::string& output) {
    return ('\n' + output).find('\n' + line + '\n') != std::string::npos;
  });
}

void Running::send(int signal) {
  kill(child_, signal);
}

Result Running::finish() {
  while (readSome()) {
  }
  result_.status = statusOf(child_);
  child_ = 0;
  return result_;
}

Result find(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "find");
  return run({.arguments = std::move(arguments)});
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) result.push_back(line);
  return result;
}

void expectError(const Result& result, const std::string& message) {
  EXPECT_EQ(result.status, 2) << result;
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "shotlight: " + message + "\n");
}

testing::AssertionResult startsWith(const std::string& text, const std::string& start) {
  if (text.starts_with(start)) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "'" << text << "' does not start with '" << start << "'";
}

testing::AssertionResult matches(const std::string& text, const std::string& pattern) {
  regex_t whole;
  if (regcomp(&whole, ("^(" + pattern + ")$").c_str(), REG_EXTENDED | REG_NOSUB) != 0)
    return testing::AssertionFailure() << "'" << pattern << "' is no regular expression";
  const bool found = regexec(&whole, text.c_str(), 0, nullptr, 0) == 0;
  regfree(&whole);
  if (found) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "'" << text << "' does not match '" << pattern << "'";
}
