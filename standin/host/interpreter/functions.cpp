// The functions that every program has.
#include <time.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include <unicode/uchar.h>

#include "standin/host/host.h"
#include "standin/host/interpreter/callable.h"
#include "standin/host/interpreter/class_members.h"
#include "standin/host/interpreter/types.h"
#include "standin/host/things/variants.h"

namespace standin::host {
namespace {

std::u32string charactersAt(const Call& call, size_t index) {
  return charactersOf(call.arguments[index]);
}

int64_t wholeAt(const Call& call, size_t index) {
  return call.arguments[index].integer();
}

double numberAt(const Call& call, size_t index) {
  return call.arguments[index].number();
}

size_t clamped(int64_t number, size_t most) {
  return static_cast<size_t>(std::clamp<int64_t>(number, 0, static_cast<int64_t>(most)));
}

Value countOf(size_t count) {
  return static_cast<int32_t>(count);
}

// --- Texts: positions are from 1, and searching ignores the letters' case ---

Value left(Call& call) {
  const std::u32string text = charactersAt(call, 0);
  return textOf(text.substr(0, clamped(wholeAt(call, 1), text.size())));
}

Value right(Call& call) {
  const std::u32string text = charactersAt(call, 0);
  return textOf(text.substr(text.size() - clamped(wholeAt(call, 1), text.size())));
}

Value mid(Call& call) {
  const std::u32string text = charactersAt(call, 0);
  const size_t start = clamped(wholeAt(call, 1) - 1, text.size());
  const size_t length = call.arguments.size() > 2 ? clamped(wholeAt(call, 2), text.size()) : text.size();
  return textOf(text.substr(start, length));
}

Value lengthOf(Call& call) {
  return countOf(charactersAt(call, 0).size());
}

Value bytesOf(Call& call) {
  return countOf(call.arguments[0].isNil() ? 0 : call.arguments[0].bytes().size());
}

Value positionFrom(int64_t start, const Value& text, const Value& wanted) {
  const std::u32string whole = folded(charactersOf(text));
  const size_t found = whole.find(folded(charactersOf(wanted)), clamped(start - 1, whole.size()));
  return found == std::u32string::npos ? 0 : static_cast<int32_t>(found + 1);
}

Value inStr(Call& call) {
  return positionFrom(1, call.arguments[0], call.arguments[1]);
}

Value inStrFrom(Call& call) {
  return positionFrom(wholeAt(call, 0), call.arguments[1], call.arguments[2]);
}

Value replaced(const Call& call, bool all) {
  const std::u32string text = charactersAt(call, 0), whole = folded(text),
                       wanted = folded(charactersAt(call, 1));
  const std::u32string by = charactersAt(call, 2);
  if (wanted.empty()) return call.arguments[0];
  std::u32string result;
  size_t start = 0;
  for (size_t found; (found = whole.find(wanted, start)) != std::u32string::npos;) {
    result += text.substr(start, found - start) + by;
    start = found + wanted.size();
    if (result.size() > INT_MAX / 64)
      raise("OutOfMemoryException", "a text of more than 32 million characters");
    if (!all) break;
  }
  return textOf(result + text.substr(start));
}

Value replace(Call& call) {
  return replaced(call, false);
}
Value replaceAll(Call& call) {
  return replaced(call, true);
}

// An empty delimiter divides the text into its characters.
std::vector<Value> partsOf(const Call& call) {
  const std::u32string text = charactersAt(call, 0), whole = folded(text),
                       delimiter = folded(charactersAt(call, 1));
  std::vector<Value> parts;
  size_t start = 0;
  while (delimiter.empty() && start < text.size()) parts.push_back(textOf(text.substr(start++, 1)));
  if (delimiter.empty() || text.empty()) return parts;
  for (size_t found; (found = whole.find(delimiter, start)) != std::u32string::npos;) {
    parts.push_back(textOf(text.substr(start, found - start)));
    start = found + delimiter.size();
  }
  parts.push_back(textOf(text.substr(start)));
  return parts;
}

Value split(Call& call) {
  return stringArrayOf(partsOf(call));
}
Value countFields(Call& call) {
  return countOf(partsOf(call).size());
}

Value nthField(Call& call) {
  const std::vector<Value> parts = partsOf(call);
  const int64_t number = wholeAt(call, 2);
  const bool isThere = number >= 1 && number <= static_cast<int64_t>(parts.size());
  return isThere ? parts[static_cast<size_t>(number - 1)] : Value("");
}

Value join(Call& call) {
  arrayIn(call.arguments[0]);
  std::string text;
  const std::string delimiter = utf8Of(call.arguments[1]);
  bool first = true;
  for (const Value& part : elements(call.arguments[0])) {
    if (!std::exchange(first, false)) text += delimiter;
    text += utf8Of(part);
  }
  return textOfBytes(text);
}

Value mapped(const Call& call, UChar32 (*change)(UChar32)) {
  std::u32string text = charactersAt(call, 0);
  for (char32_t& each : text) each = static_cast<char32_t>(change(static_cast<UChar32>(each)));
  return textOf(text);
}

Value uppercase(Call& call) {
  return mapped(call, u_toupper);
}
Value lowercase(Call& call) {
  return mapped(call, u_tolower);
}

Value titlecase(Call& call) {
  std::u32string text = charactersAt(call, 0);
  bool starts = true;
  for (char32_t& each : text) {
    const auto code = static_cast<UChar32>(each);
    each = static_cast<char32_t>(starts ? u_totitle(code) : u_tolower(code));
    starts = u_isUWhiteSpace(code);
  }
  return textOf(text);
}

Value trimmed(const Call& call, bool atStart, bool atEnd) {
  const std::u32string text = charactersAt(call, 0);
  const auto isSpace = [](char32_t code) {
    return u_isUWhiteSpace(static_cast<UChar32>(code)) || code < ' ';
  };
  size_t start = 0, end = text.size();
  while (atStart && start < end && isSpace(text[start])) ++start;
  while (atEnd && start < end && isSpace(text[end - 1])) --end;
  return textOf(text.substr(start, end - start));
}

Value trim(Call& call) {
  return trimmed(call, true, true);
}
Value trimLeft(Call& call) {
  return trimmed(call, true, false);
}
Value trimRight(Call& call) {
  return trimmed(call, false, true);
}

Value chr(Call& call) {
  const int64_t code = wholeAt(call, 0);
  const bool isCharacter = code >= 0 && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
  if (!isCharacter) raise("OutOfBoundsException", "no character has the number " + std::to_string(code));
  return textOf(std::u32string(1, static_cast<char32_t>(code)));
}

Value asc(Call& call) {
  const std::u32string text = charactersAt(call, 0);
  return static_cast<int32_t>(text.empty() ? -1 : static_cast<int64_t>(text.front()));
}

int32_t signOf(int difference) {
  return (difference > 0) - (difference < 0);
}

Value strComp(Call& call) {
  const Value& one = call.arguments[0];
  const Value& other = call.arguments[1];
  const int ignoring = compareTexts(one, other);
  if (wholeAt(call, 2) != 0 && ignoring != 0) return signOf(ignoring);
  return signOf(charactersOf(one).compare(charactersOf(other)));
}

Value endOfLine(Call&) {
  return "\n";
}

// --- Numbers and texts ---

Value str(Call& call) {
  return shownValue(call.arguments[0]);
}
Value val(Call& call) {
  return converted(call.arguments[0], kDouble);
}

// The digits of so many bits each. A negative Integer has 32 bits.
template <unsigned bits>
Value digits(Call& call) {
  const int64_t whole = wholeAt(call, 0);
  uint64_t rest =
      whole < 0 && whole >= INT32_MIN ? static_cast<uint32_t>(whole) : static_cast<uint64_t>(whole);
  std::string text;
  do text.insert(text.begin(), "0123456789ABCDEF"[rest & ((1u << bits) - 1)]);
  while (rest >>= bits);
  return text;
}

// A format's sections are for positive numbers, negative ones and zero; without its own section a negative
// number has a minus in front of the first.
class NumberFormat {
 public:
  NumberFormat(double number, const std::string& format) : number_(number) {
    const size_t first = format.find(';');
    const size_t second = first == std::string::npos ? first : format.find(';', first + 1);
    pattern_ = format.substr(0, first);
    if (number < 0 && first != std::string::npos) {
      pattern_ = format.substr(first + 1, second == std::string::npos ? second : second - first - 1);
    } else if (number < 0) {
      minus_ = pattern_.find_first_of("+-") == std::string::npos ? "-" : "";
    } else if (number == 0 && second != std::string::npos) {
      pattern_ = format.substr(second + 1);
    }
  }

  std::string text() {
    measure();
    if (!std::isfinite(number_)) return shownValue(number_).text();
    char digits[400];
    std::snprintf(digits, sizeof digits, "%.*f", decimals_, std::fabs(number_) * (percent_ ? 100 : 1));
    digits_ = digits;
    const size_t point = std::min(digits_.find('.'), digits_.size());
    decimal_ = point < digits_.size() ? digits_.substr(point + 1) : "";
    digits_.resize(point);
    while (!decimal_.empty() && decimal_.back() == '0' && static_cast<int>(decimal_.size()) > leastDecimals_)
      decimal_.pop_back();
    if (digits_ == "0" && leastDigits_ == 0) digits_.clear();
    while (static_cast<int>(digits_.size()) < leastDigits_) digits_.insert(0, "0");
    for (int i = static_cast<int>(digits_.size()) - 3; groups_ && i > 0; i -= 3)
      digits_.insert(static_cast<size_t>(i), ",");
    return minus_ + filled();
  }

 private:
  void measure() {
    bool decimals = false;
    for (size_t i = 0; i < pattern_.size(); ++i) {
      const char c = pattern_[i];
      if (c == '\\') ++i;
      if (c == '.') decimals = true;
      if (c == '%') percent_ = true;
      if (c == ',') groups_ = true;
      if (c != '0' && c != '#') continue;
      int& least = decimals ? leastDecimals_ : leastDigits_;
      if (decimals && decimals_ < kMostDecimals) ++decimals_;
      if (c == '0') least = decimals ? decimals_ : least + 1;
    }
    leastDigits_ = std::min(leastDigits_, kMostDigits);
  }

  // The pattern with the number in the place of its digits.
  std::string filled() const {
    std::string result;
    bool whole = false, fraction = false;
    for (size_t i = 0; i < pattern_.size(); ++i) {
      const char c = pattern_[i];
      if (c == '\\' && i + 1 < pattern_.size()) {
        result += pattern_[++i];
      } else if (c == '.' && !std::exchange(fraction, true)) {
        if (!std::exchange(whole, true)) result += digits_;
        if (!decimal_.empty()) result += '.' + decimal_;
      } else if (c == '0' || c == '#' || c == ',') {
        if (!std::exchange(whole, true)) result += digits_;
      } else if (c == '+' || c == '-') {
        result += number_ < 0 ? "-" : c == '+' ? "+" : "";
      } else {
        result += c;
      }
    }
    return result;
  }

  static constexpr int kMostDecimals = 30;
  static constexpr int kMostDigits = 300;

  const double number_;
  std::string pattern_, minus_, digits_, decimal_;
  bool percent_ = false, groups_ = false;
  int leastDigits_ = 0, leastDecimals_ = 0, decimals_ = 0;
};

Value format(Call& call) {
  return textOfBytes(NumberFormat(numberAt(call, 0), utf8Of(call.arguments[1])).text());
}

template <double (*function)(double)>
Value real(Call& call) {
  return function(numberAt(call, 0));
}

Value power(Call& call) {
  return std::pow(numberAt(call, 0), numberAt(call, 1));
}
Value maximum(Call& call) {
  return std::max(numberAt(call, 0), numberAt(call, 1));
}
Value minimum(Call& call) {
  return std::min(numberAt(call, 0), numberAt(call, 1));
}

Value rgb(Call& call) {
  uint32_t color = 0;
  for (size_t i = 0; i < 3; ++i) color = color << 8 | static_cast<uint32_t>(clamped(wholeAt(call, i), 255));
  return Value::color(color);
}

Value varType(Call& call) {
  const Ref boxedValue = boxed(call.arguments[0]);
  return boxedValue.isNull() ? 0 : variantType(thingOf(boxedValue));
}

Value microseconds(Call&) {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

// --- The program and the world ---

Value print(Call& call) {
  call.machine.surroundings.print(utf8Of(shownValue(call.arguments[0])));
  return {};
}

Value quit(Call& call) {
  throw Quit{static_cast<int>(wholeAt(call, 0))};
}

Value getFolderItem(Call& call) {
  return folderItemAt(utf8Of(call.arguments[0]));
}

constexpr NativeMember kFunctions[] = {
    {"", "Print(text As String)", print},
    {"", "Print(number As Int64)", print},
    {"", "Print(number As Single)", print},
    {"", "Print(number As Double)", print},
    {"", "Print(truth As Boolean)", print},
    {"", "Print(colour As Color)", print},
    {"", "Quit(status As Integer = 0)", quit},
    {"", "GetFolderItem(path As String) As FolderItem", getFolderItem},
    {"", "Len(text As String) As Integer", lengthOf},
    {"", "Length(text As String) As Integer", lengthOf},
    {"", "LenB(text As String) As Integer", bytesOf},
    {"", "Left(text As String, count As Integer) As String", left},
    {"", "Right(text As String, count As Integer) As String", right},
    {"", "Mid(text As String, start As Integer) As String", mid},
    {"", "Mid(text As String, start As Integer, count As Integer) As String", mid},
    {"", "InStr(text As String, find As String) As Integer", inStr},
    {"", "InStr(start As Integer, source As String, find As String) As Integer", inStrFrom},
    {"", "Replace(text As String, find As String, by As String) As String", replace},
    {"", "ReplaceAll(text As String, find As String, by As String) As String", replaceAll},
    {"", "Split(text As String, delimiter As String = \" \") As String()", split},
    {"", "CountFields(text As String, delimiter As String) As Integer", countFields},
    {"", "NthField(text As String, delimiter As String, number As Integer) As String", nthField},
    {"", "Join(parts() As String, delimiter As String = \" \") As String", join},
    {"", "Uppercase(text As String) As String", uppercase},
    {"", "Lowercase(text As String) As String", lowercase},
    {"", "Titlecase(text As String) As String", titlecase},
    {"", "Trim(text As String) As String", trim},
    {"", "LTrim(text As String) As String", trimLeft},
    {"", "RTrim(text As String) As String", trimRight},
    {"", "Asc(text As String) As Integer", asc},
    {"", "Chr(code As Integer) As String", chr},
    {"", "StrComp(text As String, other As String, mode As Integer = 0) As Integer", strComp},
    {"", "EndOfLine As String", endOfLine},
    {"", "Str(number As Int64) As String", str},
    {"", "Str(number As Single) As String", str},
    {"", "Str(number As Double) As String", str},
    {"", "Str(truth As Boolean) As String", str},
    {"", "Str(colour As Color) As String", str},
    {"", "Str(value As Variant) As String", str},
    {"", "Str(number As Double, format As String) As String", format},
    {"", "Format(number As Double, format As String) As String", format},
    {"", "Val(text As String) As Double", val},
    {"", "CDbl(text As String) As Double", val},
    {"", "Hex(number As Int64) As String", digits<4>},
    {"", "Oct(number As Int64) As String", digits<3>},
    {"", "Bin(number As Int64) As String", digits<1>},
    {"", "Abs(number As Double) As Double", real<std::fabs>},
    {"", "Ceil(number As Double) As Double", real<std::ceil>},
    {"", "Floor(number As Double) As Double", real<std::floor>},
    {"", "Round(number As Double) As Double", real<std::round>},
    {"", "Sqrt(number As Double) As Double", real<std::sqrt>},
    {"", "Exp(number As Double) As Double", real<std::exp>},
    {"", "Log(number As Double) As Double", real<std::log>},
    {"", "Sin(number As Double) As Double", real<std::sin>},
    {"", "Cos(number As Double) As Double", real<std::cos>},
    {"", "Tan(number As Double) As Double", real<std::tan>},
    {"", "ATan(number As Double) As Double", real<std::atan>},
    {"", "Pow(number As Double, exponent As Double) As Double", power},
    {"", "Max(one As Double, other As Double) As Double", maximum},
    {"", "Min(one As Double, other As Double) As Double", minimum},
    {"", "RGB(red As Integer, green As Integer, blue As Integer) As Color", rgb},
    {"", "VarType(value As Variant) As Integer", varType},
    {"", "Microseconds As Double", microseconds},
};

}  // namespace

Callable callableOf(const NativeMember& row) {
  Callable callable{parseMethod(row.declaration), row.declaration, row.run};
  if (row.set) callable.set = row.set;
  callable.assigned = callable.declaration.result;
  callable.isShared = row.isShared;
  return callable;
}

const std::vector<Callable>& functions() {
  static const auto* const all = [] {
    auto* const made = new std::vector<Callable>;
    for (const NativeMember& row : kFunctions) {
      made->push_back(callableOf(row));
      made->back().isMember = false;
    }
    return made;
  }();
  return *all;
}

}  // namespace standin::host
