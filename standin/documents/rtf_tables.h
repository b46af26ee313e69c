// What the words and numbers of RTF mean.
#pragma once

#include <cstdint>
#include <string_view>

namespace standin::documents {

enum class RtfMeaning : uint8_t {
  // Of a group, from here to its end.
  Skipped,    // isn't shown in the text
  Apart,      // is shown, apart from what is around it
  FontTable,  // says which fonts there are
  // Of text.
  Break,      // ends a word
  Character,  // stands for the character `value`
  Plain,      // ends all that was said of the characters
  Hidden,     // they aren't shown, or are again with 0
  // Of encodings. The number behind a word is what they are about.
  DocumentCodePage,  // or, without a number, `value`
  DefaultFont,
  Font,
  FontCharset,
  FontCodePage,
  Unicode,         // a character
  FallbackLength,  // so many characters behind a Unicode character are for programs without Unicode
  Binary,          // so many bytes follow
};

struct RtfWord {
  std::string_view name;
  RtfMeaning meaning;
  int value = 0;
};

// Null for a word that has nothing to do with the text.
const RtfWord* rtfWordNamed(std::string_view name);

// Groups that start with `\*` and a word are skipped, but for those with these words.
bool isShownThoughOptional(std::string_view name);

// In the place of a code page.
constexpr int kSymbols = -1;    // bytes are signs, not characters
constexpr int kOfDocument = 0;  // that of the document

// Of the number behind `\fcharset`.
int codePageOfCharset(int charset);

}  // namespace standin::documents
