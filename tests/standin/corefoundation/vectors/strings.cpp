#include <algorithm>

#include "tests/standin/corefoundation/vectors/checks.h"

namespace {

std::string fromBytes(const Row& row) {
  std::vector<uint8_t> bytes = bytesOf(row.cells[1]);
  bytes.push_back(0);
  const auto encoding = static_cast<CFStringEncoding>(integerOf(row.cells[0]));
  const Owned<CFStringRef> string(
      CFStringCreateWithCString(kCFAllocatorDefault, reinterpret_cast<const char*>(bytes.data()), encoding));
  const bool isNull = integerOf(row.cells[2]) != 0;
  return difference("utf16", describe(string.get()), isNull ? "null" : hexOf(unitsOf(row.cells[3])));
}

std::string toUTF8(const Row& row) {
  const Owned<CFStringRef> string(makeText(unitsOf(row.cells[0])));
  const long long size = integerOf(row.cells[1]);
  if (size < 0 || size > 1 << 20) throw BadTable("a buffer size of " + row.cells[1]);
  std::vector<char> buffer(static_cast<size_t>(size));
  char none = 0;
  char* const room = buffer.empty() ? &none : buffer.data();
  const bool ok = CFStringGetCString(string.get(), room, static_cast<CFIndex>(size), kCFStringEncodingUTF8);
  std::string differences = difference("ok", std::to_string(ok), std::to_string(integerOf(row.cells[2])));
  if (ok && size > 0) {
    const auto end = std::find(buffer.begin(), buffer.end(), '\0');
    if (end == buffer.end()) return differences + "bytes: without a zero byte at the end; ";
    differences += difference("bytes", hexOf(std::vector<uint8_t>(buffer.begin(), end)), row.cells[3]);
  }
  return differences;
}

std::string normalizeD(const Row& row) {
  const Owned<CFStringRef> string(makeText(unitsOf(row.cells[0])));
  const Owned<CFMutableStringRef> copy(CFStringCreateMutableCopy(kCFAllocatorDefault, 0, string.get()));
  CFStringNormalize(copy.get(), kCFStringNormalizationFormD);
  return difference("form_d", describe(copy.get()), hexOf(unitsOf(row.cells[1])));
}

std::string compare(const Row& row) {
  const Owned<CFStringRef> a(makeText(unitsOf(row.cells[0])));
  const Owned<CFStringRef> b(makeText(unitsOf(row.cells[1])));
  const CFComparisonResult result = CFStringCompare(a.get(), b.get(), 0);
  const bool equal = CFEqual(a.get(), b.get());
  std::string differences = difference("compare", std::to_string(result), row.cells[2]) +
                            difference("equal", std::to_string(equal), row.cells[3]);
  if (equal && CFHash(a.get()) != CFHash(b.get())) differences += "equal, but not of one hash; ";
  return differences;
}

}  // namespace

std::vector<Check> stringChecks() {
  return {
      {"string_from_bytes.tsv", {"encoding", "bytes_hex", "is_null", "utf16"}, fromBytes},
      {"string_to_utf8.tsv", {"utf16", "buffer_size", "ok", "bytes_hex"}, toUTF8},
      {"string_normalize_d.tsv", {"utf16", "form_d"}, normalizeD},
      {"string_compare.tsv", {"a_utf16", "b_utf16", "compare", "equal"}, compare},
  };
}
