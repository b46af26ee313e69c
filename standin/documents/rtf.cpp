// RTF: groups in braces, words behind backslashes, and bytes in code pages that change with the font.
//
// Ours, because the packaged converter, unrtf 0.21.10, lost what this is for: of a Shift-JIS character with
// an ASCII second byte it made that byte alone, of a surrogate pair two halves, it showed hidden text, and
// gave up 100,000 groups deep.
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "standin/documents/code_pages.h"
#include "standin/documents/file.h"
#include "standin/documents/formats.h"
#include "standin/documents/rtf_tables.h"

namespace standin::documents {
namespace {

constexpr std::string_view kSignature = "{\\rtf";
constexpr size_t kLongestWord = 32;
constexpr int64_t kLargestNumber = INT32_MAX;
constexpr char32_t kLargestCharacter = 0x10FFFF;

// Bytes that wait for their conversion, since one may be the first of two that make a character.
constexpr size_t kMostPending = 1 << 20;

class RtfInput {
 public:
  static constexpr int kEnd = -1;

  RtfInput(int file, const Deadline& deadline) : file_(file), deadline_(deadline) {}

  int next() {
    if (position_ == size_ && !fill()) return kEnd;
    return static_cast<uint8_t>(buffer_[position_++]);
  }

  // Takes back the last of next(); at the end there is nothing to take back.
  void back() {
    if (position_ > 0) --position_;
  }

  void skip(int64_t count) {
    while (count > 0 && (position_ < size_ || fill())) {
      const auto now = std::min(count, static_cast<int64_t>(size_ - position_));
      position_ += static_cast<size_t>(now);
      count -= now;
    }
  }

 private:
  bool fill() {
    deadline_.check();
    position_ = 0;
    size_ = readSome(file_, buffer_, sizeof buffer_);
    return size_ > 0;
  }

  int file_;
  const Deadline& deadline_;
  size_t position_ = 0;
  size_t size_ = 0;
  char buffer_[65536];
};

// What holds from a place to the end of its group.
struct Group {
  int font = kNoFont;
  int fallbackLength = 1;
  bool isSkipped = false;
  bool isHidden = false;
  bool isFontTable = false;
  bool isApart = false;  // this group alone, not those in it

  static constexpr int kNoFont = -1;
};

class RtfReader {
 public:
  RtfReader(int file, const Deadline& deadline, Text& text) : input_(file, deadline), text_(text) {}

  void read();

 private:
  struct Word {
    std::string name;
    bool hasNumber = false;
    int number = 0;
  };

  Group& group() { return groups_.back(); }
  bool isShown() { return !group().isSkipped && !group().isHidden && !group().isFontTable; }

  void checkSignature();
  void startGroup();
  void endGroup();
  void handleBackslash();
  Word readWord();
  void handleWord(const Word& word);
  void apply(const RtfWord& known, const Word& word);
  void applyToFonts(const RtfWord& known, const Word& word);
  void addHexadecimal();
  void addSymbol(int symbol);

  // Each is nothing where the text isn't shown, or where it is the fallback of a Unicode character.
  void addByte(int byte);
  void addCharacter(char32_t character);
  void addUnicode(int number);

  // False for what is to be passed over instead of a character that came as Unicode.
  bool takeFallback();
  int codePage();
  void flush();
  void add(char32_t character);

  RtfInput input_;
  Text& text_;
  CodePages codePages_;
  std::vector<Group> groups_{Group()};  // the outermost last
  std::map<int, int> codePageOfFont_;
  int documentCodePage_ = 1252;
  int defaultFont_ = Group::kNoFont;
  int describedFont_ = Group::kNoFont;  // in the font table
  int fallback_ = 0;                    // characters that are still to be passed over
  char32_t firstSurrogate_ = 0;
  bool isOptional_ = false;  // after "\*"
  std::string pending_;
};

int hexadecimal(int c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool isLetter(int c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(int c) {
  return c >= '0' && c <= '9';
}

void RtfReader::checkSignature() {
  for (const char expected : kSignature) {
    if (input_.next() != expected) throw DocumentError("is no RTF");
  }
  groups_.push_back(group());
  while (isDigit(input_.next())) {
  }
  input_.back();
}

void RtfReader::read() {
  checkSignature();
  // A file that is cut off has the text up to there.
  for (int c; groups_.size() > 1 && !text_.isFull() && (c = input_.next()) != RtfInput::kEnd;) {
    switch (c) {
      case '{':
        startGroup();
        break;
      case '}':
        endGroup();
        break;
      case '\\':
        handleBackslash();
        break;
      case '\r':
      case '\n':
      case '\0':
        break;
      default:
        addByte(c);
    }
  }
  flush();
}

void RtfReader::startGroup() {
  flush();
  fallback_ = 0;
  isOptional_ = false;
  groups_.push_back(group());
  group().isApart = false;
}

void RtfReader::endGroup() {
  flush();
  fallback_ = 0;
  if (group().isApart) text_.addBlank();
  groups_.pop_back();
}

void RtfReader::handleBackslash() {
  const int c = input_.next();
  if (c == RtfInput::kEnd) return;
  if (isLetter(c)) {
    input_.back();
    handleWord(readWord());
  } else if (c == '\'') {
    addHexadecimal();
  } else if (c == '*') {
    isOptional_ = true;
  } else {
    addSymbol(c);
  }
}

RtfReader::Word RtfReader::readWord() {
  Word word;
  int c = input_.next();
  for (; isLetter(c); c = input_.next()) {
    if (word.name.size() < kLongestWord) word.name += static_cast<char>(c);
  }
  const bool isNegative = c == '-';
  if (isNegative) c = input_.next();
  int64_t number = 0;
  for (; isDigit(c); c = input_.next()) {
    word.hasNumber = true;
    number = std::min(number * 10 + (c - '0'), kLargestNumber);
  }
  word.number = static_cast<int>(isNegative ? -number : number);
  if (c != ' ') input_.back();
  return word;
}

void RtfReader::handleWord(const Word& word) {
  const RtfWord* const known = rtfWordNamed(word.name);
  // Whatever else is skipped: these bytes aren't to be taken for braces.
  if (known && known->meaning == RtfMeaning::Binary) {
    input_.skip(word.number);
    takeFallback();
    return;
  }
  if (isOptional_ && !isShownThoughOptional(word.name)) group().isSkipped = true;
  isOptional_ = false;
  if (!known) return;
  if (known->meaning == RtfMeaning::Character) {
    addCharacter(static_cast<char32_t>(known->value));
    return;
  }
  flush();
  if (group().isFontTable) {
    applyToFonts(*known, word);
  } else {
    apply(*known, word);
  }
}

void RtfReader::apply(const RtfWord& known, const Word& word) {
  const int number = word.hasNumber ? word.number : known.value;
  switch (known.meaning) {
    case RtfMeaning::Skipped:
      group().isSkipped = true;
      break;
    case RtfMeaning::Apart:
      group().isApart = true;
      text_.addBlank();
      break;
    case RtfMeaning::FontTable:
      group().isFontTable = true;
      break;
    case RtfMeaning::Break:
      if (isShown()) text_.addBlank();
      break;
    case RtfMeaning::Plain:
      group().isHidden = false;
      group().font = Group::kNoFont;
      break;
    case RtfMeaning::Hidden:
      group().isHidden = !word.hasNumber || word.number != 0;
      break;
    case RtfMeaning::DocumentCodePage:
      documentCodePage_ = number;
      break;
    case RtfMeaning::DefaultFont:
      defaultFont_ = number;
      break;
    case RtfMeaning::Font:
      group().font = number;
      break;
    case RtfMeaning::Unicode:
      addUnicode(number);
      break;
    case RtfMeaning::FallbackLength:
      group().fallbackLength = std::max(number, 0);
      break;
    default:
      break;  // of the font table, or dealt with before
  }
}

void RtfReader::applyToFonts(const RtfWord& known, const Word& word) {
  if (known.meaning == RtfMeaning::Font) describedFont_ = word.number;
  if (known.meaning == RtfMeaning::FontCharset)
    codePageOfFont_[describedFont_] = codePageOfCharset(word.number);
  if (known.meaning == RtfMeaning::FontCodePage) codePageOfFont_[describedFont_] = word.number;
}

void RtfReader::addHexadecimal() {
  int byte = 0;
  for (int i = 0; i < 2; ++i) {
    const int digit = hexadecimal(input_.next());
    if (digit < 0) return input_.back();
    byte = byte * 16 + digit;
  }
  addByte(byte);
}

void RtfReader::addSymbol(int symbol) {
  switch (symbol) {
    case '\\':
    case '{':
    case '}':
      addByte(symbol);
      break;
    case '~':
      addCharacter(0xA0);
      break;
    case '_':
      addCharacter('-');
      break;
    case '-':  // shows only where a line ends
      takeFallback();
      break;
    case '\r':
    case '\n':
    case '\t':
      flush();
      if (isShown()) text_.addBlank();
      break;
    default:
      break;
  }
}

bool RtfReader::takeFallback() {
  if (fallback_ == 0) return true;
  --fallback_;
  return false;
}

void RtfReader::addByte(int byte) {
  isOptional_ = false;
  if (!isShown() || !takeFallback()) return;
  pending_ += static_cast<char>(byte);
  if (pending_.size() >= kMostPending) flush();
}

void RtfReader::addCharacter(char32_t character) {
  if (!isShown() || !takeFallback()) return;
  flush();
  add(character);
}

// A negative number is one of 16 bits without its sign.
void RtfReader::addUnicode(int number) {
  fallback_ = group().fallbackLength;
  if (!isShown()) return;
  auto character = static_cast<char32_t>(number < 0 ? number + 0x10000 : number);
  if (U16_IS_LEAD(character)) {
    firstSurrogate_ = character;
    return;
  }
  if (U16_IS_TRAIL(character) && firstSurrogate_ != 0) {
    character = static_cast<char32_t>(U16_GET_SUPPLEMENTARY(firstSurrogate_, character));
  }
  add(character);
}

int RtfReader::codePage() {
  const int font = group().font == Group::kNoFont ? defaultFont_ : group().font;
  const auto found = codePageOfFont_.find(font);
  if (found == codePageOfFont_.end() || found->second == kOfDocument) return documentCodePage_;
  return found->second;
}

void RtfReader::flush() {
  if (pending_.empty()) return;
  const int page = codePage();
  if (page != kSymbols) text_.add(codePages_.toUtf8(pending_, page));
  pending_.clear();
  firstSurrogate_ = 0;
}

// U+FFFD for what is no character.
void RtfReader::add(char32_t character) {
  firstSurrogate_ = 0;
  char utf8[U8_MAX_LENGTH];
  size_t length = 0;
  if (character > kLargestCharacter || U_IS_SURROGATE(character)) character = 0xFFFD;
  U8_APPEND_UNSAFE(utf8, length, character);
  text_.add({utf8, length});
}

}  // namespace

void readRtf(int file, const Deadline& deadline, Text& text) {
  RtfReader(file, deadline, text).read();
}

}  // namespace standin::documents
