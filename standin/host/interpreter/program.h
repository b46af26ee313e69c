// A program of the host language: read and checked as a whole, then run.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "standin/host/source/tree.h"

namespace standin::host {

// What a program asks of whoever runs it.
struct Surroundings {
  std::vector<std::string> arguments = {};
  // A line without its end, in UTF-8, or as its bytes where they are of no known encoding.
  std::function<void(const std::string& line)> print = [](const std::string&) {};
  // Runs the run loop for so long at the most, in seconds; 0: what is due alone.
  std::function<void(double seconds)> waitForEvents = [](double) {};
  // Called by a handler that ends the program, also when nobody waits.
  std::function<void()> endWait = [] {};
  // Asked every thousand steps, and before events are waited for. False ends the program.
  std::function<bool()> mayGoOn = [] { return true; };
};

struct StackLine {
  std::string method;
  int line;
};

struct Outcome {
  enum class Kind { ended, interrupted, failed } kind = Kind::ended;
  int status = 0;  // of ended: what Quit says, or 0
  // Of failed: the exception that nobody caught, the innermost method first.
  std::string className = {};
  std::string message = {};
  int errorNumber = 0;
  std::vector<StackLine> stack = {};
};

struct ProgramParts;

class Program {
 public:
  // Reads and checks it with the classes that the running host knows. Throws SourceError.
  explicit Program(std::string_view source);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // Once. Afterwards nothing is alive that the program held, be it in circles, but what the plug-in holds.
  Outcome run(const Surroundings& surroundings);

 private:
  const std::unique_ptr<ProgramParts> parts_;
};

}  // namespace standin::host
