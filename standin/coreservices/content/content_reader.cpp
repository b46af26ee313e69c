#include "standin/coreservices/content/content_reader.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>
#include <vector>

#include "standin/coreservices/content/text_reader.h"
#include "standin/coreservices/media/exiftool.h"
#include "standin/coreservices/media/media_table.h"
#include "standin/coreservices/readers/child_process.h"
#include "standin/gate/shown_text.h"

namespace standin::metadata {
namespace {

// What the store keeps ends with what it is.
constexpr char kAnswer = 'a';   // after what is in the file
constexpr char kPart = 'p';     // after what is told of it, which isn't all
constexpr char kRefusal = 'r';  // after why nothing can be said

bool isSettledNow(const FileState& file) {
  timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  return isSettled(file, int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec);
}

size_t processors() {
  cpu_set_t set;
  return ::sched_getaffinity(0, sizeof set, &set) == 0 ? static_cast<size_t>(CPU_COUNT(&set)) : 1;
}

// A program is the same as long as its file is.
std::string identityOf(const std::string& program) {
  struct stat info;
  const std::optional<std::string> path = findProgram(program);
  if (!path || ::stat(path->c_str(), &info) != 0) return program + " missing";
  return *path + ' ' + std::to_string(info.st_size) + ' ' + std::to_string(info.st_mtim.tv_sec) + '.' +
         std::to_string(info.st_mtim.tv_nsec);
}

uint64_t hashOf(const std::string& text, uint64_t hash = 14695981039346656037ULL) {  // FNV-1a
  for (const char c : text) hash = (hash ^ static_cast<uint8_t>(c)) * 1099511628211ULL;
  return hash;
}

ContentReader::Options usualOptions() {
  ContentReader::Options options;
  options.complain = [](const std::string& message) {
    std::fprintf(stderr, "standin: metadata: %s\n", shownText(message).c_str());
  };
  options.tags = {exiftoolReader(processors()), {"perl", "exiftool"}};
  options.text.pool = textReader(processors());
  options.text.programs = {options.text.pool.program, "pdftotext"};
  return options;
}

ContentReader* ownReader = nullptr;  // once it is made
int manyLookups = 0;

char endOf(ReaderAnswer::Kind kind) {
  if (kind == ReaderAnswer::Read) return kAnswer;
  return kind == ReaderAnswer::Part ? kPart : kRefusal;
}

ContentAnswer answerOf(std::string kept) {
  const char end = kept.empty() ? kAnswer : kept.back();
  if (!kept.empty()) kept.pop_back();
  if (end == kPart) return {std::move(kept), false, "has more than 16 MB of text; the rest is not searched"};
  if (end != kRefusal) return {std::move(kept), true, {}};
  if (!kept.empty()) kept += "; what is in it is not searched";
  return {{}, false, std::move(kept)};
}

ContentStore::Options withComplaints(ContentStore::Options store,
                                     const std::function<void(const std::string&)>& complain) {
  store.complain = complain;
  return store;
}

}  // namespace

ContentReader::ContentReader(Options options)
    : unseenLimit_(options.unseenLimit),
      complain_(std::move(options.complain)),
      store_(withComplaints(std::move(options.store), complain_)),
      programs_{std::move(options.tags.programs), std::move(options.text.programs)} {
  const auto addPool = [this](Content content, const char* what, ReaderPool::Options pool) {
    pool.complain = [this, what](const std::string& message) {
      complain_(message + ". " + what + " may be missing.");
    };
    pools_[static_cast<size_t>(content)] = std::make_unique<ReaderPool>(
        std::move(pool), [this, content](ReaderPool::Ticket ticket, ReaderAnswer answer) {
          take(content, ticket, std::move(answer));
        });
  };
  addPool(Content::Tags, "Attributes of media and documents", std::move(options.tags.pool));
  addPool(Content::Text, "Texts of documents", std::move(options.text.pool));
}

ContentReader::~ContentReader() = default;

// One file may have several names, which tell readers more than its content does: of text the format, of tags
// the extension.
ContentKey ContentReader::keyOf(Content content, const FileLocation& file, std::string_view format) {
  std::optional<uint64_t>& version = versions_[static_cast<size_t>(content)];
  if (!version) {
    // perl may be told to take its libraries from elsewhere.
    const char* const libraries = std::getenv("PERL5LIB");
    std::string identity = std::string(CONTENT_SOURCES) + (libraries ? libraries : "");
    for (const std::string& program : programs_[static_cast<size_t>(content)])
      identity += '\n' + identityOf(program);
    version = hashOf(identity);
  }
  const std::string_view name = file.name;
  const std::string_view kind =
      content == Content::Text ? format : name.substr(std::min(name.rfind('.'), name.size()));
  return {stateOf(file.info), static_cast<int>(content), hashOf(std::string(kind), *version)};
}

// What was read of a file that had just been written counts until its times are sure: what came after that
// may have been written within the same tick of the clock.
ContentBytes ContentReader::known(Content content, const FileLocation& file, std::string_view format) {
  const ContentKey key = keyOf(content, file, format);
  Last& last = last_[static_cast<size_t>(content)];
  const auto passing = passing_.find({key.file.device, key.file.inode});
  if (passing != passing_.end() && passing->second == key && isSettledNow(key.file)) {
    forget(key);
    return nullptr;
  }
  if (last.bytes && last.key == key) return last.bytes;
  ContentBytes bytes;
  if (const auto fresh = fresh_.find(key); fresh != fresh_.end()) {
    bytes = std::move(fresh->second);
    freshBytes_ -= bytes->bytes.size();
    fresh_.erase(fresh);
    if (fresh_.empty()) freshOrder_.clear();
  } else if (std::optional<std::string> kept = store_.find(key)) {
    bytes = std::make_shared<ContentAnswer>(answerOf(std::move(*kept)));
  } else {
    return nullptr;
  }
  last = {key, bytes};
  return bytes;
}

// It is read again: until then it counts as not known, wherever it still is.
void ContentReader::forget(const ContentKey& key) {
  Last& last = last_[static_cast<size_t>(key.reader)];
  if (last.key == key) last = {};
  if (const auto fresh = fresh_.find(key); fresh != fresh_.end()) {
    freshBytes_ -= fresh->second->bytes.size();
    fresh_.erase(fresh);
  }
}

// What is too much to wait for being seen is in the store, or read again.
void ContentReader::keepForSeeing(const ContentKey& key, ContentAnswer answer) {
  freshBytes_ += answer.bytes.size();
  fresh_[key] = std::make_shared<ContentAnswer>(std::move(answer));
  freshOrder_.push_back(key);
  while (freshBytes_ > unseenLimit_ && freshOrder_.front() != key) {
    if (const auto oldest = fresh_.find(freshOrder_.front()); oldest != fresh_.end()) {
      freshBytes_ -= oldest->second->bytes.size();
      fresh_.erase(oldest);
    }
    freshOrder_.pop_front();
  }
}

bool ContentReader::ask(Content content, const FileLocation& file, std::string_view format,
                        ReaderPool::Turn turn) {
  const ContentKey key = keyOf(content, file, format);
  const auto [asked, isNew] = asked_.try_emplace(key, nextTicket_);
  if (!isNew) return false;
  const ReaderPool::Ticket ticket = nextTicket_++;
  Question question{key, PathForReader(file), isSettledNow(key.file)};
  const std::string path = question.path.get();
  questions_.emplace(ticket, std::move(question));
  if (path.empty()) {
    take(content, ticket, {ReaderAnswer::Unreadable, "can't be opened"});
    return true;
  }
  pool(content).ask(ticket, format.empty() ? path : std::string(format) + ' ' + path, turn);
  return true;
}

// Readers open files by their paths, to which something else may have moved meanwhile.
bool ContentReader::isAsItWas(const Question& question) {
  const std::string& path = question.path.get();
  const int flags = question.path.isDescriptor() ? 0 : AT_SYMLINK_NOFOLLOW;
  struct statx info;
  return ::statx(AT_FDCWD, path.c_str(), flags, STATX_BASIC_STATS, &info) == 0 &&
         stateOf(info) == question.key.file;
}

void ContentReader::take(Content content, ReaderPool::Ticket ticket, ReaderAnswer answer) {
  auto node = questions_.extract(ticket);
  const Question& question = node.mapped();
  ++filesRead_;
  const bool isRead = answer.kind == ReaderAnswer::Read || answer.kind == ReaderAnswer::Part;
  if (isRead && content == Content::Tags) {
    const std::optional<MediaTags> tags = parseMediaTags(answer.bytes);
    if (tags) answer.bytes = encodeAttributes(attributesOf(*tags));
    if (!tags) answer = {ReaderAnswer::Unreadable, "exiftool gave an answer that makes no sense"};
  }
  std::string kept = std::move(answer.bytes) + endOf(answer.kind);
  if (isAsItWas(question)) {
    store_.put(question.key, kept, question.settled && answer.kind != ReaderAnswer::Unreadable);
  }
  const FileState& file = question.key.file;
  if (question.settled) {
    passing_.erase({file.device, file.inode});
  } else {
    passing_[{file.device, file.inode}] = question.key;
  }
  if (asked_.erase(question.key) > 0) keepForSeeing(question.key, answerOf(std::move(kept)));
}

void ContentReader::wait(std::chrono::milliseconds time) {
  constexpr auto kTurn = std::chrono::milliseconds(5);
  const bool both = !pools_[0]->isIdle() && !pools_[1]->isIdle();
  for (const auto& pool : pools_) {
    if (!pool->isIdle()) pool->wait(both ? std::min(time, kTurn) : time);
  }
  store_.write(false);
}

void ContentReader::forgetQuestions() {
  asked_.clear();
  fresh_.clear();
  freshOrder_.clear();
  freshBytes_ = 0;
  for (const auto& pool : pools_)
    pool->forget([this](ReaderPool::Ticket ticket) { return questions_.erase(ticket) > 0; });
}

ContentBytes ContentReader::read(Content content, const FileLocation& file, std::string_view format) {
  constexpr auto kPatience = std::chrono::seconds(1);
  for (;;) {
    if (ContentBytes bytes = known(content, file, format)) return bytes;
    ask(content, file, format, ReaderPool::Turn::First);
    wait(kPatience);
  }
}

ContentReader::Options& contentReaderOptions() {
  static ContentReader::Options options = usualOptions();
  return options;
}

ContentReader& contentReader() {
  static ContentReader reader(contentReaderOptions());
  if (!ownReader) {
    ownReader = &reader;
    reader.setHoldsStill(manyLookups > 0);
  }
  return reader;
}

ManyLookups::ManyLookups() {
  if (manyLookups++ == 0 && ownReader) ownReader->setHoldsStill(true);
}

ManyLookups::~ManyLookups() {
  if (--manyLookups == 0 && ownReader) ownReader->setHoldsStill(false);
}

}  // namespace standin::metadata
