#include "tests/shotlight/documented_programs.h"

#include <optional>
#include <sstream>
#include <utility>

namespace {

const std::string kFence = "```";

[[noreturn]] void fail(int line, const std::string& what) {
  throw DocumentError("line " + std::to_string(line) + ": " + what);
}

class Reader {
 public:
  explicit Reader(const std::string& document) : stream_(document) {}

  std::vector<DocumentedProgram> read() {
    for (std::string line; next(line);) {
      if (line.starts_with(kFence)) {
        readBlock(line.substr(kFence.size()));
      } else if (line.starts_with("    ")) {
        fail(line_, "a block that is only indented isn't run");
      } else if (!line.empty() && open_) {
        fail(open_->line, "no output follows this program");
      }
    }
    if (open_) fail(open_->line, "no output follows this program");
    return std::move(programs_);
  }

 private:
  bool next(std::string& line) {
    ++line_;
    return static_cast<bool>(std::getline(stream_, line));
  }

  void readBlock(const std::string& language) {
    const int begin = line_;
    std::string text;
    for (std::string line;; text += line + '\n') {
      if (!next(line)) fail(begin, "this block doesn't end");
      if (line == kFence) break;
    }
    if (language == "text" && open_) {
      open_->output = text;
      programs_.push_back(*std::exchange(open_, std::nullopt));
    } else if (open_) {
      fail(open_->line, "no output follows this program");
    } else if (language == "basic") {
      open_ = {begin, text, {}};
    } else if (!language.empty()) {
      fail(begin, "nobody runs a block of " + language + " here");
    }
  }

  std::istringstream stream_;
  int line_ = 0;
  std::optional<DocumentedProgram> open_;  // whose output comes next
  std::vector<DocumentedProgram> programs_;
};

}  // namespace

std::vector<DocumentedProgram> programsOf(const std::string& document) {
  return Reader(document).read();
}

std::vector<DocumentedProgram> commandsOf(const std::string& document) {
  const std::string kIndent = "    ", kCommand = kIndent + "$ ", kRun = kCommand + "./run ";
  std::istringstream stream(document);
  std::vector<DocumentedProgram> commands;
  bool isOutput = false;
  int number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    if (line.starts_with(kRun)) commands.push_back({number, line.substr(kRun.size()), {}});
    isOutput = line.starts_with(kRun) || (isOutput && line.starts_with(kIndent));
    if (isOutput && !line.starts_with(kCommand)) commands.back().output += line.substr(kIndent.size()) + '\n';
  }
  return commands;
}

std::string commandIn(const std::string& program) {
  const std::string mark = "// meanwhile: ";
  const size_t begin = program.find(mark);
  if (begin == std::string::npos) return {};
  return program.substr(begin + mark.size(), program.find('\n', begin) - begin - mark.size());
}
