#include "tests/standin/documents/zip_writer.h"

#include <array>

namespace {

void put(std::string& bytes, uint32_t number, int size) {
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(number >> 8 * i);
}

// The fields that the entry has both before its data and in the directory.
std::string commonFields(const ZipEntry& entry) {
  std::string fields;
  put(fields, 20, 2);  // the version that is needed
  put(fields, entry.flags, 2);
  put(fields, entry.method, 2);
  put(fields, 0, 4);  // time
  put(fields, entry.crc, 4);
  put(fields, static_cast<uint32_t>(entry.data.size()), 4);
  put(fields, entry.size, 4);
  put(fields, static_cast<uint32_t>(entry.name.size()), 2);
  put(fields, 0, 2);  // no extra fields
  return fields;
}

class Bits {
 public:
  // The lowest bit first.
  void add(unsigned value, int count) {
    for (int i = 0; i < count; ++i, ++used_) {
      if (used_ % 8 == 0) bytes += '\0';
      bytes.back() = static_cast<char>(bytes.back() | (value >> i & 1) << used_ % 8);
    }
  }
  // The bits of a Huffman code stand the other way round.
  void addCode(const char* code) {
    for (; *code; ++code) add(*code == '1', 1);
  }
  void align() { used_ = bytes.size() * 8; }

  std::string bytes;

 private:
  size_t used_ = 0;
};

void addStored(Bits& bits, std::string_view data, bool isLast) {
  bits.add(isLast, 1);
  bits.add(0, 2);
  bits.align();
  put(bits.bytes, static_cast<uint32_t>(data.size()), 2);
  put(bits.bytes, ~static_cast<uint32_t>(data.size()), 2);
  bits.bytes += data;
  bits.align();
}

// One blank, and then nothing but "258 bytes as the one before", which two zero bits stand for: four times in
// each zero byte, and four times more in the odd bits before and behind.
void addBlanks(Bits& bits, size_t zeros) {
  bits.add(0, 1);
  bits.add(2, 2);  // with codes of its own
  bits.add(286 - 257, 5);
  bits.add(1 - 1, 5);
  bits.add(18 - 4, 4);  // the lengths of the codes for lengths follow
  for (const int length : {0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 2}) {
    bits.add(static_cast<unsigned>(length), 3);
  }
  const char* const kZeros = "0";  // so many symbols without a code
  const char* const kOneBit = "10";
  const char* const kTwoBits = "11";
  const auto none = [&](unsigned symbols) {
    bits.addCode(kZeros);
    bits.add(symbols - 11, 7);
  };
  none(32);
  bits.addCode(kTwoBits);  // the blank
  none(138);
  none(85);
  bits.addCode(kTwoBits);  // the end of the block
  none(28);
  bits.addCode(kOneBit);  // 258 bytes
  bits.addCode(kOneBit);  // of the distance 1
  bits.addCode("10");     // a blank
  bits.align();           // by an odd number of bits, so that
  bits.bytes.append(zeros, '\0');
  bits.align();
  bits.add(0, 1);  // one is missing
}

}  // namespace

uint32_t crcOf(std::string_view bytes) {
  uint32_t crc = ~0U;
  for (const char c : bytes) {
    crc ^= static_cast<uint8_t>(c);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320U : 0);
  }
  return ~crc;
}

ZipEntry stored(std::string name, std::string data) {
  const auto size = static_cast<uint32_t>(data.size());
  const uint32_t crc = crcOf(data);
  return {std::move(name), std::move(data), size, 0, 0, crc};
}

ZipEntry bomb(std::string name, std::string_view start, size_t zeros, std::string_view end) {
  Bits bits;
  addStored(bits, start, false);
  addBlanks(bits, zeros);
  bits.addCode("11");
  addStored(bits, end, true);
  const size_t size = start.size() + blanksOf(zeros) + end.size();
  return {std::move(name), bits.bytes, static_cast<uint32_t>(size), 8};
}

std::string zipOf(const std::vector<ZipEntry>& entries) {
  std::string archive;
  std::string directory;
  for (const ZipEntry& entry : entries) {
    const auto offset = static_cast<uint32_t>(archive.size());
    archive += "PK\x03\x04" + commonFields(entry) + entry.name + entry.data;
    directory += "PK\x01\x02";
    put(directory, 20, 2);  // made by
    directory += commonFields(entry);
    put(directory, 0, 2);  // no comment
    put(directory, 0, 2);  // first disk
    put(directory, 0, 2);
    put(directory, 0, 4);
    put(directory, offset, 4);
    directory += entry.name;
  }
  const auto start = static_cast<uint32_t>(archive.size());
  archive += directory + "PK\x05\x06";
  put(archive, 0, 4);
  put(archive, static_cast<uint32_t>(entries.size()), 2);
  put(archive, static_cast<uint32_t>(entries.size()), 2);
  put(archive, static_cast<uint32_t>(directory.size()), 4);
  put(archive, start, 4);
  put(archive, 0, 2);
  return archive;
}
