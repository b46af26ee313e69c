#include "standin/coreservices/readers/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace standin::metadata {
namespace {

bool isProgram(const std::string& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

void restoreSignals() {
  for (int signal = 1; signal < NSIG; ++signal) ::signal(signal, SIG_DFL);
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

// Between fork and exec nothing may be called but what is safe in a signal handler: no memory is taken here.
[[noreturn]] void become(const char* path, char* const* arguments, int socket, pid_t parent,
                         size_t mostMemory) {
  constexpr int kCannotRun = 127;
  ::setpgid(0, 0);
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(kCannotRun);  // the parent has ended meanwhile
  restoreSignals();
  const rlimit memory{mostMemory, mostMemory};
  if (mostMemory > 0) ::setrlimit(RLIMIT_AS, &memory);
  const int nowhere = ::open("/dev/null", O_WRONLY);
  if (nowhere < 0 || ::dup2(socket, STDIN_FILENO) < 0 || ::dup2(socket, STDOUT_FILENO) < 0 ||
      ::dup2(nowhere, STDERR_FILENO) < 0) {
    ::_exit(kCannotRun);
  }
  ::close_range(STDERR_FILENO + 1, ~0U, 0);
  ::execv(path, arguments);
  ::_exit(kCannotRun);
}

// A socket numbered above the standard descriptors, which become() puts others in the place of.
bool makeSockets(int (&sockets)[2]) {
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) return false;
  for (int& socket : sockets) {
    if (socket > STDERR_FILENO) continue;
    const int higher = ::fcntl(socket, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(socket);
    socket = higher;
  }
  if (sockets[0] >= 0 && sockets[1] >= 0) return true;
  for (const int socket : sockets) {
    if (socket >= 0) ::close(socket);
  }
  return false;
}

}  // namespace

std::optional<std::string> findProgram(const std::string& name) {
  if (name.find('/') != std::string::npos) return isProgram(name) ? std::optional(name) : std::nullopt;
  const char* const variable = std::getenv("PATH");
  const std::string folders = variable ? variable : "/usr/local/bin:/usr/bin:/bin";
  for (size_t start = 0; start <= folders.size();) {
    const size_t end = std::min(folders.find(':', start), folders.size());
    const std::string folder = folders.substr(start, end - start);
    if (std::string path = (folder.empty() ? "." : folder) + '/' + name; isProgram(path)) return path;
    start = end + 1;
  }
  return {};
}

ChildProcess::ChildProcess(pid_t pid, int socket) : pid_(pid), owner_(::getpid()), socket_(socket) {}

std::unique_ptr<ChildProcess> ChildProcess::start(const std::string& path,
                                                  const std::vector<std::string>& arguments,
                                                  size_t mostMemory) {
  std::vector<char*> argv{const_cast<char*>(path.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  int sockets[2];
  if (!makeSockets(sockets)) return nullptr;
  const pid_t parent = ::getpid();
  const pid_t pid = ::fork();
  if (pid == 0) become(path.c_str(), argv.data(), sockets[1], parent, mostMemory);
  ::close(sockets[1]);
  if (pid < 0) {
    ::close(sockets[0]);
    return nullptr;
  }
  ::setpgid(pid, pid);  // here too, so that it is done whichever of the two runs first
  return std::unique_ptr<ChildProcess>(new ChildProcess(pid, sockets[0]));
}

ChildProcess::~ChildProcess() {
  ::close(socket_);
  if (!isOurs()) return;
  ::kill(-pid_, SIGKILL);
  while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

bool ChildProcess::isOurs() const {
  return ::getpid() == owner_;
}

bool ChildProcess::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0) return false;
    bytes.remove_prefix(static_cast<size_t>(sent));
  }
  return true;
}

bool ChildProcess::receive(std::string& text) {
  constexpr int kMostAtOnce = 64;  // a program that never stops printing is looked at in between
  char buffer[65536];
  for (int i = 0; i < kMostAtOnce; ++i) {
    const ssize_t size = ::recv(socket_, buffer, sizeof buffer, MSG_DONTWAIT);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return errno == EAGAIN || errno == EWOULDBLOCK;
    if (size == 0) return false;
    text.append(buffer, static_cast<size_t>(size));
    if (static_cast<size_t>(size) < sizeof buffer) return true;
  }
  return true;
}

}  // namespace standin::metadata
