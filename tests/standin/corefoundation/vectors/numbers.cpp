#include <CoreFoundation/CFNumber.h>

#include <algorithm>

#include "tests/standin/corefoundation/vectors/checks.h"

namespace {

constexpr size_t kLargestValue = 16;
constexpr size_t kFirstConversion = 5;  // column of as_type_1

size_t sizeOfType(long long type) {
  constexpr size_t kSizes[] = {0, 1, 2, 4, 8, 4, 8, 1, 2, 4, 4, 8, 4, 8, 4, 4, 4};
  if (type < 1 || type > kCFNumberMaxType) throw BadTable("number type " + std::to_string(type));
  return kSizes[type];
}

CFNumberRef make(const std::string& typeCell, const std::string& bytesCell) {
  const long long type = integerOf(typeCell);
  std::vector<uint8_t> bytes = bytesOf(bytesCell);
  if (bytes.size() != sizeOfType(type))
    throw BadTable("\"" + bytesCell + "\" is no value of type " + typeCell);
  return CFNumberCreate(kCFAllocatorDefault, static_cast<CFNumberType>(type), bytes.data());
}

// What was written is what comes out alike from two buffers of different content.
std::string conversion(CFNumberRef number, CFNumberType type) {
  std::vector<uint8_t> a(kLargestValue, 0x00);
  std::vector<uint8_t> b(kLargestValue, 0xFF);
  const bool success = CFNumberGetValue(number, type, a.data());
  CFNumberGetValue(number, type, b.data());
  const auto written = static_cast<size_t>(std::mismatch(a.begin(), a.end(), b.begin()).first - a.begin());
  a.resize(written);
  return std::to_string(success) + ":" + std::to_string(written) + ":" + hexOf(a);
}

std::string number(const Row& row) {
  const Owned<CFNumberRef> number(make(row.cells[0], row.cells[1]));
  std::string differences =
      difference("get_type", std::to_string(CFNumberGetType(number.get())), row.cells[2]) +
      difference("byte_size", std::to_string(CFNumberGetByteSize(number.get())), row.cells[3]) +
      difference("is_float", std::to_string(CFNumberIsFloatType(number.get())), row.cells[4]);
  for (CFNumberType type = 1; type <= kCFNumberMaxType; ++type) {
    const std::string& expected = row.cells[kFirstConversion + static_cast<size_t>(type) - 1];
    differences += difference("as_type_" + std::to_string(type), conversion(number.get(), type), expected);
  }
  return differences;
}

std::string equality(const Row& row) {
  const Owned<CFNumberRef> a(make(row.cells[0], row.cells[1]));
  const Owned<CFNumberRef> b(make(row.cells[2], row.cells[3]));
  const bool equal = CFEqual(a.get(), b.get());
  std::string differences =
      difference("equal", std::to_string(equal), row.cells[4]) +
      difference("equal the other way round", std::to_string(static_cast<bool>(CFEqual(b.get(), a.get()))),
                 row.cells[4]);
  if (equal && CFHash(a.get()) != CFHash(b.get())) differences += "equal, but not of one hash; ";
  return differences;
}

std::vector<std::string> numberColumns() {
  std::vector<std::string> columns = {"create_type", "value_bytes_hex", "get_type", "byte_size", "is_float"};
  for (int type = 1; type <= kCFNumberMaxType; ++type) columns.push_back("as_type_" + std::to_string(type));
  return columns;
}

}  // namespace

std::vector<Check> numberChecks() {
  return {
      {"number.tsv", numberColumns(), number},
      {"number_equal.tsv", {"a_type", "a_bytes_hex", "b_type", "b_bytes_hex", "equal"}, equality},
  };
}
