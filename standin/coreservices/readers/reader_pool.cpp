#include "standin/coreservices/readers/reader_pool.h"

#include <poll.h>

#include <algorithm>
#include <utility>

namespace standin::metadata {
namespace {

// Enough that a process never waits for the next question, and few enough to be asked again when it fails.
constexpr size_t kAskedAhead = 8;
// Starting a process takes as long as reading some files does.
constexpr size_t kWorthAnotherProcess = 8;
constexpr int kMostFailedStarts = 3;
constexpr std::string_view kReady = "ready\n";

}  // namespace

ReaderPool::ReaderPool(Options options, Take take) : options_(std::move(options)), take_(std::move(take)) {}

ReaderPool::~ReaderPool() = default;

void ReaderPool::ask(Ticket ticket, std::string question, Turn turn) {
  questions_.insert(turn == Turn::First ? questions_.begin() : questions_.end(),
                    {ticket, std::move(question)});
  startAsNeeded();
}

void ReaderPool::forget(const std::function<bool(Ticket)>& which) {
  std::erase_if(questions_, [&](const Question& question) { return which(question.ticket); });
}

bool ReaderPool::start() {
  const std::optional<std::string> path = findProgram(options_.program);
  if (!path) {
    giveUp("isn't there: " + howToHave());
    return false;
  }
  std::unique_ptr<ChildProcess> process =
      ChildProcess::start(*path, options_.arguments(), options_.mostMemory);
  if (!process) {
    giveUp("can't be started: the system has no more processes or descriptors");
    return false;
  }
  ++starts_;
  auto reader = std::make_unique<Reader>();
  reader->process = std::move(process);
  reader->deadline = Clock::now() + options_.timeToStart;
  readers_.push_back(std::move(reader));
  return true;
}

void ReaderPool::startAsNeeded() {
  forgetOthersProcesses();
  while (usable_ && !questions_.empty() && readers_.size() < options_.processes &&
         questions_.size() > readers_.size() * kWorthAnotherProcess) {
    if (!start()) return;
  }
}

// In a process that was forked from the one that started them.
void ReaderPool::forgetOthersProcesses() {
  if (readers_.empty() || readers_.front()->process->isOurs()) return;
  for (const auto& reader : readers_) {
    questions_.splice(questions_.begin(), reader->asked);
  }
  asked_ = 0;
  readers_.clear();
}

// False when it can't be asked any more, and has nothing left to answer. (Where it has, its answers may still
// be on their way, although it has ended since.)
bool ReaderPool::askMore(Reader& reader) {
  if (!reader.ready) return true;
  while (!questions_.empty() && reader.asked.size() < kAskedAhead) {
    if (!reader.process->send(questions_.front().text + '\0')) return !reader.asked.empty();
    if (reader.asked.empty()) reader.deadline = Clock::now() + options_.timeToAnswer;
    reader.asked.splice(reader.asked.end(), questions_, questions_.begin());
    ++asked_;
  }
  return true;
}

// False when the process failed, and is gone.
bool ReaderPool::takeAnswers(Reader& reader) {
  const bool goesOn = reader.process->receive(reader.received);
  if (!reader.ready && reader.received.starts_with(kReady)) {
    reader.ready = true;
    reader.received.erase(0, kReady.size());
    failedStarts_ = 0;
  }
  // One answer after the other is taken out of what was received.
  std::vector<std::pair<Question, ReaderAnswer>> taken;
  size_t used = 0;
  Parsed parsed = Parsed::More;
  while (reader.ready && used < reader.received.size()) {
    ReaderAnswer answer;
    size_t length = 0;
    parsed = reader.asked.empty()
                 ? Parsed::Nonsense
                 : parseAnswer(std::string_view(reader.received).substr(used), answer, length);
    if (parsed != Parsed::Answer) break;
    used += length;
    taken.emplace_back(std::move(reader.asked.front()), std::move(answer));
    reader.asked.pop_front();
    reader.deadline = Clock::now() + options_.timeToAnswer;
  }
  reader.received.erase(0, used);
  const bool nonsense =
      parsed == Parsed::Nonsense || (!reader.ready && reader.received.size() >= kReady.size());
  const bool lives = !nonsense && goesOn && askMore(reader);
  if (!lives)
    fail(reader, nonsense ? "gave an answer that makes no sense" : "ended without an answer", !nonsense);
  for (auto& [question, answer] : taken) this->answer(std::move(question), std::move(answer));
  return lives;
}

void ReaderPool::answer(Question question, ReaderAnswer answer) {
  --asked_;
  take_(question.ticket, std::move(answer));
}

// Ends the process. The file that it was at when it ended by itself may have had nothing to do with that, and
// gets a second chance.
void ReaderPool::fail(Reader& reader, const std::string& how, bool ended) {
  const auto mine =
      std::find_if(readers_.begin(), readers_.end(), [&](const auto& each) { return each.get() == &reader; });
  const std::unique_ptr<Reader> failed = std::move(*mine);
  readers_.erase(mine);
  failed->process.reset();
  std::list<Question> again = std::move(failed->asked);
  std::optional<Question> lost;
  if (!again.empty() && (!ended || again.front().again)) {
    lost = std::move(again.front());
    again.pop_front();
  } else if (!again.empty()) {
    again.front().again = true;
  }
  asked_ -= again.size();
  questions_.splice(questions_.begin(), again);
  if (!failed->ready && ++failedStarts_ >= kMostFailedStarts) {
    giveUp("can't be used, it " + how + ": " +
           (options_.package.empty() ? howToHave()
                                     : "see that Debian's " + options_.package + " is installed whole"));
  }
  if (lost) answer(std::move(*lost), {ReaderAnswer::Unreadable, options_.name + ' ' + how});
}

std::string ReaderPool::howToHave() const {
  if (options_.package.empty()) return "build it, as " + options_.program;
  return "install Debian's " + options_.package + ", or set PATH";
}

// From now on every question is answered at once.
void ReaderPool::giveUp(const std::string& why) {
  if (std::exchange(usable_, false)) options_.complain(options_.name + ' ' + why);
}

int ReaderPool::millisecondsToWait(Milliseconds time) const {
  Clock::time_point end = Clock::now() + time;
  for (const auto& reader : readers_) {
    if (!reader->ready || !reader->asked.empty()) end = std::min(end, reader->deadline);
  }
  const auto left = std::chrono::ceil<Milliseconds>(end - Clock::now());
  return static_cast<int>(std::max<int64_t>(left.count(), 0));
}

void ReaderPool::wait(Milliseconds time) {
  startAsNeeded();
  if (!usable_) {
    for (const Question& question : std::exchange(questions_, {})) {
      take_(question.ticket, {ReaderAnswer::Unreadable, {}});
    }
  }
  std::vector<Reader*> readers;
  std::vector<pollfd> wanted;
  for (size_t i = 0; i < readers_.size();) {
    Reader& reader = *readers_[i];
    if (!askMore(reader)) {
      fail(reader, "ended without an answer", true);
      continue;
    }
    readers.push_back(&reader);
    wanted.push_back({reader.process->descriptor(), POLLIN, 0});
    ++i;
  }
  if (wanted.empty()) return;
  ::poll(wanted.data(), wanted.size(), millisecondsToWait(time));
  for (size_t i = 0; i < readers.size(); ++i) {
    if (wanted[i].revents != 0 && !takeAnswers(*readers[i])) continue;
    Reader& reader = *readers[i];
    const bool waits = !reader.ready || !reader.asked.empty();
    if (waits && Clock::now() >= reader.deadline) fail(reader, "gave no answer in time", false);
  }
}

}  // namespace standin::metadata
