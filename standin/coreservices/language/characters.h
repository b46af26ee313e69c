// What the characters of text are, and what they become where less is to be compared: the Unicode standard's
// properties, each looked up once.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace standin::metadata {

struct TextOptions {
  bool ignoreCase = false;
  bool ignoreDiacritics = false;
  bool wholeWords = false;
};

enum CharacterProperty : uint16_t {
  kIsLetter = 1,
  kIsSmall = 2,
  kIsCapital = 4,
  kIsMark = 8,             // belongs to the letter before it
  kComposesBackward = 16,  // may compose with what stands before it, or change its place with that
  kIsComposed = 32,        // is its own composed form
  kHasCase = 64,           // is something else when case is ignored
  kHasMarks = 128,         // is something else when diacritics are ignored
};

// Those of the basic plane that have been looked up; 0 of all others. Whoever looks one up at the same time
// finds the same.
extern std::array<std::atomic<uint16_t>, 0x10000> knownProperties;
uint16_t lookUpProperties(char32_t character);

// Some of the above.
inline uint16_t propertiesOf(char32_t character) {
  const bool isKept = character < knownProperties.size();
  const uint16_t known = isKept ? knownProperties[character].load(std::memory_order_relaxed) : 0;
  return known != 0 ? known : lookUpProperties(character);
}

inline bool isMark(char32_t character) {
  return (propertiesOf(character) & kIsMark) != 0;
}

// Whether a word may start or end between two characters, of which the left one isn't a mark.
bool isWordBorder(char32_t left, char32_t right);

char lowerAscii(char c);

std::u32string composed(std::u32string_view text);

// One character of composed text, as what is compared: one character, several or none.
std::u32string foldCharacter(char32_t character, TextOptions options);

}  // namespace standin::metadata
