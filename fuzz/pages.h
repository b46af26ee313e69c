// Mach-O files without the zeros that fill up their pages, which would be most of a small one: an input then
// changes where something is.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace fuzz {

inline constexpr size_t kPage = 4096;
inline constexpr std::string_view kNextPage =
    "\nPAGE\n";  // stands for zeros up to the next page, one at least

inline std::vector<uint8_t> withPages(std::span<const uint8_t> packed) {
  constexpr size_t kMostPages = 16;
  std::vector<uint8_t> file;
  std::string_view rest(reinterpret_cast<const char*>(packed.data()), packed.size());
  while (file.size() < kMostPages * kPage) {
    const size_t end = rest.find(kNextPage);
    const std::string_view part = rest.substr(0, end);
    file.insert(file.end(), part.begin(), part.end());
    if (end == std::string_view::npos) break;
    rest.remove_prefix(end + kNextPage.size());
    file.resize((file.size() / kPage + 1) * kPage);
  }
  return file;
}

// Of a page that ends in so few zeros that the mark would be longer, they stay.
inline std::vector<uint8_t> withoutPages(std::span<const uint8_t> file) {
  std::vector<uint8_t> packed;
  for (size_t at = 0; at < file.size(); at += kPage) {
    const auto page = file.subspan(at, std::min(kPage, file.size() - at));
    size_t used = page.size();
    while (used > 0 && page[used - 1] == 0) --used;
    const bool isFilledUp = page.size() == kPage && kPage - used > kNextPage.size();
    const auto kept = isFilledUp ? page.first(used) : page;
    packed.insert(packed.end(), kept.begin(), kept.end());
    if (isFilledUp) packed.insert(packed.end(), kNextPage.begin(), kNextPage.end());
  }
  return packed;
}

}  // namespace fuzz
