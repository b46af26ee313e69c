#include "standin/coreservices/language/parser.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "standin/coreservices/attributes/schema.h"
#include "standin/coreservices/attributes/text.h"

namespace standin::metadata {
namespace {

// Deeper nesting than any person writes; it bounds the parser's and the matcher's recursion.
constexpr int kMaximumDepth = 200;

bool isBlank(char16_t c) {
  return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r';
}

bool isKeyStart(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_';
}

bool isKeyPart(char16_t c) {
  return isKeyStart(c) || (c >= u'0' && c <= u'9') || c == u'.' || c == u':' || c == u'-';
}

bool isBareWordPart(char16_t c) {
  return !isBlank(c) && std::u16string_view(u"\"'()[]{}!=<>&|,$\\").find(c) == std::u16string_view::npos;
}

char lower(char16_t c) {
  return static_cast<char>(c >= u'A' && c <= u'Z' ? c + (u'a' - u'A') : c);
}

struct ReadNumber {
  std::optional<Number> number;
  bool outOfRange = false;  // then it is a number, too
};

ReadNumber readNumber(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  const size_t digit = text.starts_with('-') ? 1 : 0;  // from_chars also reads "inf" and "nan": words here
  if (digit >= text.size() || (text[digit] != '.' && (text[digit] < '0' || text[digit] > '9'))) return {};
  const char* const end = text.data() + text.size();
  int64_t integer = 0;
  if (const auto read = std::from_chars(text.data(), end, integer);
      read.ptr == end && read.ec == std::errc{}) {
    return {integer};
  }
  double real = 0;
  const auto read = std::from_chars(text.data(), end, real);
  if (read.ptr != end || read.ec == std::errc::invalid_argument) return {};
  if (read.ec == std::errc::result_out_of_range) return {{}, true};
  return {real};
}

std::optional<bool> readTruth(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) { return lower(static_cast<unsigned char>(c)); });
  if (text == "true") return true;
  if (text == "false") return false;
  return {};
}

// What the elements are without their wildcards and without characters that no number has: empty for others.
std::string plainText(const std::vector<PatternElement>& elements) {
  std::string plain;
  for (const PatternElement& element : elements) {
    if (element.kind != PatternElement::Literal || element.character >= 0x80) return {};
    plain += static_cast<char>(element.character);
  }
  return plain;
}

// Text content has one blank between its words, whatever the file has there.
void foldBlanks(std::vector<PatternElement>& elements) {
  const auto isBlankElement = [](const PatternElement& e) {
    return e.kind == PatternElement::Literal && u_isUWhiteSpace(static_cast<UChar32>(e.character));
  };
  for (PatternElement& element : elements) {
    if (isBlankElement(element)) element.character = U' ';
  }
  const auto bothBlank = [&](const PatternElement& a, const PatternElement& b) {
    return isBlankElement(a) && isBlankElement(b);
  };
  elements.erase(std::unique(elements.begin(), elements.end(), bothBlank), elements.end());
}

class Parser {
 public:
  explicit Parser(std::u16string_view text) : text_(text) {}

  ExpressionRef parse() {
    skipBlanks();
    if (atEnd()) fail("the query is empty");
    ExpressionRef whole = parseOr();
    if (!atEnd()) fail(peek() == u')' ? "this parenthesis was never opened" : "expected && or ||");
    return whole;
  }

 private:
  using Kind = Expression::Kind;

  [[noreturn]] void fail(std::string reason) const { throw ParseError{position_, std::move(reason)}; }
  [[noreturn]] void failAt(size_t position, std::string reason) const {
    throw ParseError{position, std::move(reason)};
  }

  bool atEnd() const { return position_ == text_.size(); }
  char16_t peek(size_t ahead = 0) const {
    return position_ + ahead < text_.size() ? text_[position_ + ahead] : u'\0';
  }
  void skipBlanks() {
    while (!atEnd() && isBlank(text_[position_])) ++position_;
  }
  bool take(std::u16string_view symbol) {
    if (!text_.substr(position_).starts_with(symbol)) return false;
    position_ += symbol.size();
    skipBlanks();
    return true;
  }
  void expect(std::u16string_view symbol, const char* reason) {
    if (!take(symbol)) fail(reason);
  }

  static ExpressionRef oneOrJoined(Kind kind, std::vector<ExpressionRef> parts) {
    return parts.size() == 1 ? std::move(parts.front()) : joined(kind, std::move(parts));
  }

  ExpressionRef parseOr() {
    std::vector<ExpressionRef> parts;
    do parts.push_back(parseAnd());
    while (take(u"||"));
    return oneOrJoined(Kind::Or, std::move(parts));
  }

  ExpressionRef parseAnd() {
    std::vector<ExpressionRef> parts;
    do parts.push_back(parsePrimary());
    while (take(u"&&"));
    return oneOrJoined(Kind::And, std::move(parts));
  }

  ExpressionRef parsePrimary() {
    if (take(u"!")) {
      if (peek() != u'(') fail("expected ( after !");
      return joined(Kind::Not, {parseParentheses()});
    }
    if (peek() == u'(') return parseParentheses();
    const size_t start = position_;
    Comparison comparison = startsRange() ? parseRange() : parseComparison();
    comparison.position = start;
    comparison.length = position_ - start;
    while (isBlank(text_[start + comparison.length - 1])) --comparison.length;
    return comparing(std::move(comparison));
  }

  ExpressionRef parseParentheses() {
    const size_t opening = position_;
    if (++depth_ > kMaximumDepth) fail("parentheses nest too deeply");
    take(u"(");
    ExpressionRef inner = parseOr();
    if (atEnd()) failAt(opening, "this parenthesis is never closed");
    expect(u")", "expected && or || or )");
    --depth_;
    return inner;
  }

  // `InRange` is a key like any other unless a parenthesis follows.
  bool startsRange() const {
    constexpr std::string_view kName = "inrange";
    for (size_t i = 0; i < kName.size(); ++i) {
      if (peek(i) >= 0x80 || lower(peek(i)) != kName[i]) return false;
    }
    size_t after = kName.size();
    while (isBlank(peek(after))) ++after;
    return peek(after) == u'(';
  }

  Comparison parseRange() {
    constexpr size_t kNameLength = 7;
    position_ += kNameLength;
    skipBlanks();
    take(u"(");
    Comparison range;
    range.op = Operator::InRange;
    if (peek() == u'*') fail("* as a key goes with == only");
    range.key = parseKey();
    expect(u",", "expected , after the key of InRange");
    range.value = parseValue(range, {});
    expect(u",", "expected , after the lowest value of InRange");
    range.highest = parseValue(range, {});
    expect(u")", "expected ) at the end of InRange");
    return range;
  }

  Comparison parseComparison() {
    Comparison comparison;
    comparison.key = parseKey();
    TextOptions options;
    parseBracketedModifiers(options);
    const size_t operatorAt = position_;
    comparison.op = parseOperator();
    if (comparison.key.any && comparison.op != Operator::Equal) {
      failAt(operatorAt, "* as a key goes with == only");
    }
    parseBracketedModifiers(options);
    comparison.value = parseValue(comparison, options);
    return comparison;
  }

  AttributeKey parseKey() {
    AttributeKey key;
    if (take(u"*")) {
      key.any = true;
      return key;
    }
    if (!isKeyStart(peek())) fail("expected the name of an attribute");
    while (isKeyPart(peek())) key.name += static_cast<char>(text_[position_++]);
    skipBlanks();
    key.file = fileAttributeNamed(key.name);
    return key;
  }

  Operator parseOperator() {
    constexpr std::pair<std::u16string_view, Operator> kOperators[] = {
        {u"==", Operator::Equal},          {u"!=", Operator::NotEqual}, {u"<=", Operator::LessOrEqual},
        {u">=", Operator::GreaterOrEqual}, {u"=", Operator::Equal},     {u"<", Operator::Less},
        {u">", Operator::Greater}};
    for (const auto& [symbol, op] : kOperators) {
      if (take(symbol)) return op;
    }
    fail("expected one of == != < > <= >= after the attribute's name");
  }

  bool addModifier(char16_t letter, TextOptions& options) const {
    if (letter == u'c') return options.ignoreCase = true;
    if (letter == u'd') return options.ignoreDiacritics = true;
    if (letter == u'w') return options.wholeWords = true;
    return false;
  }

  void parseBracketedModifiers(TextOptions& options) {
    if (!take(u"[")) return;
    while (addModifier(peek(), options)) ++position_;
    skipBlanks();
    expect(u"]", "expected one of the modifiers c, d and w, or ]");
  }

  void parseTrailingModifiers(TextOptions& options) {
    const size_t start = position_;
    while (addModifier(peek(), options)) ++position_;
    const bool startsAnotherWord = position_ == start && isBlank(text_[start - 1]);
    if (isKeyPart(peek()) && !startsAnotherWord)
      failAt(start, "expected modifiers of the letters c, d and w");
    skipBlanks();
  }

  Literal parseValue(const Comparison& comparison, TextOptions options) {
    const bool ordered = comparison.op != Operator::Equal && comparison.op != Operator::NotEqual;
    const size_t start = position_;
    const bool quoted = peek() == u'"' || peek() == u'\'';
    Literal literal;
    std::vector<PatternElement> elements;
    if (peek() == u'$') {
      setTime(literal, readTime(text_, position_));
      elements = takeLiterally(start);
    } else {
      elements = quoted ? parseQuoted() : parseBareWord();
    }
    if (quoted) readQuotedTime(literal, start, ordered);
    skipBlanks();
    parseTrailingModifiers(options);
    // Under `*`, "true" in quotes is that text: every file has some flag that is set.
    const bool isText = quoted && comparison.key.any;
    if (!literal.number && !literal.relativeTime) readPlainValue(literal, elements, isText);
    if (!literal.number && !literal.relativeTime && hasDates(comparison.key))
      readDateAlone(literal, elements, start + (quoted ? 1 : 0), ordered);
    if (ordered && !literal.number && !literal.relativeTime) {
      failAt(start, isTooLarge(elements) ? "this number is out of range" : "expected a number or a date");
    }
    if (comparison.key.file == FileAttribute::TextContent) {
      options.wholeWords = true;
      foldBlanks(elements);
    }
    literal.text = TextPattern(elements, options);
    return literal;
  }

  static void setTime(Literal& literal, const TimeValue& time) {
    if (const auto* const relative = std::get_if<RelativeTime>(&time)) {
      literal.relativeTime = *relative;
    } else {
      setPeriod(literal, std::get<Period>(time));
    }
  }

  // Text that names a time means that time, too. Where nothing else would do, a mistake in it is told.
  void readQuotedTime(Literal& literal, size_t opening, bool nothingElse) const {
    const std::u16string_view upToQuote = text_.substr(0, position_ - 1);
    size_t position = opening + 1;
    if (!upToQuote.substr(position).starts_with(kTimePrefix)) return;
    try {
      const TimeValue time = readTime(upToQuote, position);
      if (position == upToQuote.size()) setTime(literal, time);
    } catch (const ParseError&) {
      if (nothingElse) throw;
    }
  }

  static bool hasDates(const AttributeKey& key) {
    if (key.file == FileAttribute::None) return false;
    const ValueType type = infoOf(key.file).type;
    return type == ValueType::Date || type == ValueType::Dates;
  }

  // What starts as a date does, and is none, is a mistake where nothing else would do, and text elsewhere.
  static void readDateAlone(Literal& literal, const std::vector<PatternElement>& elements, size_t start,
                            bool nothingElse) {
    const std::string plain = plainText(elements);
    constexpr size_t kYear = 4;
    if (plain.find_first_not_of("0123456789") != kYear || plain[kYear] != '-') return;
    try {
      setPeriod(literal, readDate(std::u16string(plain.begin(), plain.end())));
    } catch (const ParseError& error) {
      if (nothingElse) throw ParseError{start + error.position, error.reason};
    }
  }

  static void readPlainValue(Literal& literal, const std::vector<PatternElement>& elements, bool isText) {
    const std::string plain = plainText(elements);
    literal.number = readNumber(plain).number;
    if (!isText) literal.truth = readTruth(plain);
  }

  static bool isTooLarge(const std::vector<PatternElement>& elements) {
    return readNumber(plainText(elements)).outOfRange;
  }

  // Reads from `start` up to here once more, every character as a literal.
  std::vector<PatternElement> takeLiterally(size_t start) {
    const size_t end = std::exchange(position_, start);
    std::vector<PatternElement> elements;
    while (position_ < end) append(elements, PatternElement::Literal);
    return elements;
  }

  // Characters outside the basic plane are two units; the pattern wants them whole.
  void append(std::vector<PatternElement>& elements, PatternElement::Kind kind) {
    const size_t length =
        peek() >= 0xD800 && peek() < 0xDC00 && peek(1) >= 0xDC00 && peek(1) < 0xE000 ? 2 : 1;
    elements.push_back({kind, fromUtf16(text_.substr(position_, length))[0]});
    position_ += length;
  }

  static PatternElement::Kind kindOf(char16_t c) {
    if (c == u'*') return PatternElement::AnyRun;
    return c == u'?' ? PatternElement::AnyOne : PatternElement::Literal;
  }

  std::vector<PatternElement> parseQuoted() {
    const size_t opening = position_;
    const char16_t quote = text_[position_++];
    std::vector<PatternElement> elements;
    while (peek() != quote || atEnd()) {
      if (peek() == u'\\' && position_ + 1 < text_.size()) {
        ++position_;
        append(elements, PatternElement::Literal);
      } else if (atEnd() || peek() == u'\\') {
        failAt(opening, "this quote is never closed");
      } else {
        append(elements, kindOf(peek()));
      }
    }
    ++position_;
    return elements;
  }

  std::vector<PatternElement> parseBareWord() {
    if (atEnd()) fail("expected a value");
    if (!isBareWordPart(peek())) fail("expected a value; put text with special characters in quotes");
    std::vector<PatternElement> elements;
    while (!atEnd() && isBareWordPart(peek())) append(elements, kindOf(peek()));
    return elements;
  }

  std::u16string_view text_;
  size_t position_ = 0;
  int depth_ = 0;
};

}  // namespace

std::variant<ExpressionRef, ParseError> parseQuery(std::u16string_view text) {
  try {
    return Parser(text).parse();
  } catch (const ParseError& error) {
    return error;
  }
}

}  // namespace standin::metadata
