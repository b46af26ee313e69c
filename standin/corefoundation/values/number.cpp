// Numbers: 64-bit integers and doubles, with the type under which they were made.
#include <CoreFoundation/CFNumber.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/runtime/object.h"

struct __CFNumber : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kNumberType;
  uint32_t type;  // one of the first six
  union {
    int64_t integer;
    double real;
  };

  bool isReal() const { return type >= kCFNumberFloat32Type; }
};

namespace cf {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr int32_t kIndefinite32 = std::numeric_limits<int32_t>::min();
constexpr int64_t kIndefinite64 = std::numeric_limits<int64_t>::min();

// The integers from -1 to 12 are shared objects, whatever type they are made as.
constexpr int64_t kFirstShared = -1;
constexpr int64_t kLastShared = 12;
constexpr size_t kSharedCount = kLastShared - kFirstShared + 1;

constexpr std::array<__CFNumber, kSharedCount> makeShared() {
  std::array<__CFNumber, kSharedCount> numbers{};
  for (size_t i = 0; i < kSharedCount; ++i) {
    numbers[i].isa = &classTable[kNumberType];
    numbers[i].count = kConstantCount;
    numbers[i].type = kCFNumberSInt32Type;
    numbers[i].integer = kFirstShared + static_cast<int64_t>(i);
  }
  return numbers;
}
constinit std::array<__CFNumber, kSharedCount> shared = makeShared();

// The six types that values are stored in and converted to; 0 for what isn't a number type.
CFNumberType basicType(CFNumberType type) {
  constexpr CFNumberType kBasic[] = {
      0,
      kCFNumberSInt8Type,
      kCFNumberSInt16Type,
      kCFNumberSInt32Type,
      kCFNumberSInt64Type,
      kCFNumberFloat32Type,
      kCFNumberFloat64Type,
      kCFNumberSInt8Type,    // char
      kCFNumberSInt16Type,   // short
      kCFNumberSInt32Type,   // int
      kCFNumberSInt32Type,   // long
      kCFNumberSInt64Type,   // long long
      kCFNumberFloat32Type,  // float
      kCFNumberFloat64Type,  // double
      kCFNumberSInt32Type,   // CFIndex
      kCFNumberSInt32Type,   // NSInteger
      kCFNumberFloat32Type,  // CGFloat
  };
  return type < 0 || type > kCFNumberMaxType ? 0 : kBasic[type];
}

template <class T>
T load(const void* from) {
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

template <class T>
bool store(void* to, T value, bool success) {
  std::memcpy(to, &value, sizeof value);
  return success;
}

int64_t loadInteger(CFNumberType basic, const void* from) {
  switch (basic) {
    case kCFNumberSInt8Type:
      return load<int8_t>(from);
    case kCFNumberSInt16Type:
      return load<int16_t>(from);
    case kCFNumberSInt32Type:
      return load<int32_t>(from);
    default:
      return load<int64_t>(from);
  }
}

__CFNumber* makeNumber(CFNumberType basic) {
  __CFNumber* const number = makeObject<__CFNumber>();
  if (number) number->type = static_cast<uint32_t>(basic);
  return number;
}

CFNumberRef makeInteger(CFNumberType basic, int64_t value) {
  if (value >= kFirstShared && value <= kLastShared)
    return &shared[static_cast<size_t>(value - kFirstShared)];
  __CFNumber* const number = makeNumber(basic);
  if (number) number->integer = value;
  return number;
}

// What isn't finite is kept as a double, and every "not a number" is the same one.
CFNumberRef makeReal(CFNumberType basic, double value) {
  __CFNumber* const number = makeNumber(std::isfinite(value) ? basic : +kCFNumberFloat64Type);
  if (number) number->real = std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
  return number;
}

// Counted, not converted there and back: the processor may keep more digits on the way than the type has.
int significantBits(int64_t value) {
  const uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  return magnitude == 0 ? 0 : 64 - std::countl_zero(magnitude) - std::countr_zero(magnitude);
}

// Conversions write their result even where they report a failure. The small integer types let unsigned
// values of their width through.
bool storeFromInteger(int64_t value, CFNumberType basic, void* to) {
  const auto within = [value](int64_t low, int64_t high) { return low <= value && value <= high; };
  switch (basic) {
    case kCFNumberSInt8Type:
      return store(to, static_cast<int8_t>(value), within(INT8_MIN, UINT8_MAX));
    case kCFNumberSInt16Type:
      return store(to, static_cast<int16_t>(value), within(INT16_MIN, UINT16_MAX));
    case kCFNumberSInt32Type:
      return store(to, static_cast<int32_t>(value), within(INT32_MIN, INT32_MAX));
    case kCFNumberSInt64Type:
      return store(to, value, true);
    case kCFNumberFloat32Type:
      return store(to, static_cast<float>(value),
                   significantBits(value) <= std::numeric_limits<float>::digits);
    default:
      return store(to, static_cast<double>(value),
                   significantBits(value) <= std::numeric_limits<double>::digits);
  }
}

// As the processor does it: what doesn't fit becomes the smallest number.
int32_t truncate32(double value) {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int32_t>(value) : kIndefinite32;
}
int64_t truncate64(double value) {
  return value >= -kTwoTo63 && value < kTwoTo63 ? static_cast<int64_t>(value) : kIndefinite64;
}

float narrowed(double value) {
  if (!std::isfinite(value)) return static_cast<float>(value);
  // Beyond the largest float lies the infinite, by rounding.
  constexpr double kRoundsToInfinity = 0x1.ffffffp+127;
  if (value >= kRoundsToInfinity) return std::numeric_limits<float>::infinity();
  if (value <= -kRoundsToInfinity) return -std::numeric_limits<float>::infinity();
  return static_cast<float>(value);
}

bool storeFromReal(double value, CFNumberType basic, void* to) {
  const int32_t word = truncate32(value);
  switch (basic) {
    case kCFNumberSInt8Type:
      return store(to, static_cast<int8_t>(word), static_cast<int8_t>(word) == value);
    case kCFNumberSInt16Type:
      return store(to, static_cast<int16_t>(word), static_cast<int16_t>(word) == value);
    case kCFNumberSInt32Type:
      return store(to, word, word == value);
    case kCFNumberSInt64Type: {
      const int64_t integer = truncate64(value);
      return store(to, integer, static_cast<double>(integer) == value);
    }
    case kCFNumberFloat32Type: {
      const float real = narrowed(value);
      return store(to, real, static_cast<double>(real) == value);
    }
    default:
      return store(to, value, true);
  }
}

template <class T>
CFComparisonResult order(T a, T b) {
  return a < b ? kCFCompareLessThan : a > b ? kCFCompareGreaterThan : kCFCompareEqualTo;
}

CFComparisonResult compareReals(double a, double b) {
  if (std::isnan(a) && std::isnan(b)) return kCFCompareEqualTo;
  // "Not a number" lies between the negative numbers and the others.
  if (std::isnan(a)) return std::signbit(b) ? kCFCompareGreaterThan : kCFCompareLessThan;
  if (std::isnan(b)) return std::signbit(a) ? kCFCompareLessThan : kCFCompareGreaterThan;
  if (a == 0 && b == 0) return order(!std::signbit(a), !std::signbit(b));  // the negative zero is less
  return order(a, b);
}

CFComparisonResult compareMixed(int64_t a, double b) {
  if (std::isnan(b) || b == 0) return compareReals(static_cast<double>(a), b);
  // What rounds to the negative zero is below every integer, as on the Mac, -1 too.
  if (b >= -0.5 && b < 0) return kCFCompareGreaterThan;
  if (b >= kTwoTo63) return kCFCompareLessThan;
  if (b < -kTwoTo63) return kCFCompareGreaterThan;
  const double whole = std::trunc(b);
  const CFComparisonResult result = order(a, static_cast<int64_t>(whole));
  return result == kCFCompareEqualTo ? order(whole, b) : result;
}

CFComparisonResult compareNumbers(CFNumberRef a, CFNumberRef b) {
  if (!a->isReal() && !b->isReal()) return order(a->integer, b->integer);
  if (a->isReal() && b->isReal()) return compareReals(a->real, b->real);
  return a->isReal() ? -compareMixed(b->integer, a->real) : compareMixed(a->integer, b->real);
}

Boolean equalNumbers(CFTypeRef a, CFTypeRef b) {
  return compareNumbers(static_cast<CFNumberRef>(a), static_cast<CFNumberRef>(b)) == kCFCompareEqualTo;
}

// Equal numbers are equal as doubles, whatever their types.
CFHashCode hashNumber(CFTypeRef cf) {
  const CFNumberRef number = static_cast<CFNumberRef>(cf);
  return hashDouble(number->isReal() ? number->real : static_cast<double>(number->integer));
}

}  // namespace

const CFRuntimeClass kNumberClass = {.className = "CFNumber", .equal = equalNumbers, .hash = hashNumber};

}  // namespace cf

using standin::Gate;

CFTypeID CFNumberGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kNumberType;
}

CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType theType, const void* valuePtr) {
  const Gate gate(__func__);
  const CFNumberType basic = cf::basicType(theType);
  if (basic == 0) cf::misuse(__func__, "number type " + std::to_string(theType) + " doesn't exist");
  if (valuePtr == nullptr) cf::misuse(__func__, "null value");
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  if (basic == kCFNumberFloat32Type) return cf::makeReal(basic, cf::load<float>(valuePtr));
  if (basic == kCFNumberFloat64Type) return cf::makeReal(basic, cf::load<double>(valuePtr));
  return cf::makeInteger(basic, cf::loadInteger(basic, valuePtr));
}

CFNumberType CFNumberGetType(CFNumberRef number) {
  const Gate gate(__func__);
  cf::checked(number, __func__);
  return gate.fails() ? 0 : static_cast<CFNumberType>(number->type);
}

CFIndex CFNumberGetByteSize(CFNumberRef number) {
  const Gate gate(__func__);
  cf::checked(number, __func__);
  constexpr CFIndex kSizes[] = {0, 1, 2, 4, 8, 4, 8};
  return gate.fails() ? 0 : kSizes[number->type];
}

Boolean CFNumberIsFloatType(CFNumberRef number) {
  const Gate gate(__func__);
  cf::checked(number, __func__);
  return !gate.fails() && number->isReal();
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr) {
  const Gate gate(__func__);
  cf::checked(number, __func__);
  const CFNumberType basic = cf::basicType(theType);
  if (basic == 0) cf::misuse(__func__, "number type " + std::to_string(theType) + " doesn't exist");
  if (valuePtr == nullptr) cf::misuse(__func__, "null value");
  if (gate.fails()) return false;
  return number->isReal() ? cf::storeFromReal(number->real, basic, valuePtr)
                          : cf::storeFromInteger(number->integer, basic, valuePtr);
}

CFComparisonResult CFNumberCompare(CFNumberRef number, CFNumberRef otherNumber, void*) {
  const Gate gate(__func__);
  cf::checked(number, __func__);
  cf::checked(otherNumber, __func__);
  return gate.fails() ? 0 : cf::compareNumbers(number, otherNumber);
}
