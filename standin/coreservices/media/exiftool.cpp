#include "standin/coreservices/media/exiftool.h"

#include <utility>

namespace standin::metadata {
namespace {

using std::chrono::steady_clock;

constexpr int kMostFailures = 3;
constexpr size_t kLongestAnswer = 16 << 20;
constexpr auto kTimeToEnd = std::chrono::seconds(1);

std::string failureOf(ChildProcess::Outcome outcome) {
  switch (outcome) {
    case ChildProcess::Outcome::Found:
      return "gave an answer that makes no sense";
    case ChildProcess::Outcome::Ended:
      return "ended without an answer";
    case ChildProcess::Outcome::Late:
      return "gave no answer in time";
    case ChildProcess::Outcome::TooLong:
      return "gave an answer without end";
  }
  return {};
}

}  // namespace

ExifTool::~ExifTool() {
  if (!process_ || !process_->isOurs()) return;
  if (process_->send("-stay_open\nFalse\n")) process_->waitForEnd(steady_clock::now() + kTimeToEnd);
}

bool ExifTool::start() {
  const std::optional<std::string> path = findProgram(options_.program);
  if (!path) {
    failures_ = kMostFailures;
    fail("isn't there: install Debian's libimage-exiftool-perl, or set PATH");
    return false;
  }
  // The user's own configuration must not change what is read.
  std::vector<std::string> arguments{"-config", "", "-stay_open", "True", "-@", "-", "-common_args"};
  arguments.insert(arguments.end(), options_.arguments.begin(), options_.arguments.end());
  process_ = ChildProcess::start(*path, arguments);
  if (!process_) {
    fail("can't be started: the system has no more processes or descriptors");
    return false;
  }
  ++starts_;
  return true;
}

ChildProcess::Outcome ExifTool::converse(const std::string& path, std::string& answer) {
  const std::string number = std::to_string(++questions_);
  if (!process_->send(path + "\n-execute" + number + '\n')) return ChildProcess::Outcome::Ended;
  const auto deadline = steady_clock::now() + options_.timeout;
  return process_->readUntil("{ready" + number + "}\n", deadline, kLongestAnswer, answer);
}

bool ExifTool::ask(const std::string& path, const std::function<bool(std::string_view)>& accept) {
  if (process_ && !process_->isOurs()) process_.reset();
  for (;;) {
    const bool hadStarted = process_ != nullptr;
    if (failures_ >= kMostFailures || (!hadStarted && !start())) return false;
    std::string answer;
    const ChildProcess::Outcome outcome = converse(path, answer);
    if (outcome == ChildProcess::Outcome::Found && accept(answer)) {
      failures_ = 0;
      return true;
    }
    process_.reset();
    // One that had started before may have been ended from outside, long before this file.
    if (outcome == ChildProcess::Outcome::Ended && hadStarted) continue;
    fail(failureOf(outcome) + " for " + path);
    return false;
  }
}

void ExifTool::fail(const std::string& what) {
  ++failures_;
  if (std::exchange(complained_, true) || !options_.complain) return;
  options_.complain(options_.program + ' ' + what + ". Attributes of media and documents may be missing.");
}

}  // namespace standin::metadata
