#include "shotlight/listing.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "shotlight/json.h"
#include "shotlight/output.h"
#include "shotlight/table.h"
#include "shotlight/values.h"

namespace shotlight {
namespace {

namespace host = standin::host;

class Lines : public Listing {
 public:
  void add(const std::vector<host::Value>& values) override {
    row_.resize(values.size());
    std::transform(values.begin(), values.end(), row_.begin(), joinedText);
    printRow(row_);
  }
  void pause() override { finishOutput(); }
  void finish() override { finishOutput(); }

 private:
  std::vector<std::string> row_;
};

// A column is as wide as the widest text in it, so rows are printed some at a time: all of a quick search at
// once, and those of a slow one every second.
class Table : public Listing {
 public:
  explicit Table(const std::vector<std::string>& keys) : hasOther_(keys.size()) {
    for (const std::string& key : keys) columns_.push_back({titleOf(key)});
  }

  void add(const std::vector<host::Value>& values) override {
    auto& row = rows_.emplace_back();
    for (size_t i = 0; i < values.size(); ++i) {
      noteForm(i, formOf(values[i]));
      row.push_back(joinedText(values[i]));
    }
    if (rows_.size() >= kMostRows) printRows();
  }
  void pause() override {
    if (!rows_.empty() && Clock::now() - printed_ >= kPatience) printRows();
  }
  void finish() override {
    if (!rows_.empty()) printRows();
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr size_t kMostRows = 2000;
  static constexpr auto kPatience = std::chrono::seconds(1);

  // A column in which only numbers stand is marked as one, unless it has been printed otherwise.
  void noteForm(size_t column, Form form) {
    if (!widths_.empty()) return;
    if (form != Form::number && form != Form::nothing) hasOther_[column] = true;
    columns_[column].number = !hasOther_[column] && (columns_[column].number || form == Form::number);
  }

  void printRows() {
    printPart(columns_, std::exchange(rows_, {}), widths_);
    finishOutput();
    printed_ = Clock::now();
  }

  std::vector<Column> columns_;
  std::vector<bool> hasOther_;
  std::vector<std::vector<std::string>> rows_;  // not printed yet
  std::vector<size_t> widths_;                  // of what was printed
  Clock::time_point printed_ = Clock::now();
};

// An array, or an object a line.
class Json : public Listing {
 public:
  Json(const std::vector<std::string>& keys, bool isArray) : keys_(keys), isArray_(isArray) {}

  void add(const std::vector<host::Value>& values) override {
    JsonMembers members;
    for (size_t i = 0; i < keys_.size(); ++i) {
      const bool isFirst = std::find(keys_.begin(), keys_.end(), keys_[i]) - keys_.begin() == ptrdiff_t(i);
      if (isFirst) members.emplace_back(keys_[i], values[i]);
    }
    if (isArray_) {
      print((isEmpty_ ? "[" : ",") + jsonIndent(1) + jsonObject(members, 1));
    } else {
      print(jsonObject(members, kJsonOneLine) + '\n');
    }
    isEmpty_ = false;
  }
  void pause() override { finishOutput(); }
  void finish() override {
    if (isArray_) print(isEmpty_ ? "[]\n" : "\n]\n");
    finishOutput();
  }

 private:
  const std::vector<std::string> keys_;
  const bool isArray_;
  bool isEmpty_ = true;
};

}  // namespace

std::unique_ptr<Listing> newListing(Layout layout, const std::vector<std::string>& keys) {
  if (layout != Layout::rows) return std::make_unique<Json>(keys, layout == Layout::jsonArray);
  if (isatty(STDOUT_FILENO)) return std::make_unique<Table>(keys);
  return std::make_unique<Lines>();
}

std::string titleOf(const std::string& key) {
  static constexpr std::pair<const char*, const char*> short_[] = {
      {"kMDItemDisplayName", "Name"}, {"kMDItemFSName", "File"}, {"kMDItemFSSize", "Size"}};
  for (const auto& [each, title] : short_) {
    if (key == each) return title;
  }
  const std::string prefix = "kMDItem";
  return key.starts_with(prefix) ? key.substr(prefix.size()) : key;
}

}  // namespace shotlight
