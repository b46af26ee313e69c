// The functions that every program has.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <system_error>

#include <unicode/uchar.h>

#include "standin/host/interpreter/classes.h"
#include "standin/host/interpreter/values.h"

namespace standin::host {
namespace {

// --- Texts: positions are from 1, and searching ignores the letters' case ---

std::u32string characters(const Call& call, size_t index) {
  return charactersOf(call.arguments[index]);
}

// As many characters of the text as there are.
size_t countIn(const std::u32string& text, int64_t wanted) {
  return static_cast<size_t>(std::clamp<int64_t>(wanted, 0, static_cast<int64_t>(text.size())));
}

Value left(Call& call) {
  const std::u32string text = characters(call, 0);
  return textOf(text.substr(0, countIn(text, call.whole(1))));
}

Value right(Call& call) {
  const std::u32string text = characters(call, 0);
  return textOf(text.substr(text.size() - countIn(text, call.whole(1))));
}

Value mid(Call& call) {
  const std::u32string text = characters(call, 0);
  return textOf(text.substr(countIn(text, call.whole(1) - 1), countIn(text, call.whole(2))));
}

Value positionFrom(int64_t start, const Value& text, const Value& wanted) {
  const std::u32string whole = folded(charactersOf(text));
  const size_t found = whole.find(folded(charactersOf(wanted)), countIn(whole, start - 1));
  return found == std::u32string::npos ? 0 : static_cast<int32_t>(found + 1);
}

// The text between the first so many places of another one; an empty one divides it into its characters.
std::vector<std::u32string> partsOf(const std::u32string& text, const std::u32string& delimiter,
                                    size_t most) {
  const std::u32string whole = folded(text), wanted = folded(delimiter);
  std::vector<std::u32string> parts;
  size_t start = 0;
  for (; wanted.empty() && start < text.size(); ++start) parts.push_back(text.substr(start, 1));
  if (wanted.empty() || text.empty()) return parts;
  for (size_t found; parts.size() < most && (found = whole.find(wanted, start)) != std::u32string::npos;) {
    parts.push_back(text.substr(start, found - start));
    start = found + wanted.size();
  }
  parts.push_back(text.substr(start));
  return parts;
}

Value split(Call& call) {
  std::vector<Value> parts;
  for (const auto& part : partsOf(characters(call, 0), characters(call, 1), SIZE_MAX))
    parts.push_back(textOf(part));
  return stringArrayOf(parts);
}

Value replaced(const Call& call, size_t most) {
  const std::u32string by = characters(call, 2);
  std::u32string text;
  if (call.arguments[1].isNil() || characters(call, 1).empty()) return call.arguments[0];
  const auto parts = partsOf(characters(call, 0), characters(call, 1), most);
  for (const auto& part : parts) {
    if (&part != &parts.front()) text += by;
    text += part;
    if (text.size() > kMostTextBytes) raise("OutOfMemoryException", "a text of more than 32 MB");
  }
  return textOf(text);
}

Value join(Call& call) {
  arrayIn(call.arguments[0]);
  std::string text;
  const std::string delimiter = utf8Of(call.arguments[1]);
  const std::vector<Value> parts = elements(call.arguments[0]);
  for (const Value& part : parts) {
    if (&part != &parts.front()) text += delimiter;
    text += utf8Of(part);
  }
  return textOfBytes(text);
}

Value mapped(const Call& call, UChar32 (*change)(UChar32)) {
  std::u32string text = characters(call, 0);
  for (char32_t& each : text) each = static_cast<char32_t>(change(static_cast<UChar32>(each)));
  return textOf(text);
}

Value trim(Call& call) {
  const std::u32string text = characters(call, 0);
  const auto isText = [](char32_t code) {
    return code >= ' ' && !u_isUWhiteSpace(static_cast<UChar32>(code));
  };
  const auto start = std::find_if(text.begin(), text.end(), isText);
  const auto end = std::find_if(text.rbegin(), std::reverse_iterator(start), isText).base();
  return textOf(std::u32string(start, end));
}

Value chr(Call& call) {
  const int64_t code = call.whole(0);
  const bool isCharacter = code >= 0 && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
  if (!isCharacter) raise("OutOfBoundsException", "no character has the number " + std::to_string(code));
  return textOf(std::u32string(1, static_cast<char32_t>(code)));
}

// By codes with mode 0; with 1, the letters' case decides last.
Value strComp(Call& call) {
  const int ignoring = call.whole(2) == 0 ? 0 : compareTexts(call.arguments[0], call.arguments[1]);
  const int difference = ignoring != 0 ? ignoring : characters(call, 0).compare(characters(call, 1));
  return int32_t{(difference > 0) - (difference < 0)};
}

// --- Numbers ---

// The pattern's part for such a number: of positive ones, negative ones and 0, divided by semicolons. Without
// its own a negative number has a minus in front of the first.
std::string patternFor(double number, const std::string& format) {
  const size_t first = std::min(format.find(';'), format.size());
  const size_t second = std::min(format.find(';', first + 1), format.size());
  const std::string positive = format.substr(0, first);
  if (number == 0 && second < format.size()) return format.substr(second + 1);
  if (number >= 0) return positive;
  if (first < format.size()) return format.substr(first + 1, second - first - 1);
  return (positive.find_first_of("+-") == std::string::npos ? "-" : "") + positive;
}

// The number as "#,##0.00" tells: as many digits as there are zeros at least, and signs after the point at
// most.
std::string digitsOf(double number, const std::string& pattern) {
  constexpr size_t kMostDigits = 300, kMostDecimals = 30;
  const size_t point = std::min(pattern.find('.'), pattern.size());
  const std::string whole = pattern.substr(0, point), fraction = pattern.substr(point);
  const size_t decimals = std::min(fraction.size() - (fraction.empty() ? 0 : 1), kMostDecimals);
  const size_t leastDecimals = std::min(fraction.rfind('0') + 1, decimals + 1);
  const auto zeros = static_cast<size_t>(std::count(whole.begin(), whole.end(), '0'));
  char text[400];
  std::snprintf(text, sizeof text, "%.*f", static_cast<int>(decimals), std::fabs(number));
  std::string digits = text;
  std::string decimal = digits.substr(std::min(digits.find('.'), digits.size()));
  digits.resize(digits.size() - decimal.size());
  while (decimal.size() > leastDecimals && (decimal.back() == '0' || decimal.back() == '.'))
    decimal.pop_back();
  if (digits == "0" && zeros == 0) digits.clear();
  const size_t least = std::min(zeros, kMostDigits);
  if (digits.size() < least) digits.insert(0, least - digits.size(), '0');
  const bool groups = whole.find(',') != std::string::npos;
  for (size_t i = digits.size(); groups && i > 3; i -= 3) digits.insert(i - 3, ",");
  return digits + decimal;
}

// The pattern's first digit signs are the number's place, the rest is text. A backslash makes text of a sign.
Value format(Call& call) {
  double number = call.number(0);
  const std::string pattern = patternFor(number, utf8Of(call.arguments[1]));
  std::string before, digits, after;
  for (size_t i = 0; i < pattern.size(); ++i) {
    const char c = pattern[i];
    const bool isText = c == '\\' && i + 1 < pattern.size();
    std::string& side = digits.empty() ? before : after;
    if (isText) {
      side += pattern[++i];
    } else if (after.empty() && std::string_view("0#.,").find(c) != std::string_view::npos) {
      digits += c;
    } else if (c == '+' || c == '-') {
      side += number < 0 ? "-" : c == '+' ? "+" : "";
    } else {
      if (c == '%') number *= 100;
      side += c;
    }
  }
  if (!std::isfinite(number)) return shownValue(number);
  return textOfBytes(before + (digits.empty() ? "" : digitsOf(number, digits)) + after);
}

// Of decimal digits alone; what reads the number also knows hexadecimal ones, infinity and NaN.
Value val(Call& call) {
  const std::string text = utf8Of(call.arguments[0]);
  const size_t first = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  const size_t end = text.find_first_not_of("0123456789.eE+-", first);
  return std::strtod(text.substr(first, end - first).c_str(), nullptr);
}

template <double (*function)(double)>
Value real(Call& call) {
  return function(call.number(0));
}

// --- The program and the world ---

Value print(Call& call) {
  call.machine.surroundings.print(utf8Of(shownValue(call.arguments[0])));
  return {};
}

Value quit(Call& call) {
  const int64_t status = call.whole(0);
  if (status < 0 || status > 255) raise("OutOfBoundsException", "an exit status is from 0 to 255");
  throw Quit{static_cast<int>(status)};
}

Value raiseException(Call& call) {
  if (call.arguments[0].isNil()) raise("NilObjectException", "Raise of Nil");
  throw Thrown{call.arguments[0]};
}

Value getFolderItem(Call& call) {
  const std::string path = utf8Of(call.arguments[0]);
  if (path.empty() || path.find('\0') != std::string::npos) return {};
  // Of what is there, without links: the platform's own paths have none.
  if (const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), std::free);
      real)
    return folderItem(real.get());
  std::error_code error;
  std::filesystem::path item = "/";
  // ".." stays: what is before it may be a link.
  for (const auto& part : std::filesystem::absolute(path, error)) {
    if (part != "." && !part.empty()) item /= part;
  }
  return error ? Value() : folderItem(item);
}

constexpr NativeMember kFunctions[] = {
    {"", "Print(value As Variant)", print},
    {"", "Quit(status As Integer = 0)", quit},
    {"", "Raise(exception As RuntimeException)", raiseException},
    {"", "GetFolderItem(path As String) As FolderItem", getFolderItem},
    {"", "Len(text As String) As Integer",
     [](Call& c) -> Value { return static_cast<int32_t>(characters(c, 0).size()); }},
    {"", "Left(text As String, count As Integer) As String", left},
    {"", "Right(text As String, count As Integer) As String", right},
    {"", "Mid(text As String, start As Integer, count As Integer = &h7FFFFFFF) As String", mid},
    {"", "InStr(text As String, find As String) As Integer",
     [](Call& c) { return positionFrom(1, c.arguments[0], c.arguments[1]); }},
    {"", "InStr(start As Integer, source As String, find As String) As Integer",
     [](Call& c) { return positionFrom(c.whole(0), c.arguments[1], c.arguments[2]); }},
    {"", "Replace(text As String, find As String, by As String) As String",
     [](Call& c) { return replaced(c, 1); }},
    {"", "ReplaceAll(text As String, find As String, by As String) As String",
     [](Call& c) { return replaced(c, SIZE_MAX); }},
    {"", "Split(text As String, delimiter As String = \" \") As String()", split},
    {"", "Join(parts() As String, delimiter As String = \" \") As String", join},
    {"", "Uppercase(text As String) As String", [](Call& c) { return mapped(c, u_toupper); }},
    {"", "Lowercase(text As String) As String", [](Call& c) { return mapped(c, u_tolower); }},
    {"", "Trim(text As String) As String", trim},
    {"", "Chr(code As Integer) As String", chr},
    {"", "StrComp(text As String, other As String, mode As Integer = 0) As Integer", strComp},
    {"", "EndOfLine As String", [](Call&) -> Value { return "\n"; }},
    {"", "Str(value As Variant) As String", [](Call& c) { return shownValue(c.arguments[0]); }},
    {"", "Format(number As Double, format As String) As String", format},
    {"", "Val(text As String) As Double", val},
    {"", "Abs(number As Double) As Double", real<std::fabs>},
    {"", "Ceil(number As Double) As Double", real<std::ceil>},
    {"", "Floor(number As Double) As Double", real<std::floor>},
    {"", "Round(number As Double) As Double", real<std::round>},
    {"", "Sqrt(number As Double) As Double", real<std::sqrt>},
    {"", "Max(one As Double, other As Double) As Double",
     [](Call& c) -> Value { return std::max(c.number(0), c.number(1)); }},
    {"", "Min(one As Double, other As Double) As Double",
     [](Call& c) -> Value { return std::min(c.number(0), c.number(1)); }},
};

}  // namespace

std::span<const NativeMember> nativeFunctions() {
  return kFunctions;
}

}  // namespace standin::host
