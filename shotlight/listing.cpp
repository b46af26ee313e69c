#include "shotlight/listing.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "shotlight/json.h"
#include "shotlight/names.h"
#include "shotlight/output.h"
#include "shotlight/table.h"
#include "shotlight/values.h"

namespace shotlight {
namespace {

namespace host = standin::host;

class Lines : public Listing {
 public:
  explicit Lines(const std::vector<std::string>& keys) : isName_(keys.size()), row_(keys.size()) {
    std::transform(keys.begin(), keys.end(), isName_.begin(), isFileName);
  }
  void add(const std::vector<host::Value>& values, const std::string& color) override {
    for (size_t i = 0; i < values.size(); ++i) {
      row_[i].text = joinedText(values[i]);
      if (isName_[i]) row_[i].color = color;
    }
    printRow(row_);
  }
  void pause() override { finishOutput(); }
  void finish() override { finishOutput(); }

 private:
  std::vector<bool> isName_;
  Row row_;
};

class ZeroEnded : public Listing {
 public:
  void add(const std::vector<host::Value>& values, const std::string&) override {
    for (const host::Value& value : values) print(joinedText(value) + '\0');
  }
  void pause() override { finishOutput(); }
  void finish() override { finishOutput(); }
};

// A column is as wide as the widest text in it, so rows are printed some at a time: all of a quick search at
// once, and those of a slow one every second.
class Table : public Listing {
 public:
  explicit Table(const std::vector<std::string>& keys) : hasOther_(keys.size()) {
    for (const std::string& key : keys) {
      isName_.push_back(isFileName(key));
      columns_.push_back({.title = titleOf(key), .cut = isName_.back() ? Cut::middle : Cut::end});
    }
  }

  void add(const std::vector<host::Value>& values, const std::string& color) override {
    auto& row = rows_.emplace_back();
    for (size_t i = 0; i < values.size(); ++i) {
      noteForm(i, formOf(values[i]));
      row.push_back({joinedText(values[i]), isName_[i] ? color : std::string()});
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
    if (!widest_.empty()) return;
    if (form != Form::number && form != Form::nothing) hasOther_[column] = true;
    columns_[column].number = !hasOther_[column] && (columns_[column].number || form == Form::number);
  }

  void printRows() {
    printPart(columns_, std::exchange(rows_, {}), widest_);
    finishOutput();
    printed_ = Clock::now();
  }

  std::vector<Column> columns_;
  std::vector<bool> isName_, hasOther_;
  std::vector<Row> rows_;       // not printed yet
  std::vector<size_t> widest_;  // of what was printed
  Clock::time_point printed_ = Clock::now();
};

// An array, or an object a line.
class Json : public Listing {
 public:
  Json(const std::vector<std::string>& keys, bool isArray) : keys_(keys), isArray_(isArray) {}

  void add(const std::vector<host::Value>& values, const std::string&) override {
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
  if (layout == Layout::zeroEnded) return std::make_unique<ZeroEnded>();
  if (layout != Layout::rows) return std::make_unique<Json>(keys, layout == Layout::jsonArray);
  if (isatty(STDOUT_FILENO)) return std::make_unique<Table>(keys);
  return std::make_unique<Lines>(keys);
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
