#include "bench/processes.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace bench {
namespace {

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

[[noreturn]] void become(const std::vector<std::string>& command, int output, int errors) {
  ::dup2(output, STDOUT_FILENO);
  ::dup2(errors, STDERR_FILENO);
  std::vector<char*> words;
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  ::execvp(words[0], words.data());
  ::_exit(127);
}

std::string contentOf(std::FILE* file) {
  std::string content;
  std::rewind(file);
  for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) content += static_cast<char>(c);
  return content;
}

size_t linesIn(std::FILE* file) {
  size_t lines = 0;
  char buffer[64 * 1024];
  std::rewind(file);
  while (const size_t count = std::fread(buffer, 1, sizeof buffer, file)) {
    lines += static_cast<size_t>(std::count(buffer, buffer + count, '\n'));
  }
  return lines;
}

}  // namespace

Usage run(const std::vector<std::string>& command) {
  std::FILE* const output = std::tmpfile();
  std::FILE* const errors = std::tmpfile();
  if (!output || !errors) {
    std::perror("no temporary file");
    std::exit(1);
  }
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = ::fork();
  if (child == 0) become(command, ::fileno(output), ::fileno(errors));
  Usage usage;
  int status = 0;
  rusage resources{};
  if (child > 0 && ::wait4(child, &status, 0, &resources) == child) {
    usage.elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (WIFEXITED(status)) usage.status = WEXITSTATUS(status);
    usage.seconds = secondsOf(resources.ru_utime) + secondsOf(resources.ru_stime);
    usage.megabytes = static_cast<double>(resources.ru_maxrss) / 1024;
    usage.lines = linesIn(output);
    usage.errors = contentOf(errors);
  }
  std::fclose(output);
  std::fclose(errors);
  return usage;
}

}  // namespace bench
