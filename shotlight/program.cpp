// Programs of the host language.
#include <CoreFoundation/CoreFoundation.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>

#include "shotlight/commands.h"
#include "shotlight/errors.h"
#include "shotlight/incomplete.h"
#include "shotlight/interrupts.h"
#include "shotlight/output.h"
#include "shotlight/session.h"
#include "shotlight/store_options.h"
#include "shotlight/text.h"
#include "standin/gate/shown_text.h"
#include "standin/host/interpreter/program.h"

namespace shotlight {
namespace {

namespace host = standin::host;

constexpr size_t kMostBytes = 4 << 20;

std::string textOf(const std::string& file) {
  const std::string what = "program " + quotedName(file) + ": ";
  std::string text(kMostBytes + 1, '\0');
  std::ifstream stream(file, std::ios::binary);
  if (stream) stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (stream.bad() || !stream.is_open())
    throw CommandError(what + std::strerror(errno) + "; name a file with a program in it");
  text.resize(static_cast<size_t>(stream.gcount()));
  if (text.size() > kMostBytes)
    throw CommandError(what + "larger than 4 MB; name a file with a program in it");
  return text;
}

// They end with any of CR LF, LF and CR.
std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines(1);
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    if (text[i] == '\r' || text[i] == '\n') {
      lines.emplace_back();
    } else {
      lines.back() += text[i];
    }
  }
  return lines;
}

// The first bytes of the line, of so many characters.
std::string beginningOf(const std::string& line, int characters) {
  size_t end = 0;
  while (end < line.size() && ((line[end] & 0xC0) == 0x80 || characters-- > 0)) ++end;
  return line.substr(0, end);
}

// FILE:LINE:COLUMN, what is wrong, and the line with a mark under the place.
[[noreturn]] void reportMistake(const std::string& file, const std::string& text,
                                const host::SourceError& error) {
  const std::string line = linesOf(text).at(static_cast<size_t>(error.place.line) - 1);
  const std::string before = standin::shownText(beginningOf(line, error.place.column - 1));
  throw CommandError(file + ':' + std::to_string(error.place.line) + ':' +
                         std::to_string(error.place.column) + ": " + error.what(),
                     {"  " + standin::shownText(line), "  " + std::string(displayWidth(before), ' ') + '^'});
}

std::unique_ptr<host::Program> read(const std::string& file, const std::string& text) {
  try {
    return std::make_unique<host::Program>(text);
  } catch (const host::SourceError& error) {
    reportMistake(file, text, error);
  }
}

// The exception that nobody caught, and the lines that led to it, the innermost first; of a deep recursion
// its ends.
[[noreturn]] void reportFailure(const std::string& file, const std::string& text,
                                const host::Outcome& outcome) {
  constexpr size_t kMost = 50;
  const std::vector<std::string> lines = linesOf(text);
  std::vector<std::string> stack;
  for (size_t i = 0; i < outcome.stack.size(); ++i) {
    const size_t behind = outcome.stack.size() - i;
    if (i >= kMost && behind > 1) {
      if (behind == 2) stack.push_back("  ... " + std::to_string(outcome.stack.size() - kMost - 1) + " more");
      continue;
    }
    const host::StackLine& each = outcome.stack[i];
    const std::string place = each.line > 0 ? ", " + file + ':' + std::to_string(each.line) + ": " : "";
    const std::string line = each.line > 0 ? lines.at(static_cast<size_t>(each.line) - 1) : "";
    stack.push_back("  in " + each.method + place +
                    line.substr(std::min(line.find_first_not_of(" \t"), line.size())));
  }
  const std::string number =
      outcome.errorNumber == 0 ? "" : " (error " + std::to_string(outcome.errorNumber) + ')';
  throw CommandError(
      file + ": " + outcome.className + (outcome.message.empty() ? "" : ": " + outcome.message) + number,
      stack);
}

struct CommandLine {
  std::string plugin;
  bool noStore = false;
  std::string file;
  std::vector<std::string> arguments;  // the program's
};

// Options stand before the file; what follows it is the program's, whatever it looks like.
CommandLine parse(const Arguments& arguments) {
  auto each = arguments.begin();
  bool optionsEnded = false;
  while (each != arguments.end() && each->starts_with('-') && !optionsEnded) {
    optionsEnded = *each == "--";
    const bool hasValue = *each++ == "--plugin";
    if (hasValue && each != arguments.end()) ++each;
  }
  CommandLine parsed;
  takeOptions("program", {arguments.begin(), each},
              {nameOption("--plugin", parsed.plugin), switchOption("--no-store", parsed.noStore)});
  if (each == arguments.end())
    throw UsageError("program needs a file with a program in it; see shotlight program --help");
  parsed.file = *each++;
  parsed.arguments.assign(each, arguments.end());
  return parsed;
}

// The exit status.
int run(const CommandLine& line, const std::string& text) {
  Interrupts interrupts;
  host::Surroundings surroundings;
  surroundings.arguments = line.arguments;
  // Line by line: who reads it may wait for one, and it is there when the program is killed.
  surroundings.print = [](const std::string& printed) {
    print(printed + '\n');
    finishOutput();
  };
  surroundings.mayGoOn = [&interrupts] { return interrupts.signal() == 0; };
  surroundings.waitForEvents = [](double seconds) {
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, seconds, false);
  };
  surroundings.endWait = [] { CFRunLoopStop(CFRunLoopGetCurrent()); };
  const host::Outcome outcome = read(line.file, text)->run(surroundings);
  finishOutput();
  tellUnseen();
  if (outcome.kind == host::Outcome::Kind::failed) reportFailure(line.file, text, outcome);
  int status = outcome.status;
  if (outcome.kind == host::Outcome::Kind::interrupted) {
    status = kInterrupted + interrupts.signal();
    interrupts.tell();
  }
  interrupts.setStatus(status);
  return status;
}

}  // namespace

int program(const Arguments& arguments) {
  const CommandLine line = parse(arguments);
  const std::string text = textOf(line.file);
  useStore(!line.noStore);
  Session session(line.plugin);
  const int status = run(line, text);
  session.close();
  return status;
}

}  // namespace shotlight
