#include "standin/coreservices/search/sorting.h"

#include <unicode/uloc.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include "standin/coreservices/attributes/text.h"
#include "standin/gate/collation.h"

namespace standin::metadata {

namespace {

static_assert(std::numeric_limits<long double>::digits >= 64);

// NaN comes before all other numbers.
long double rankOfNumber(long double number) {
  return std::isnan(number) ? -std::numeric_limits<long double>::infinity() : number;
}

}  // namespace

void Ranker::CloseCollator::operator()(UCollator* collator) const {
  collation().close(collator);
}

Ranker::Ranker() {
  UErrorCode error = U_ZERO_ERROR;
  // The C locale would sort by character codes: without a language, the order that all languages start from.
  const char* const locale = uloc_getDefault();
  const bool anyLanguage = std::string_view(locale) == "en_US_POSIX";
  collator_.reset(collation().open(anyLanguage ? "" : locale, &error));
  if (!collator_) return;
  collation().setAttribute(collator_.get(), UCOL_NUMERIC_COLLATION, UCOL_ON, &error);
  collation().setAttribute(collator_.get(), UCOL_NORMALIZATION_MODE, UCOL_ON, &error);
}

Ranker::~Ranker() = default;

TextRank Ranker::rankOfText(std::u16string_view text) const {
  if (!collator_) {
    return {std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t))};
  }
  const auto length = static_cast<int32_t>(text.size());
  uint8_t buffer[256];
  int32_t size = collation().sortKey(collator_.get(), text.data(), length, buffer, sizeof buffer);
  if (size <= static_cast<int32_t>(sizeof buffer)) {
    return {std::string(reinterpret_cast<const char*>(buffer), static_cast<size_t>(size))};
  }
  std::string bytes(static_cast<size_t>(size), '\0');
  collation().sortKey(collator_.get(), text.data(), length, reinterpret_cast<uint8_t*>(bytes.data()), size);
  return {std::move(bytes)};
}

Rank Ranker::rankOf(const Value& value) const {
  return std::visit(
      [this](auto v) -> Rank {
        using T = decltype(v);
        if constexpr (std::is_same_v<T, bool>) {
          return v;
        } else if constexpr (std::is_same_v<T, Date>) {
          return rankOfNumber(v.seconds);
        } else if constexpr (std::is_arithmetic_v<T>) {
          return rankOfNumber(v);
        } else {
          return rankOfText(utf16(readableText(v)));
        }
      },
      value);
}

void Ranks::set(ResultStore::File file, size_t attribute, Rank rank) {
  if (ranks_.size() < (file + 1) * perFile_) ranks_.resize((file + 1) * perFile_);
  ranks_[file * perFile_ + attribute] = std::move(rank);
}

bool Ranks::before(ResultStore::File left, ResultStore::File right, const std::vector<SortKey>& keys) const {
  for (const SortKey& key : keys) {
    const Rank& first = rank(key.reversed ? right : left, key.attribute);
    const Rank& second = rank(key.reversed ? left : right, key.attribute);
    if (first < second) return true;
    if (second < first) return false;
  }
  return false;
}

}  // namespace standin::metadata
