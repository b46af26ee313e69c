#include "sorting.h"

#include <unicode/ucol.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <variant>

#include "file_attributes.h"
#include "text.h"

namespace standin::metadata {
namespace {

// What a value is sorted by. The order of the alternatives is the order of values of different types; text is
// the bytes that ICU makes of it, which compare as the text does.
using Rank = std::variant<std::monostate, bool, double, std::string>;

struct CloseCollator {
  void operator()(UCollator* collator) const { ucol_close(collator); }
};
using Collator = std::unique_ptr<UCollator, CloseCollator>;

Collator openCollator() {
  UErrorCode error = U_ZERO_ERROR;
  // The C locale would sort by character codes: without a language, the order that all languages start from.
  const char* const locale = uloc_getDefault();
  const bool anyLanguage = std::string_view(locale) == "en_US_POSIX";
  Collator collator(ucol_open(anyLanguage ? "" : locale, &error));
  if (collator) ucol_setAttribute(collator.get(), UCOL_NUMERIC_COLLATION, UCOL_ON, &error);
  return collator;
}

std::string rankOfText(const UCollator* collator, std::string_view bytes) {
  if (!collator) return std::string(bytes);
  const std::u16string text = utf16(readableText(bytes));
  const auto length = static_cast<int32_t>(text.size());
  std::string rank(text.size() * 4 + 16, '\0');
  for (;;) {
    const auto room = static_cast<int32_t>(rank.size());
    const int32_t size =
        ucol_getSortKey(collator, text.data(), length, reinterpret_cast<uint8_t*>(rank.data()), room);
    rank.resize(static_cast<size_t>(size));
    if (size <= room) return rank;
  }
}

Rank rankOf(const UCollator* collator, const Value& value) {
  if (const auto* const truth = std::get_if<bool>(&value)) return *truth;
  if (const auto* const integer = std::get_if<int64_t>(&value)) return static_cast<double>(*integer);
  if (const auto* const real = std::get_if<double>(&value)) return *real;
  if (const auto* const date = std::get_if<Date>(&value)) return date->seconds;
  return rankOfText(collator, std::get<std::string_view>(value));
}

}  // namespace

std::vector<uint32_t> sortedOrder(const ResultStore& results, const std::vector<SortKey>& keys) {
  const Collator collator = openCollator();
  const size_t width = keys.size();
  std::vector<Rank> ranks(results.size() * width);
  for (size_t i = 0; i < results.size(); ++i) {
    const std::string path = results.path(i);
    FileByPath file(path);
    for (size_t k = 0; k < width; ++k) {
      const std::optional<Value> value = file.record().value(keys[k].attribute.file);
      if (value) ranks[i * width + k] = rankOf(collator.get(), *value);
    }
  }
  std::vector<uint32_t> order(results.size());
  std::iota(order.begin(), order.end(), 0u);
  std::stable_sort(order.begin(), order.end(), [&](uint32_t left, uint32_t right) {
    for (size_t k = 0; k < width; ++k) {
      const Rank& first = ranks[(keys[k].reversed ? right : left) * width + k];
      const Rank& second = ranks[(keys[k].reversed ? left : right) * width + k];
      if (first < second) return true;
      if (second < first) return false;
    }
    return false;
  });
  return order;
}

}  // namespace standin::metadata
