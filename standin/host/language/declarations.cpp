#include "standin/host/language/declarations.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>

namespace standin::host {
namespace {

struct NamedType {
  const char* name;
  TypeKind kind;
  int size;
};

constexpr NamedType kNamedTypes[] = {
    {"Boolean", TypeKind::boolean, 1}, {"Int8", TypeKind::int8, 1},     {"UInt8", TypeKind::uint8, 1},
    {"Byte", TypeKind::uint8, 1},      {"Int16", TypeKind::int16, 2},   {"UInt16", TypeKind::uint16, 2},
    {"Integer", TypeKind::int32, 4},   {"Int32", TypeKind::int32, 4},   {"UInt32", TypeKind::uint32, 4},
    {"Int64", TypeKind::int64, 8},     {"UInt64", TypeKind::uint64, 8}, {"Single", TypeKind::single, 4},
    {"Double", TypeKind::number, 8},   {"Color", TypeKind::color, 4},   {"String", TypeKind::string, 4},
    {"Variant", TypeKind::variant, 4},
};

bool isNameStart(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}

char lowerCase(char c) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool isNamePart(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  Declaration method() {
    Declaration declaration;
    declaration.name = identifier("a name");
    if (take('(') && !take(')')) {
      do declaration.parameters.push_back(parameter());
      while (take(','));
      expect(')');
    }
    if (takeWord("as")) declaration.result = type();
    end();
    checkPresets(declaration);
    return declaration;
  }

  ConstantDeclaration constant() {
    ConstantDeclaration declaration;
    declaration.name = identifier("a name");
    if (takeWord("as")) declaration.type = type();
    expect('=');
    declaration.value = literal();
    if (declaration.type.kind == TypeKind::none) declaration.type.kind = kindOf(declaration.value);
    end();
    return declaration;
  }

  Type wholeType() {
    Type parsed = type();
    end();
    return parsed;
  }

  std::string wholeName() {
    std::string parsed = identifier("a name");
    end();
    return parsed;
  }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    throw DeclarationError("\"" + std::string(text_) + "\": " + what + " at character " +
                           std::to_string(at_ + 1));
  }

  void skipSpace() {
    while (at_ < text_.size() && text_[at_] == ' ') ++at_;
  }

  bool take(char c) {
    skipSpace();
    if (at_ == text_.size() || text_[at_] != c) return false;
    ++at_;
    return true;
  }

  void expect(char c) {
    if (!take(c)) fail(std::string("expected '") + c + "'");
  }

  void end() {
    skipSpace();
    if (at_ != text_.size()) fail("unexpected text");
  }

  std::string_view peekWord() {
    skipSpace();
    if (at_ == text_.size() || !isNameStart(text_[at_])) return {};
    size_t stop = at_;
    while (stop < text_.size() && isNamePart(text_[stop])) ++stop;
    return text_.substr(at_, stop - at_);
  }

  bool takeWord(std::string_view word) {
    const std::string_view found = peekWord();
    if (!sameName(found, word)) return false;
    at_ += found.size();
    return true;
  }

  std::string identifier(const char* wanted) {
    const std::string_view word = peekWord();
    if (word.empty()) fail(std::string("expected ") + wanted);
    if (sameName(word, "as")) fail(std::string("expected ") + wanted + ", not \"as\"");
    at_ += word.size();
    return std::string(word);
  }

  bool takeBrackets() {
    if (!take('(')) return false;
    expect(')');
    return true;
  }

  Type type() {
    Type parsed;
    const std::string name = identifier("a type");
    const auto* const known =
        std::find_if(std::begin(kNamedTypes), std::end(kNamedTypes),
                     [&name](const NamedType& row) { return sameName(row.name, name); });
    if (known != std::end(kNamedTypes)) {
      parsed.kind = known->kind;
    } else {
      parsed.kind = TypeKind::object;
      parsed.className = name;
    }
    parsed.array = takeBrackets();
    return parsed;
  }

  Parameter parameter() {
    Parameter parsed;
    parsed.name = identifier("a parameter");
    if (sameName(parsed.name, "assigns")) {
      parsed.assigns = true;
      parsed.name = identifier("a parameter");
    }
    const bool array = takeBrackets();
    if (!takeWord("as")) fail("expected \"as\" and the parameter's type");
    parsed.type = type();
    if (array && parsed.type.array) fail("an array of arrays");
    parsed.type.array = parsed.type.array || array;
    if (take('=')) {
      parsed.preset = literal();
      if (!fits(parsed.type, *parsed.preset)) fail("a default value of another type than the parameter's");
    }
    return parsed;
  }

  void checkPresets(const Declaration& declaration) const {
    bool preset = false;
    for (const Parameter& parameter : declaration.parameters) {
      if (preset && !parameter.preset && !parameter.assigns) {
        fail("the parameter " + parameter.name + " lacks a default value, but one before it has one;");
      }
      preset = preset || parameter.preset;
    }
  }

  Literal literal() {
    skipSpace();
    if (take('"')) return quoted();
    if (takeWord("true")) return true;
    if (takeWord("false")) return false;
    if (takeWord("nil")) return std::monostate{};
    return numberLiteral();
  }

  std::string quoted() {
    std::string content;
    while (at_ < text_.size()) {
      const char c = text_[at_++];
      if (c == '"') {
        if (at_ == text_.size() || text_[at_] != '"') return content;
        ++at_;
      }
      content += c;
    }
    fail("a text without its closing quote");
  }

  Literal numberLiteral() {
    const bool hexadecimal = at_ + 1 < text_.size() && text_[at_] == '&' && (text_[at_ + 1] | 0x20) == 'h';
    if (hexadecimal) at_ += 2;
    const char* const first = text_.data() + at_;
    const char* const last = text_.data() + text_.size();
    int64_t whole = 0;
    const auto read = std::from_chars(first, last, whole, hexadecimal ? 16 : 10);
    if (read.ec != std::errc{}) fail("expected a value");
    if (hexadecimal || read.ptr == last || *read.ptr != '.') {
      at_ += static_cast<size_t>(read.ptr - first);
      return whole;
    }
    double real = 0;
    const auto readReal = std::from_chars(first, last, real);
    if (readReal.ec != std::errc{}) fail("expected a number");
    at_ += static_cast<size_t>(readReal.ptr - first);
    return real;
  }

  static TypeKind kindOf(const Literal& value) {
    constexpr TypeKind kKinds[] = {TypeKind::object, TypeKind::boolean, TypeKind::int32, TypeKind::number,
                                   TypeKind::string};
    return kKinds[value.index()];
  }

  static bool fits(const Type& type, const Literal& value) {
    if (std::holds_alternative<std::monostate>(value)) return type.isHandle();
    if (type.array || type.kind == TypeKind::object) return false;
    if (type.kind == TypeKind::variant) return true;
    if (std::holds_alternative<std::string>(value)) return type.kind == TypeKind::string;
    if (std::holds_alternative<bool>(value)) return type.kind == TypeKind::boolean;
    const bool real = type.kind == TypeKind::single || type.kind == TypeKind::number;
    if (std::holds_alternative<double>(value)) return real;
    return real || (type.kind >= TypeKind::int8 && type.kind <= TypeKind::color);
  }

  std::string_view text_;
  size_t at_ = 0;
};

}  // namespace

int Type::size() const {
  if (isHandle()) return 4;
  const auto* const row = std::find_if(std::begin(kNamedTypes), std::end(kNamedTypes),
                                       [this](const NamedType& named) { return named.kind == kind; });
  return row == std::end(kNamedTypes) ? 0 : row->size;
}

Declaration parseMethod(std::string_view text) {
  return Parser(text).method();
}

ConstantDeclaration parseConstant(std::string_view text) {
  return Parser(text).constant();
}

Type parseType(std::string_view text) {
  return Parser(text).wholeType();
}

std::string parseName(std::string_view text) {
  return Parser(text).wholeName();
}

std::string lower(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), lowerCase);
  return result;
}

int compareLetters(const char* one, const char* other, size_t length) {
  for (size_t i = 0; i < length; ++i) {
    if (one[i] == other[i]) continue;
    if (const int difference = lowerCase(one[i]) - lowerCase(other[i])) return difference;
  }
  return 0;
}

bool sameSignature(const Declaration& one, const Declaration& other) {
  const auto sameType = [](const Type& a, const Type& b) {
    return a.kind == b.kind && a.array == b.array && sameName(a.className, b.className);
  };
  const auto sameParameter = [&sameType](const Parameter& a, const Parameter& b) {
    return sameType(a.type, b.type) && a.assigns == b.assigns;
  };
  return sameName(one.name, other.name) && sameType(one.result, other.result) &&
         std::equal(one.parameters.begin(), one.parameters.end(), other.parameters.begin(),
                    other.parameters.end(), sameParameter);
}

std::string describe(const Type& type) {
  if (type.kind == TypeKind::none) return "nothing";
  std::string text = type.className;
  for (const NamedType& row : kNamedTypes) {
    if (row.kind == type.kind && text.empty()) text = row.name;
  }
  return type.array ? text + "()" : text;
}

}  // namespace standin::host
