#include "standin/coreservices/content/content_reader.h"

#include <sched.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <utility>
#include <vector>

#include "standin/coreservices/content/text_reader.h"
#include "standin/coreservices/media/exiftool.h"
#include "standin/coreservices/media/media_table.h"
#include "standin/coreservices/readers/child_process.h"

namespace standin::metadata {
namespace {

constexpr size_t kFilesNamed = 5;  // of those that can't be read
// Before the answer of a file that is none, in the store.
constexpr char kRefusal = '\0';
// What is written twice within a tick of the system's clock may look as if it had been written once.
constexpr int64_t kLongestTick = 20'000'000;  // nanoseconds

bool isSettled(const FileState& file) {
  timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  const int64_t nanoseconds = int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
  return nanoseconds - static_cast<int64_t>(file.changed) > kLongestTick;
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

uint64_t hashOf(const std::string& text) {
  uint64_t hash = 14695981039346656037ULL;  // FNV-1a
  for (const char c : text) hash = (hash ^ static_cast<uint8_t>(c)) * 1099511628211ULL;
  return hash;
}

ContentReader::Options usualOptions() {
  ContentReader::Options options;
  options.store.folder = ownContentOptions().storeFolder;
  options.complain = ownContentOptions().complain;
  options.tags = {exiftoolReader(processors()), {"exiftool"}};
  options.text = {textReader(processors()), {textReader(1).program, "pdftotext"}};
  return options;
}

ContentReader* ownReader = nullptr;  // once it is made
int manyLookups = 0;

ContentStore::Options withComplaints(ContentStore::Options store,
                                     const std::function<void(const std::string&)>& complain) {
  store.complain = complain;
  return store;
}

}  // namespace

ContentReader::ContentReader(Options options)
    : complain_(std::move(options.complain)),
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

// Of a file that several names lead to, one may say that it is a web page, and another that it is rich text.
ContentKey ContentReader::keyOf(Content content, const FileLocation& file, std::string_view format) {
  std::optional<uint64_t>& version = versions_[static_cast<size_t>(content)];
  if (!version) {
    std::string identity = CONTENT_SOURCES;
    for (const std::string& program : programs_[static_cast<size_t>(content)]) identity += '\n' + identityOf(program);
    version = hashOf(identity);
  }
  const auto* const known = std::ranges::find(kTextFormats, format);
  const auto reader = content == Content::Tags ? 0 : 1 + (known - std::begin(kTextFormats));
  return {stateOf(file.info), static_cast<int>(reader), *version};
}

// The first of the files are named.
void ContentReader::complainOf(const std::string& path, const std::string& why) {
  if (complaints_ > kFilesNamed) return;
  if (++complaints_ > kFilesNamed) {
    complain_("more files can't be read; they are not named");
  } else {
    complain_(path + ": " + why + "; what is in it is not searched");
  }
}

ContentBytes ContentReader::known(Content content, const FileLocation& file, std::string_view format) {
  const ContentKey key = keyOf(content, file, format);
  Last& last = last_[static_cast<size_t>(content)];
  if (last.bytes && last.key == key) return last.bytes;
  ContentBytes bytes;
  if (const auto fresh = fresh_.find(key); fresh != fresh_.end()) {
    bytes = std::move(fresh->second);
    fresh_.erase(fresh);
  } else if (std::optional<std::string> kept = store_.find(key)) {
    if (kept->starts_with(kRefusal)) {
      complainOf(std::string(file.path), kept->substr(1));
      kept->clear();
    }
    bytes = std::make_shared<std::string>(std::move(*kept));
  } else {
    return nullptr;
  }
  last = {key, bytes};
  return bytes;
}

void ContentReader::ask(Content content, const FileLocation& file, std::string_view format,
                        ReaderPool::Turn turn) {
  const ContentKey key = keyOf(content, file, format);
  const auto [asked, isNew] = asked_.try_emplace(key, nextTicket_);
  if (!isNew) return;
  const ReaderPool::Ticket ticket = nextTicket_++;
  Question question{key, PathForReader(file), isSettled(key.file)};
  const std::string path = question.path.get();
  questions_.emplace(ticket, std::move(question));
  if (path.empty()) {
    take(content, ticket, {ReaderAnswer::Unreadable, "can't be opened"});
    return;
  }
  pool(content).ask(ticket, format.empty() ? path : std::string(format) + ' ' + path, turn);
}

void ContentReader::take(Content content, ReaderPool::Ticket ticket, ReaderAnswer answer) {
  auto node = questions_.extract(ticket);
  const Question& question = node.mapped();
  ++filesRead_;
  std::string bytes, kept;
  if (answer.kind == ReaderAnswer::Read && content == Content::Tags) {
    const std::optional<MediaTags> tags = parseMediaTags(answer.bytes);
    if (tags) kept = bytes = encodeAttributes(attributesOf(*tags));
    if (!tags) answer = {ReaderAnswer::Unreadable, "exiftool gave an answer that makes no sense"};
  } else if (answer.kind == ReaderAnswer::Read) {
    kept = bytes = std::move(answer.bytes);
  }
  if (answer.kind == ReaderAnswer::Refused) kept = kRefusal + answer.bytes;
  if (answer.kind != ReaderAnswer::Read && !answer.bytes.empty()) complainOf(question.path.get(), answer.bytes);
  store_.put(question.key, std::move(kept), question.lasting && answer.kind != ReaderAnswer::Unreadable);
  if (asked_.erase(question.key) > 0) fresh_[question.key] = std::make_shared<std::string>(std::move(bytes));
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
  for (const auto& pool : pools_) pool->forget([this](ReaderPool::Ticket ticket) { return questions_.erase(ticket) > 0; });
}

ContentBytes ContentReader::read(Content content, const FileLocation& file, std::string_view format) {
  constexpr auto kPatience = std::chrono::seconds(1);
  for (;;) {
    if (ContentBytes bytes = known(content, file, format)) return bytes;
    ask(content, file, format, ReaderPool::Turn::First);
    wait(kPatience);
  }
}

OwnContentOptions& ownContentOptions() {
  static OwnContentOptions options{{}, [](const std::string& message) {
                                     std::fprintf(stderr, "standin: metadata: %s\n", message.c_str());
                                   }};
  return options;
}

ContentReader& contentReader() {
  static ContentReader reader(usualOptions());
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
