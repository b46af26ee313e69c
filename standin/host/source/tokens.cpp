#include "standin/host/source/tokens.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <iterator>

#include "standin/host/language/encodings.h"

namespace standin::host {
namespace {

// None of them can be a name, but for that of a member.
const char* const kWords[] = {
    "AddHandler", "AddressOf",     "And",    "As",     "Call",    "Case",     "Catch",    "Class",
    "Const",      "Continue",      "Dim",    "Do",     "DownTo",  "Each",     "Else",     "ElseIf",
    "End",        "Event",         "Exit",   "False",  "Finally", "For",      "Function", "If",
    "In",         "Inherits",      "Is",     "IsA",    "Loop",    "Me",       "Mod",      "New",
    "Next",       "Nil",           "Not",    "Or",     "Private", "Property", "Public",   "Raise",
    "Redim",      "RemoveHandler", "Return", "Select", "Self",    "Shared",   "Step",     "Sub",
    "Super",      "Then",          "To",     "True",   "Try",     "Until",    "Wend",     "While",
    "Xor"};

// The longer ones first.
const char* const kSigns[] = {"<>", "<=", ">=", "=", "<", ">", "+", "-",
                              "*",  "/",  "\\", "^", "(", ")", ",", "."};

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
    add(TokenKind::end, 0);
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

  void add(TokenKind kind, size_t bytes, Literal literal = {}) {
    tokens_.push_back({kind, std::string(rest_.substr(0, bytes)), place_, std::move(literal)});
    skip(bytes);
  }

  void endLine() {
    if (!tokens_.empty() && tokens_.back().kind != TokenKind::lineEnd) add(TokenKind::lineEnd, 0);
  }

  bool atLineBreak() const { return rest_.front() == '\n' || rest_.front() == '\r'; }
  bool atBlank() const { return rest_.front() == ' ' || rest_.front() == '\t'; }
  bool atComment() const { return rest_.front() == '\'' || rest_.starts_with("//"); }

  void skipToLineBreak() {
    while (!rest_.empty() && !atLineBreak()) skip(1);
  }

  void readOne() {
    const char c = rest_.front();
    if (atLineBreak()) {
      endLine();
      skipLineBreak();
    } else if (atBlank()) {
      skip(1);
    } else if (atComment()) {
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
  void readContinuation() {
    const Place start = place_;
    skip(1);
    while (!rest_.empty() && atBlank()) skip(1);
    if (!rest_.empty() && atComment()) skipToLineBreak();
    if (rest_.empty() || !atLineBreak())
      throw SourceError(start, "expected the end of the line after _, which continues the line");
    skipLineBreak();
  }

  void readName() {
    size_t length = 0;
    while (isNamePart(length)) ++length;
    const std::string_view name = rest_.substr(0, length);
    if (name == "_") return readContinuation();
    if (sameName(name, "Rem")) return skipToLineBreak();
    const bool isMember = !tokens_.empty() && tokens_.back().is(".");
    const auto* const word = std::find_if(std::begin(kWords), std::end(kWords),
                                          [name](const char* each) { return sameName(each, name); });
    const bool isName = isMember || word == std::end(kWords);
    add(isName ? TokenKind::name : TokenKind::word, length);
    if (!isName) tokens_.back().text = *word;
  }

  void readSign() {
    for (const std::string_view sign : kSigns) {
      if (rest_.starts_with(sign)) return add(TokenKind::sign, sign.size());
    }
    if (rest_.front() == '#') fail("expected a statement; directives for the compiler are not taken");
    if (rest_.front() == ':') fail("expected the end of the line; each statement has its own line");
    const auto c = static_cast<unsigned char>(rest_.front());
    if (c >= 0xFE) fail("the program must be in UTF-8");
    for (const char* const quote : {"\u2018", "\u2019", "\u201C", "\u201D"}) {
      if (rest_.starts_with(quote)) fail("expected a straight quote, \" or '");
    }
    if (c >= 0x80) fail("expected letters of ASCII; others may stand in texts and comments only");
    fail(c > ' ' ? std::string("no '") + rest_.front() + "' has a meaning here" : "a control character");
  }

  // A doubled quote stands for one.
  void readText() {
    std::string content;
    for (size_t i = 1; i < rest_.size() && rest_[i] != '\n' && rest_[i] != '\r'; ++i) {
      if (rest_[i] != '"') {
        content += rest_[i];
      } else if (i + 1 < rest_.size() && rest_[i + 1] == '"') {
        content += rest_[++i];
      } else {
        if (!convert(content, kEncodingUtf8, kEncodingUtf16)) fail("a text that is not in UTF-8");
        return add(TokenKind::literal, i + 1, std::move(content));
      }
    }
    fail("expected a quote at the end of the text, in the same line");
  }

  void readRadix() {
    const char letter = rest_.size() > 1 ? static_cast<char>(rest_[1] | 0x20) : ' ';
    const bool isColor = letter == 'c';
    const int base = isColor || letter == 'h' ? 16 : letter == 'o' ? 8 : letter == 'b' ? 2 : 0;
    if (base == 0) fail("expected &h, &o or &b and a number, or &c and a colour; + joins texts");
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(rest_.data() + 2, rest_.data() + rest_.size(), number, base);
    const auto length = static_cast<size_t>(end - rest_.data());
    if (error == std::errc::result_out_of_range) fail("a number of more than 64 bits");
    if (error != std::errc() || (isColor && length != 2 + 6) || isNamePart(length))
      fail(isColor ? "expected six hexadecimal digits after &c" : "expected digits after the letter");
    // All 32 bits of an Integer may be written.
    const bool isNegative = number > INT32_MAX && number <= UINT32_MAX;
    add(isColor ? TokenKind::color : TokenKind::literal, length,
        isNegative ? int64_t{static_cast<int32_t>(number)} : static_cast<int64_t>(number));
  }

  bool isNamePart(size_t at) const {
    return at < rest_.size() && (isLetter(rest_[at]) || isDigit(rest_[at]));
  }

  void readNumber() {
    const char* const first = rest_.data();
    const char* const last = first + rest_.size();
    double real = 0;
    int64_t whole = 0;
    const auto asReal = std::from_chars(first, last, real);
    const auto asWhole = std::from_chars(first, last, whole);
    const auto length = static_cast<size_t>(asReal.ptr - first);
    if (isNamePart(length)) fail("expected a number without letters in it");
    const bool isWhole = asReal.ptr == asWhole.ptr;
    if ((isWhole ? asWhole : asReal).ec != std::errc())
      fail(isWhole ? "a whole number of more than 64 bits" : "a number that no Double can hold");
    add(TokenKind::literal, length, isWhole ? Literal(whole) : Literal(real));
  }

  std::string_view rest_;
  Place place_{1, 1};
  std::vector<Token> tokens_;
};

}  // namespace

std::string Token::describe() const {
  if (kind == TokenKind::lineEnd) return "the end of the line";
  return kind == TokenKind::end ? "the end of the program" : "'" + text + "'";
}

std::vector<Token> tokensOf(std::string_view source) {
  return Reader(source).read();
}

}  // namespace standin::host
