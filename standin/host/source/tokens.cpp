#include "standin/host/source/tokens.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <iterator>

#include "standin/host/language/declarations.h"
#include "standin/host/language/encodings.h"

namespace standin::host {
namespace {

// None of them can be a name, but for that of a member.
const char* const kWords[] = {
    "AddHandler", "AddressOf", "And",  "As",     "Call",     "Case",  "Catch",    "Class",
    "Const",      "Continue",  "Dim",  "Do",     "DownTo",   "Each",  "Else",     "ElseIf",
    "End",        "Event",     "Exit", "False",  "Finally",  "For",   "Function", "If",
    "In",         "Inherits",  "Is",   "IsA",    "Loop",     "Me",    "Mod",      "New",
    "Next",       "Nil",       "Not",  "Or",     "Property", "Raise", "Redim",    "RemoveHandler",
    "Return",     "Select",    "Self", "Shared", "Step",     "Sub",   "Super",    "Then",
    "To",         "True",      "Try",  "Until",  "Wend",     "While", "Xor"};

// The longer ones first.
const char* const kSigns[] = {"<>", "<=", ">=", "=", "<", ">", "+", "-",
                              "*",  "/",  "\\", "^", "(", ")", ",", "."};

struct Radix {
  char letter;
  int base;
  TokenKind kind;
};
constexpr Radix kRadixes[] = {{'h', 16, TokenKind::whole},
                              {'o', 8, TokenKind::whole},
                              {'b', 2, TokenKind::whole},
                              {'c', 16, TokenKind::color}};

bool isLetter(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

class Reader {
 public:
  explicit Reader(std::string_view source) : rest_(source) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (rest_.starts_with(kByteOrderMark)) rest_.remove_prefix(kByteOrderMark.size());
  }

  std::vector<Token> read() {
    while (!rest_.empty()) readOne();
    endLine();
    add(TokenKind::end, "");
    return std::move(tokens_);
  }

 private:
  [[noreturn]] void fail(const std::string& what) const { throw SourceError(place_, what); }

  void skip(size_t bytes) {
    for (const char c : rest_.substr(0, bytes)) place_.column += (c & 0xC0) != 0x80;
    rest_.remove_prefix(bytes);
  }

  void skipLineBreak() {
    rest_.remove_prefix(rest_.starts_with("\r\n") ? 2 : 1);
    place_ = {place_.line + 1, 1};
  }

  Token& add(TokenKind kind, std::string text, size_t bytes = 0) {
    tokens_.push_back({kind, std::move(text), place_});
    skip(bytes);
    return tokens_.back();
  }

  void endLine() {
    if (!tokens_.empty() && tokens_.back().kind != TokenKind::lineEnd) add(TokenKind::lineEnd, "");
  }

  bool atLineBreak() const { return rest_.front() == '\n' || rest_.front() == '\r'; }

  void skipToLineBreak() {
    while (!rest_.empty() && !atLineBreak()) skip(1);
  }

  void readOne() {
    const char c = rest_.front();
    if (atLineBreak()) {
      endLine();
      skipLineBreak();
    } else if (c == ' ' || c == '\t') {
      skip(1);
    } else if (c == '\'' || rest_.starts_with("//")) {
      skipToLineBreak();
    } else if (c == '"') {
      readText();
    } else if (c == '&') {
      readRadix();
    } else if (isDigit(c) || (c == '.' && rest_.size() > 1 && isDigit(rest_[1]))) {
      readNumber();
    } else if (isLetter(c)) {
      readName();
    } else {
      readSign();
    }
  }

  // An underscore alone continues the line, when only a comment follows it.
  bool readContinuation() {
    const Place start = place_;
    skip(1);
    while (!rest_.empty() && (rest_.front() == ' ' || rest_.front() == '\t')) skip(1);
    if (rest_.starts_with("//") || rest_.starts_with("'")) skipToLineBreak();
    if (rest_.empty() || !atLineBreak())
      throw SourceError(start, "expected the end of the line after _, which continues the line");
    skipLineBreak();
    return true;
  }

  void readName() {
    const auto length = static_cast<size_t>(
        std::find_if(rest_.begin(), rest_.end(), [](char c) { return !isLetter(c) && !isDigit(c); }) -
        rest_.begin());
    const std::string_view name = rest_.substr(0, length);
    if (name == "_" && readContinuation()) return;
    if (sameName(name, "Rem")) return skipToLineBreak();
    const bool isMember = !tokens_.empty() && tokens_.back().is(".");
    const auto* const word = std::find_if(std::begin(kWords), std::end(kWords),
                                          [name](const char* each) { return sameName(each, name); });
    if (isMember || word == std::end(kWords)) {
      add(TokenKind::name, std::string(name), length);
    } else {
      add(TokenKind::word, *word, length);
    }
  }

  void readSign() {
    for (const std::string_view sign : kSigns) {
      if (!rest_.starts_with(sign)) continue;
      add(TokenKind::sign, std::string(sign), sign.size());
      return;
    }
    if (rest_.front() == '#') fail("expected a statement; directives for the compiler are not taken");
    if (rest_.front() == ':') fail("expected the end of the line; each statement has its own line");
    const auto c = static_cast<unsigned char>(rest_.front());
    if (c >= 0x80) fail("expected letters of ASCII; others may stand in texts and comments only");
    fail(c > ' ' ? std::string("no '") + rest_.front() + "' has a meaning here" : "a control character");
  }

  // A doubled quote stands for one.
  void readText() {
    const Place start = place_;
    std::string content;
    for (size_t i = 1; i < rest_.size() && rest_[i] != '\n' && rest_[i] != '\r'; ++i) {
      if (rest_[i] != '"') {
        content += rest_[i];
      } else if (i + 1 < rest_.size() && rest_[i + 1] == '"') {
        content += rest_[++i];
      } else {
        if (!convert(content, kEncodingUtf8, kEncodingUtf16)) fail("a text that is not in UTF-8");
        add(TokenKind::text, std::move(content), i + 1);
        return;
      }
    }
    throw SourceError(start, "expected a quote at the end of the text, in the same line");
  }

  void readRadix() {
    const char letter = rest_.size() > 1 ? static_cast<char>(rest_[1] | 0x20) : ' ';
    const auto* const radix = std::find_if(std::begin(kRadixes), std::end(kRadixes),
                                           [letter](const Radix& each) { return each.letter == letter; });
    if (radix == std::end(kRadixes)) fail("expected &h, &o or &b and a number, or &c and a colour");
    uint64_t number = 0;
    const auto [end, error] =
        std::from_chars(rest_.data() + 2, rest_.data() + rest_.size(), number, radix->base);
    const size_t length = static_cast<size_t>(end - rest_.data());
    const bool isColor = radix->kind == TokenKind::color;
    if (error == std::errc::result_out_of_range) fail("a number of more than 64 bits");
    if (error != std::errc() || (isColor && length != 2 + 6) || followsLetter(length))
      fail(isColor ? "expected six hexadecimal digits after &c" : "expected digits after the letter");
    // All 32 bits of an Integer may be written.
    const bool isNegative = !isColor && number > INT32_MAX && number <= UINT32_MAX;
    const auto whole = isNegative ? int64_t{static_cast<int32_t>(number)} : static_cast<int64_t>(number);
    add(radix->kind, std::string(rest_.substr(0, length)), length).whole = whole;
  }

  bool followsLetter(size_t length) const {
    return length < rest_.size() && (isLetter(rest_[length]) || isDigit(rest_[length]));
  }

  size_t digitsFrom(size_t start) const {
    size_t end = start;
    while (end < rest_.size() && isDigit(rest_[end])) ++end;
    return end;
  }

  void readNumber() {
    size_t end = digitsFrom(0);
    const size_t wholeEnd = end;
    if (end < rest_.size() && rest_[end] == '.' && digitsFrom(end + 1) > end + 1) end = digitsFrom(end + 1);
    if (end < rest_.size() && (rest_[end] | 0x20) == 'e') {
      const bool isSigned = end + 1 < rest_.size() && (rest_[end + 1] == '-' || rest_[end + 1] == '+');
      const size_t first = end + (isSigned ? 2 : 1);
      if (digitsFrom(first) > first) end = digitsFrom(first);
    }
    if (followsLetter(end)) fail("expected a number without letters in it");
    const std::string number(rest_.substr(0, end));
    if (end > wholeEnd) {
      add(TokenKind::real, number, end).real = std::strtod(number.c_str(), nullptr);
      return;
    }
    int64_t whole = 0;
    if (std::from_chars(number.data(), number.data() + end, whole).ec != std::errc())
      fail("a whole number of more than 64 bits");
    add(TokenKind::whole, number, end).whole = whole;
  }

  std::string_view rest_;
  Place place_{1, 1};
  std::vector<Token> tokens_;
};

}  // namespace

std::string Token::describe() const {
  switch (kind) {
    case TokenKind::lineEnd:
      return "the end of the line";
    case TokenKind::end:
      return "the end of the program";
    case TokenKind::text:
      return "a text";
    default:
      return "'" + text + "'";
  }
}

std::vector<Token> tokensOf(std::string_view source) {
  return Reader(source).read();
}

}  // namespace standin::host
