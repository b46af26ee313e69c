// Calls of the plug-in's functions by their addresses, with arguments that are known only at run time.
//
// By the i386 C convention every argument stands on the stack in whole 32-bit words, a 64-bit one in two, and
// the callee does not remove them; so a function of any parameters can be called as one of as many words.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <utility>

namespace standin::host {

constexpr size_t kMostWords = 16;

// The words of a call's arguments. They are made for every call, so they need no memory of their own.
class Words {
 public:
  Words() = default;
  Words(std::initializer_list<uint32_t> words) {
    for (const uint32_t word : words) push_back(word);
  }

  void push_back(uint32_t word) {
    if (size_ == kMostWords) throw std::logic_error("a call with more than 16 words of arguments");
    words_[size_++] = word;
  }
  size_t size() const { return size_; }
  const uint32_t* data() const { return words_.data(); }

 private:
  std::array<uint32_t, kMostWords> words_;  // the first size_ of them have a value
  size_t size_ = 0;
};

inline uint32_t wordOf(const void* address) {
  return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(address));
}

inline void* addressIn(uint32_t word) {
  return reinterpret_cast<void*>(static_cast<uintptr_t>(word));
}

template <class Result, size_t... I>
Result callWithWords(void* function, const uint32_t* words, std::index_sequence<I...>) {
  return reinterpret_cast<Result (*)(decltype(static_cast<uint32_t>(I))...)>(function)(words[I]...);
}

template <class Result, size_t Count>
Result callCounted(void* function, const uint32_t* words) {
  return callWithWords<Result>(function, words, std::make_index_sequence<Count>());
}

template <class Result, size_t... Count>
constexpr auto callTable(std::index_sequence<Count...>) {
  return std::array<Result (*)(void*, const uint32_t*), sizeof...(Count)>{&callCounted<Result, Count>...};
}

// Result: void, uint32_t, uint64_t, float or double. The caller opens the gate's Callout.
template <class Result>
Result callMachine(void* function, const Words& words) {
  static constexpr auto table = callTable<Result>(std::make_index_sequence<kMostWords + 1>());
  return table[words.size()](function, words.data());
}

}  // namespace standin::host
