// Query strings: parsed, checked for probable mistakes, and matched with a few files.
//
// The input: the query in UTF-8. Of its characters, those from U+E000 to U+E7FF stand for halves of surrogate
// pairs, which UTF-8 has not and query strings may have.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "fuzz/input.h"
#include "standin/coreservices/attributes/schema.h"
#include "standin/coreservices/attributes/text.h"
#include "standin/coreservices/language/doubts.h"
#include "standin/coreservices/language/match.h"
#include "standin/coreservices/language/parser.h"

namespace {

using namespace standin::metadata;

constexpr Date kNow{321021296};
constexpr char kText[] = "Straße im Regen, e\xCC\x81t\xC3\xA9 2011 \xFFz\xE6\x9D\xB1\xF0\x9F\x8D\x8E newYork";

// Has values of the type of each key. What costs more than `most` to look at, it doesn't know.
class File : public AttributeSource {
 public:
  enum Kind { Empty, Small, Full };
  File(Kind kind, Cost most) : kind_(kind), most_(most) {}

  bool values(const AttributeKey& key, std::vector<Value>& values) override {
    if (key.any) {
      for (const ValueType type :
           {ValueType::Boolean, ValueType::Number, ValueType::Dates, ValueType::Strings}) {
        add(type, values);
      }
      return most_ == Cost::Content;
    }
    if (key.file == FileAttribute::None) return true;
    if (costOf(key.file) > most_) return false;
    add(infoOf(key.file).type, values);
    return true;
  }

 private:
  void add(ValueType type, std::vector<Value>& values) const {
    if (kind_ == Empty) return;
    const bool isFull = kind_ == Full;
    switch (type) {
      case ValueType::Boolean:
        values.emplace_back(isFull);
        return;
      case ValueType::Number:
        values.emplace_back(isFull ? Value(-1500.25) : Value(int64_t{1} << 53));
        return;
      case ValueType::Dates:
        values.emplace_back(Date{-1});
        [[fallthrough]];
      case ValueType::Date:
        values.emplace_back(isFull ? kNow : Date{0});
        return;
      case ValueType::Strings:
        values.emplace_back(std::string_view());
        [[fallthrough]];
      default:
        values.emplace_back(isFull ? std::string_view(kText) : std::string_view("a.txt"));
    }
  }

  Kind kind_;
  Cost most_;
};

std::u16string queryOf(std::string_view bytes) {
  std::u16string text = utf16(readableText(bytes));
  constexpr char16_t kFirstHalf = 0xD800, kFirst = 0xE000, kEnd = 0xE800;
  for (char16_t& unit : text) {
    if (unit >= kFirst && unit < kEnd) unit = static_cast<char16_t>(unit - kFirst + kFirstHalf);
  }
  return text;
}

void requireSameAnswers(const Expression& expression, File::Kind kind) {
  File known(kind, Cost::Content), cheap(kind, Cost::Record);
  const Match whole = match(expression, known);
  fuzz::require(whole != Match::Unknown, "all is known, but not whether the file matches");
  const Match part = match(expression, cheap);
  fuzz::require(part == Match::Unknown || part == whole,
                "what is known of the file decides otherwise than all of it");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::u16string query = queryOf({reinterpret_cast<const char*>(data), size});
  const auto parsed = parseQuery(query);
  if (const auto* const error = std::get_if<ParseError>(&parsed)) {
    fuzz::require(error->position <= query.size() && !error->reason.empty(),
                  "a mistake without a place or reason");
    return 0;
  }
  const ExpressionRef& expression = std::get<ExpressionRef>(parsed);
  for (const Doubt& doubt : doubtsOf(*expression)) {
    fuzz::require(doubt.position + doubt.length <= query.size(), "a doubt outside of the query");
  }
  const ExpressionRef resolved = resolve(expression, kNow);
  for (const File::Kind kind : {File::Empty, File::Small, File::Full}) requireSameAnswers(*resolved, kind);
  return 0;
}
