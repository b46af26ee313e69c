// What the targets share: the parts of an input, and claims about what is made of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace fuzz {

// Takes an input apart from its front. Where there is no more, numbers are 0 and texts are empty. The bytes
// must outlive it.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : bytes_(reinterpret_cast<const char*>(data), size) {}

  bool atEnd() const { return bytes_.empty(); }
  uint8_t byte() { return number<uint8_t>(); }

  // Of so many bytes as it has, the lowest first.
  template <class Number>
  Number number() {
    Number value{};
    const std::string_view bytes = take(sizeof value);
    if (!bytes.empty()) std::memcpy(&value, bytes.data(), bytes.size());
    return value;
  }

  // Up to the next of these bytes, which is taken, too, or to the end.
  std::string_view text(char end = '\0') {
    const std::string_view text = bytes_.substr(0, bytes_.find(end));
    bytes_.remove_prefix(text.size() < bytes_.size() ? text.size() + 1 : text.size());
    return text;
  }

  std::string_view rest() { return take(bytes_.size()); }

 private:
  std::string_view take(size_t count) {
    const std::string_view taken = bytes_.substr(0, count);
    bytes_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view bytes_;
};

// Ends the process, which libFuzzer takes for a finding, where the claim doesn't hold.
inline void require(bool holds, const char* otherwise) {
  if (holds) return;
  std::fprintf(stderr, "fuzz: %s\n", otherwise);
  std::abort();
}

}  // namespace fuzz
