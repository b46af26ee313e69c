// content/: what is in files, from the store or from the programs that read it. It includes disk/, media/,
// readers/ and store/.
//
// Here: who is asked what is in a file, and for how long that is known.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "standin/coreservices/content/path_for_reader.h"
#include "standin/coreservices/disk/file_location.h"
#include "standin/coreservices/readers/reader_pool.h"
#include "standin/coreservices/store/content_store.h"

namespace standin::metadata {

enum class Content { Tags, Text };

// What is in a file.
struct ContentAnswer {
  std::string bytes;    // attributes as encodeAttributes() makes them, or text as UTF-8
  bool isWhole = true;  // as far as there is anything
  std::string missing;  // what isn't there of it, for people; empty where there is no reader at all
};
using ContentBytes = std::shared_ptr<const ContentAnswer>;

class ContentReader {
 public:
  struct Reader {
    ReaderPool::Options pool;
    // What it said before one of these was replaced counts no more.
    std::vector<std::string> programs;
  };
  struct Options {
    ContentStore::Options store;
    Reader tags;
    Reader text;
    size_t unseenLimit = 64'000'000;  // bytes of answers that nobody has looked at yet
    std::function<void(const std::string&)> complain = [](const std::string&) {};
  };

  explicit ContentReader(Options options);
  ~ContentReader();
  ContentReader(const ContentReader&) = delete;
  ContentReader& operator=(const ContentReader&) = delete;

  // What is known without reading the file: null when it must be read. `format` is one of kTextFormats where
  // text is wanted, and empty otherwise.
  ContentBytes known(Content content, const FileLocation& file, std::string_view format);
  // Has the file read, meanwhile. False where that was asked for already.
  bool ask(Content content, const FileLocation& file, std::string_view format) {
    return ask(content, file, format, ReaderPool::Turn::Last);
  }
  // Takes what has been read; waits for some where there is none yet, no longer than that.
  void wait(std::chrono::milliseconds time);
  // What nobody has begun to read needn't be read any more.
  void forgetQuestions();

  // Known, or asked for and waited for.
  ContentBytes read(Content content, const FileLocation& file, std::string_view format);

  void setHoldsStill(bool holdsStill) { store_.setHoldsStill(holdsStill); }
  size_t filesRead() const { return filesRead_; }
  // Writes what isn't in the store yet.
  void writeStore() { store_.write(true); }

 private:
  struct Question {
    ContentKey key;
    PathForReader path;
    bool settled;  // the file's times say for sure what is in it
  };
  struct Last {
    ContentKey key;
    ContentBytes bytes;
  };

  bool ask(Content content, const FileLocation& file, std::string_view format, ReaderPool::Turn turn);
  void take(Content content, ReaderPool::Ticket ticket, ReaderAnswer answer);
  ContentKey keyOf(Content content, const FileLocation& file, std::string_view format);
  static bool isAsItWas(const Question& question);
  void keepForSeeing(const ContentKey& key, ContentAnswer answer);
  void forget(const ContentKey& key);
  ReaderPool& pool(Content content) { return *pools_[static_cast<size_t>(content)]; }

  const size_t unseenLimit_;
  const std::function<void(const std::string&)> complain_;
  ContentStore store_;
  std::array<std::vector<std::string>, 2> programs_;
  std::array<std::optional<uint64_t>, 2> versions_;  // of the readers
  std::array<std::unique_ptr<ReaderPool>, 2> pools_;
  std::map<ContentKey, ReaderPool::Ticket> asked_;
  std::unordered_map<ReaderPool::Ticket, Question> questions_;
  std::map<ContentKey, ContentBytes> fresh_;  // answers that nobody has seen
  std::deque<ContentKey> freshOrder_;         // of these and of some that were seen, the oldest first
  size_t freshBytes_ = 0;
  // By device and inode: what was read before the file's times said for sure what is in it.
  std::map<std::pair<uint64_t, uint64_t>, ContentKey> passing_;
  std::array<Last, 2> last_;
  ReaderPool::Ticket nextTicket_ = 0;
  size_t filesRead_ = 0;
};

// The process's own.
ContentReader& contentReader();
// What it is made with, when it is first asked for: nothing is kept on disk, and complaints go to standard
// error, unless it is changed before.
ContentReader::Options& contentReaderOptions();

// While one is alive, many files are looked up: the process's own reader keeps the store open to that.
class ManyLookups {
 public:
  ManyLookups();
  ~ManyLookups();
  ManyLookups(const ManyLookups&) = delete;
  ManyLookups& operator=(const ManyLookups&) = delete;
};

}  // namespace standin::metadata
