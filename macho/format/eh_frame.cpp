#include "macho/format/eh_frame.h"

#include <map>

namespace macho {
namespace {

// Pointer encodings: the low half is the size, then how the value is applied.
constexpr uint8_t kAbsolute4 = 0x00, kUnsigned4 = 0x03, kSigned4 = 0x0B, kRelative = 0x10, kIndirect = 0x80;

bool isRelativeWord(uint8_t encoding) {
  const uint8_t size = encoding & 0x0F;
  return (encoding & 0x70) == kRelative && (size == kAbsolute4 || size == kUnsigned4 || size == kSigned4);
}

[[noreturn]] void malformed(uint32_t offset, const char* what) {
  throw FormatError("malformed __eh_frame: record at offset " + std::to_string(offset) + " " + what);
}

// What a common record says about the function records that refer to it.
struct Common {
  bool hasAugmentationData = false;
  bool hasLanguageData = false;
};

class Mapper {
 public:
  explicit Mapper(Bytes section) : section_(section) {}

  FrameMap map() {
    uint32_t offset = 0;
    while (offset + 4 <= section_.size()) {
      const auto length = section_.read<uint32_t>(offset);
      if (length == 0) break;
      map_.records.push_back(offset);
      const Bytes upToEnd = section_.slice(0, recordEnd(offset, length));
      if (upToEnd.read<uint32_t>(offset + 4) == 0) {
        readCommon(upToEnd, offset);
      } else {
        readFunction(upToEnd, offset);
      }
      offset += 4 + length;
    }
    map_.end = offset;
    return map_;
  }

 private:
  uint32_t recordEnd(uint32_t offset, uint32_t length) const {
    if (length == 0xFFFFFFFF) malformed(offset, "is in the 64-bit layout");
    if (length < 4 || length > section_.size() - offset - 4) malformed(offset, "does not fit the section");
    return offset + 4 + length;
  }

  void readCommon(Bytes bytes, uint32_t offset) {
    Cursor cursor(bytes, offset + 8);
    if (cursor.next<uint8_t>() != 1) malformed(offset, "is not of version 1");
    const std::string augmentation = cursor.text();
    cursor.uleb();           // code alignment
    cursor.sleb();           // data alignment
    cursor.next<uint8_t>();  // return address column
    Common common;
    if (!augmentation.empty()) {
      if (augmentation[0] != 'z') malformed(offset, "has an augmentation without a size");
      common.hasAugmentationData = true;
      const uint32_t size = cursor.uleb();
      const size_t end = cursor.offset() + size;
      readAugmentation(cursor, augmentation, offset, common);
      if (cursor.offset() != end) malformed(offset, "has an augmentation of another size than it says");
    } else {
      malformed(offset, "gives function addresses that can't be moved");
    }
    common_[offset] = common;
    addInstructions(cursor, bytes);
  }

  void readAugmentation(Cursor& cursor, const std::string& augmentation, uint32_t offset, Common& common) {
    bool functionsMove = false;
    for (const char letter : augmentation.substr(1)) {
      if (letter == 'S') continue;
      const auto encoding = cursor.next<uint8_t>();
      if (!isRelativeWord(encoding)) malformed(offset, "has a pointer that is not relative to itself");
      if (letter == 'P') {
        map_.personalities.push_back(cursor.offset());
        cursor.skip(4);
        continue;
      }
      if (encoding & kIndirect) malformed(offset, "has an indirect address");
      if (letter == 'L')
        common.hasLanguageData = true;
      else if (letter == 'R')
        functionsMove = true;
      else
        malformed(offset, "has an unknown augmentation");
    }
    if (!functionsMove) malformed(offset, "gives function addresses that can't be moved");
  }

  void readFunction(Bytes bytes, uint32_t offset) {
    Cursor cursor(bytes, offset + 4);
    const auto common = common_.find(offset + 4 - cursor.next<uint32_t>());
    if (common == common_.end()) malformed(offset, "refers to a common record that is not there");
    map_.commons.push_back(offset + 4);
    map_.functions.push_back(cursor.offset());
    cursor.skip(8);  // begin and length
    if (common->second.hasAugmentationData) {
      const uint32_t size = cursor.uleb();
      const size_t end = cursor.offset() + size;
      if (common->second.hasLanguageData) {
        if (size < 4) malformed(offset, "has no room for its exception table's address");
        const uint32_t field = cursor.offset();
        // A zero is no address but says that there is no table.
        if (bytes.read<uint32_t>(field) != 0) map_.languageData.push_back(field);
      }
      cursor.skip(end - cursor.offset());
    }
    addInstructions(cursor, bytes);
  }

  void addInstructions(const Cursor& cursor, Bytes bytes) {
    const auto offset = static_cast<uint32_t>(cursor.offset());
    map_.instructions.push_back({offset, static_cast<uint32_t>(bytes.size()) - offset});
  }

  Bytes section_;
  FrameMap map_;
  std::map<uint32_t, Common> common_;
};

}  // namespace

FrameMap mapFrames(Bytes section) {
  return Mapper(section).map();
}

}  // namespace macho
