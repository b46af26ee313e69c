// language/: the texts of the host language: the declarations of members, the encodings of strings. Nothing
// here knows of the running host or of its values. May include nothing of the project.
//
// The declaration texts by which a plug-in describes its members.
//
//   method or event   Name [( parameter {, parameter} )] [as Type]
//   parameter         [Assigns] name[()] as Type[()] [= literal]
//   constant          Name [as Type] = literal
//   Type              a name, with () behind it for an array
//   literal           5, -1, &hFF, 2.5, "text" (a doubled quote stands for one), true, false, nil
//
// Words of the language and names are taken in any letter case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace standin::host {

class DeclarationError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class TypeKind {
  none,  // a method without a result
  boolean,
  int8,
  uint8,
  int16,
  uint16,
  int32,
  uint32,
  int64,
  uint64,
  single,
  number,
  color,
  string,
  variant,
  object
};

struct Type {
  TypeKind kind = TypeKind::none;
  std::string className;  // of an object
  bool array = false;

  bool isHandle() const { return array || kind >= TypeKind::string; }
  // Bytes of a field of this type.
  int size() const;
  // 32-bit words of an argument of this type.
  size_t words() const { return size() == 8 ? 2 : 1; }
  bool operator==(const Type&) const = default;
};

using Literal = std::variant<std::monostate, bool, int64_t, double, std::string>;

struct Parameter {
  std::string name;
  Type type;
  bool assigns = false;
  std::optional<Literal> preset;
};

struct Declaration {
  std::string name;
  std::vector<Parameter> parameters;
  Type result;
};

struct ConstantDeclaration {
  std::string name;
  Type type;  // of the literal when the text names none
  Literal value;
};

// Each throws DeclarationError, whose text quotes the declaration and says what is wrong with it.
Declaration parseMethod(std::string_view text);
ConstantDeclaration parseConstant(std::string_view text);
Type parseType(std::string_view text);
std::string parseName(std::string_view text);

std::string lower(std::string_view text);
// Below 0, 0 or above it, as by std::memcmp, whatever the letters' case.
int compareLetters(const char* one, const char* other, size_t length);
inline bool sameName(std::string_view one, std::string_view other) {
  return one == other ||
         (one.size() == other.size() && compareLetters(one.data(), other.data(), one.size()) == 0);
}
// Same name, parameter types and result, so that a call of one is a call of the other.
bool sameSignature(const Declaration& one, const Declaration& other);
std::string describe(const Type& type);

}  // namespace standin::host
