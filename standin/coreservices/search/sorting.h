// What results are sorted by.
//
// The first attribute is the primary key. Text compares by the rules of the language, with numbers in it by
// their value ("file 9" before "file 10"); a missing value comes before all others. Files that are equal in
// every key keep their order.
#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "standin/coreservices/attributes/attributes.h"
#include "standin/coreservices/search/result_store.h"

struct UCollator;

namespace standin::metadata {

struct TextRank {
  std::string bytes;  // what ICU makes of the text: they compare as the text does
  auto operator<=>(const TextRank&) const = default;
};

// What a value is sorted by; the order of the alternatives is the order of values of different types. A long
// double holds every integer of 64 bits exactly.
using Rank = std::variant<std::monostate, bool, long double, TextRank>;

class Ranker {
 public:
  Ranker();
  ~Ranker();
  Ranker(const Ranker&) = delete;
  Ranker& operator=(const Ranker&) = delete;

  Rank rankOf(const Value& value) const;

 private:
  TextRank rankOfText(std::u16string_view text) const;

  struct CloseCollator {
    void operator()(UCollator* collator) const;
  };
  std::unique_ptr<UCollator, CloseCollator> collator_;
};

struct SortKey {
  size_t attribute;  // which of a file's ranks
  bool reversed = false;
};

// The ranks of files, some for each, and comparisons by them.
class Ranks {
 public:
  explicit Ranks(size_t perFile) : perFile_(perFile) {}

  void set(ResultStore::File file, size_t attribute, Rank rank);
  bool before(ResultStore::File left, ResultStore::File right, const std::vector<SortKey>& keys) const;

 private:
  const Rank& rank(ResultStore::File file, size_t attribute) const {
    return ranks_[file * perFile_ + attribute];
  }

  const size_t perFile_;
  std::vector<Rank> ranks_;
};

}  // namespace standin::metadata
