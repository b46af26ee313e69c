// Values of the host language as the stand-in host's C++ callers hold them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace standin::host {

struct StringRecord;  // what a host string's handle points at
struct ObjectBlock;   // what a host object's handle points at
class Counted;        // what stands behind either; see things/
using StringHandle = StringRecord*;
using ObjectHandle = ObjectBlock*;

// One reference of the host's side to a host string or object, or none.
class Ref {
 public:
  Ref() = default;
  static Ref adopt(void* handle);  // takes over a reference of the host's side
  static Ref adopt(Counted& thing);
  static Ref share(void* handle);  // makes one
  static Ref share(Counted& thing);
  Ref(const Ref& other);
  Ref(Ref&& other) noexcept : thing_(std::exchange(other.thing_, nullptr)) {}
  Ref& operator=(Ref other) noexcept;
  ~Ref();

  bool isNull() const { return !thing_; }
  void* get() const;  // the handle
  Counted* thing() const { return thing_; }
  Counted* leak() { return std::exchange(thing_, nullptr); }  // gives the reference away
  StringHandle string() const { return static_cast<StringHandle>(get()); }
  ObjectHandle object() const { return static_cast<ObjectHandle>(get()); }

 private:
  Counted* thing_ = nullptr;
};

enum class Kind { nil, boolean, int32, uint32, int64, single, number, color, string, object, array };
const char* name(Kind kind);

// A value that is not of the kind asked for is reported by CallError (host.h).
class Value {
 public:
  Value() = default;  // nil
  Value(std::nullptr_t) {}
  Value(bool value) : kind_(Kind::boolean), bits_(value) {}
  Value(int32_t value) : kind_(Kind::int32), bits_(value) {}
  Value(uint32_t value) : kind_(Kind::uint32), bits_(value) {}
  Value(int64_t value) : kind_(Kind::int64), bits_(value) {}
  Value(float value) : kind_(Kind::single), real_(value) {}
  Value(double value) : kind_(Kind::number), real_(value) {}
  Value(const char* utf8) : Value(std::string_view(utf8)) {}
  Value(const std::string& utf8) : Value(std::string_view(utf8)) {}
  Value(std::string_view utf8);
  static Value nullString();
  static Value string(std::string_view bytes, uint32_t encoding);
  static Value color(uint32_t packed);
  static Value string(Ref reference);
  // An object's reference, as the value that host code sees: what is inside a variant, an array, an object,
  // nil.
  static Value object(Ref reference);

  Kind kind() const { return kind_; }
  // Nil, or a string or object whose handle is null.
  bool isNil() const { return isReference() ? reference_.isNull() : kind_ == Kind::nil; }
  bool isReference() const { return kind_ >= Kind::string; }
  bool boolean() const;
  int64_t integer() const;    // of any whole kind, and of colours
  double number() const;      // of any number
  std::string text() const;   // a string as UTF-8; empty when its handle is null
  std::string bytes() const;  // as it is stored
  uint32_t encoding() const;
  const Ref& reference() const { return reference_; }
  void* handle() const { return reference_.get(); }

  // For messages and for people: 5, "text", a MDItemZNK, an array of 3, nil.
  std::string describe() const;

 private:
  void expect(bool fits, const char* wanted) const;

  Kind kind_ = Kind::nil;
  int64_t bits_ = 0;
  double real_ = 0;
  Ref reference_;
};

}  // namespace standin::host
