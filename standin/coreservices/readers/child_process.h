// A program that runs beside this process and is talked to through its standard input and output. Linux only.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin::metadata {

// The path of a program, looked up in PATH unless `name` has a slash in it. Nothing when there is none.
std::optional<std::string> findProgram(const std::string& name);

// The program gets nothing of this process but its environment: no descriptors, no blocked or ignored
// signals; what it says on standard error is thrown away. It ends when this process does, however that ends.
class ChildProcess {
 public:
  // Null when no process can be had. A program that can't be run ends at once. It gets no more than so many
  // bytes of address space, unless that is 0.
  static std::unique_ptr<ChildProcess> start(const std::string& path,
                                             const std::vector<std::string>& arguments,
                                             size_t mostMemory = 0);
  // Ends the program, with all that it has started, and waits for it.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // False when the program is gone. Never raises SIGPIPE.
  bool send(std::string_view bytes);

  // Appends what the program has printed by now, without waiting for more. False when it has ended, and
  // nothing is left to be read.
  bool receive(std::string& text);

  // Becomes readable when there is something to receive. This object's.
  int descriptor() const { return socket_; }

  // False in a process that was forked from the one that started the program: it belongs to that one.
  bool isOurs() const;
  pid_t pid() const { return pid_; }

 private:
  ChildProcess(pid_t pid, int socket);

  pid_t pid_;
  pid_t owner_;
  int socket_;
};

}  // namespace standin::metadata
