#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include "standin/documents/file.h"
#include "standin/documents/formats.h"

namespace standin::documents {
namespace {

// A PDF says so near its start.
constexpr size_t kWhereNamed = 1024;

// Of what pdftotext complains about, enough to tell why there is no text.
constexpr size_t kMostComplaints = 4096;

constexpr int kNotThere = 127;  // as shells have it
constexpr int kForbidden = 3;   // by the document; 1 is a damaged one

class Pipe {
 public:
  Pipe() {
    if (::pipe2(ends_, O_CLOEXEC) != 0)
      throw UnreadableError(std::string("can't be read: ") + std::strerror(errno));
  }
  ~Pipe() {
    closeWriteEnd();
    ::close(ends_[0]);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  int readEnd() const { return ends_[0]; }
  int writeEnd() const { return ends_[1]; }
  void closeWriteEnd() {
    if (ends_[1] >= 0) ::close(ends_[1]);
    ends_[1] = -1;
  }

 private:
  int ends_[2];
};

// The file is standard input, so that its name is looked up once only, and its time of last access stays.
[[noreturn]] void becomePdftotext(int file, int output, int complaints, pid_t parent) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(1);
  ::dup2(file, STDIN_FILENO);
  ::dup2(output, STDOUT_FILENO);
  ::dup2(complaints, STDERR_FILENO);
  const rlimit memory{kMostMemoryOfPdftotext, kMostMemoryOfPdftotext};
  ::setrlimit(RLIMIT_AS, &memory);
  ::execlp("pdftotext", "pdftotext", "-enc", "UTF-8", "fd://0", "-", nullptr);
  ::_exit(kNotThere);
}

// pdftotext at work. It is gone when this goes.
class Pdftotext {
 public:
  explicit Pdftotext(int file) {
    const pid_t parent = ::getpid();
    process_ = ::fork();
    if (process_ < 0)
      throw UnreadableError(std::string("pdftotext can't be started: ") + std::strerror(errno));
    if (process_ == 0) becomePdftotext(file, output_.writeEnd(), complaints_.writeEnd(), parent);
    output_.closeWriteEnd();
    complaints_.closeWriteEnd();
  }

  ~Pdftotext() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    wait();
  }

  Pdftotext(const Pdftotext&) = delete;
  Pdftotext& operator=(const Pdftotext&) = delete;

  // Until it has written all, or as much as counts.
  void read(const Deadline& deadline) {
    pollfd ends[] = {{output_.readEnd(), POLLIN, 0}, {complaints_.readEnd(), POLLIN, 0}};
    while ((ends[0].fd >= 0 || ends[1].fd >= 0) && text.size() < kLongestText) {
      deadline.check();
      const int ready = ::poll(ends, std::size(ends), static_cast<int>(deadline.left().count()));
      if (ready < 0 && errno != EINTR) throw UnreadableError("can't be read: poll failed");
      if (ready <= 0) continue;
      readInto(text, kLongestText, ends[0]);
      readInto(complaints, kMostComplaints, ends[1]);
    }
  }

  // The exit status, once it has ended by itself; -1 when a signal ended it.
  int wait() {
    int status = 0;
    while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string text, complaints;

 private:
  // What is beyond the limit is read and forgotten. A file that has ended is asked no more.
  static void readInto(std::string& bytes, size_t limit, pollfd& end) {
    if (end.fd < 0 || end.revents == 0) return;
    char buffer[65536];
    const size_t got = readSome(end.fd, buffer, sizeof buffer);
    if (got == 0) end.fd = -1;
    bytes.append(buffer, std::min(got, limit - bytes.size()));
  }

  Pipe output_, complaints_;
  pid_t process_ = 0;
};

void checkSignature(int file) {
  char start[kWhereNamed];
  const ssize_t size = ::pread(file, start, sizeof start, 0);
  const std::string_view bytes(start, static_cast<size_t>(std::max<ssize_t>(size, 0)));
  if (bytes.find("%PDF-") == std::string_view::npos) throw DocumentError("is no PDF");
}

[[noreturn]] void failWith(int status, std::string_view complaints) {
  const auto complainsOf = [&](std::string_view what) {
    return complaints.find(what) != std::string_view::npos;
  };
  if (status == kNotThere) throw UnreadableError("pdftotext isn't there: install Debian's poppler-utils");
  if (complainsOf("Incorrect password") || complainsOf("encrypt")) throw DocumentError("is encrypted");
  if (complainsOf("not allowed")) throw DocumentError("forbids that its text is copied");
  // It, or the system for want of memory, ended it; or it failed for a reason that isn't the document's.
  if (status < 0) throw UnreadableError("makes pdftotext crash");
  if (status > kForbidden) throw UnreadableError("can't be read by pdftotext");
  throw DocumentError("is a damaged PDF");
}

}  // namespace

void readPdf(int file, const Deadline& deadline, Text& text) {
  checkSignature(file);
  Pdftotext pdftotext(file);
  pdftotext.read(deadline);
  if (pdftotext.text.size() < kLongestText) {
    const int status = pdftotext.wait();
    if (status != 0) failWith(status, pdftotext.complaints);
  }
  text.add(pdftotext.text);
  if (pdftotext.text.size() >= kLongestText) text.setFull();
}

}  // namespace standin::documents
