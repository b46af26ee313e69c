// interpreter/: programs of the host language: what their names stand for, whether the types fit, and how
// they run. They reach the plug-in through host.h alone. May include source/, program/ and what that may
// include, and standin/system/paths.h.
//
// What runs a program. A checked expression is a function that computes its value, a checked statement one
// that does it: what could be decided before the program runs is decided then.
#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "standin/host/interpreter/program.h"
#include "standin/host/language/declarations.h"
#include "standin/host/value.h"

namespace standin::host {

class Machine;

// The variables of a call of a method.
struct Frame {
  Machine& machine;
  Value self;  // nil outside of classes
  std::vector<Value> slots = {};
  Value result = {};
  int line = 0;
};

// What comes after a statement: the next one, the end of the method, or what is behind or at the end of a
// loop: that of the number, counted from the outermost one of the method.
struct Flow {
  enum Kind { next, giveBack, exit, proceed } kind = next;
  size_t loop = 0;
};

using Code = std::function<Value(Frame&)>;
using Action = std::function<Flow(Frame&)>;

// What C++ throws for an exception of the program.
struct Thrown {
  Value exception;
  std::vector<StackLine> stack = {};  // as far as it has come
  bool isFinal = false;               // an event handler didn't catch it: nobody else may
};
struct Quit {
  int status;
};
struct Interruption {};  // the surroundings want an end

// Raises an exception of the host language.
[[noreturn]] void raise(const char* className, const std::string& message = "", int errorNumber = 0);
// Raises the first exception that the plug-in raised since the last time.
void passOnExceptions();

// A method of the program.
struct Function {
  std::string name;  // for stacks: "Watcher.Finish"
  Declaration declaration = {};
  size_t slots = 0;
  Action body = {};
};

class Machine {
 public:
  explicit Machine(const Surroundings& surroundings);

  // Each is called for every statement and every turn of a loop.
  void step() {
    if (++steps_ % kStepsBetweenQuestions == 0) askWhetherToGoOn();
    throwPending();
  }
  void throwPending() {
    if (pending_) std::rethrow_exception(std::exchange(pending_, nullptr));
  }
  void askWhetherToGoOn();
  // Raises a StackOverflowException where calls have used up the program's part of the stack.
  void requireStack() const;
  // Calls it with the values of its parameters, of their types.
  Value invoke(const Function& function, const Value& self, std::vector<Value> arguments);
  // For calls that come from the host: what they throw comes out at the program's next step.
  void invokeLater(const Function& function, const Value& self) noexcept;
  // From now on invokeLater does nothing.
  void close() { closed_ = true; }

  const Surroundings& surroundings;
  std::vector<Value> globals;
  size_t raisedForArrays = 0;  // how often the plug-in raised an exception instead of giving an array

 private:
  static constexpr size_t kStepsBetweenQuestions = 1000;

  const char* const stackLimit_;
  size_t steps_ = 0;
  std::exception_ptr pending_;
  bool closed_ = false;
};

}  // namespace standin::host
