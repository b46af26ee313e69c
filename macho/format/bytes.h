// Reading a file that may be cut short or hostile: every access is checked, a bad one throws FormatError.
#pragma once

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

namespace macho {

// What is wrong inside a file; the reader that knows the file's name adds it, and what to do.
struct FormatError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Bytes of somebody else's, which must outlive this view.
class Bytes {
 public:
  Bytes() = default;
  Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  const uint8_t* data() const { return data_; }
  size_t size() const { return size_; }

  Bytes slice(size_t offset, size_t size) const {
    if (offset > size_ || size_ - offset < size) {
      throw FormatError("truncated: " + std::to_string(size) + " bytes are wanted at offset " +
                        std::to_string(offset) + " of " + std::to_string(size_));
    }
    return Bytes(data_ + offset, size);
  }

  template <typename Record>
  Record read(size_t offset) const {
    Record record;
    std::memcpy(&record, slice(offset, sizeof record).data_, sizeof record);
    return record;
  }

  // The characters up to the zero byte, which must be there.
  std::string text(size_t offset) const {
    const Bytes rest = slice(offset, offset > size_ ? 0 : size_ - offset);
    const void* end = rest.size_ ? std::memchr(rest.data_, 0, rest.size_) : nullptr;
    if (!end) throw FormatError("truncated: a name at offset " + std::to_string(offset) + " has no end");
    return std::string(reinterpret_cast<const char*>(rest.data_));
  }

 private:
  const uint8_t* data_ = nullptr;
  size_t size_ = 0;
};

// Reads a stream of small values in order.
class Cursor {
 public:
  explicit Cursor(Bytes bytes, size_t offset = 0) : bytes_(bytes), offset_(offset) {}

  size_t offset() const { return offset_; }
  bool atEnd() const { return offset_ >= bytes_.size(); }

  void skip(size_t count) {
    bytes_.slice(offset_, count);
    offset_ += count;
  }

  template <typename Value>
  Value next() {
    const Value value = bytes_.read<Value>(offset_);
    offset_ += sizeof value;
    return value;
  }

  std::string text() {
    std::string text = bytes_.text(offset_);
    offset_ += text.size() + 1;
    return text;
  }

  uint32_t uleb() { return leb(false); }
  int32_t sleb() { return static_cast<int32_t>(leb(true)); }

 private:
  // A number of 32 bits takes five bytes at most. What goes beyond 32 bits is dropped: an address of this
  // machine wraps, and files use that to step backwards.
  uint32_t leb(bool isSigned) {
    uint64_t value = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      const uint8_t byte = next<uint8_t>();
      value |= static_cast<uint64_t>(byte & 0x7F) << shift;
      if (byte & 0x80) continue;
      if (isSigned && (byte & 0x40) && shift + 7 < 64) value |= ~uint64_t{0} << (shift + 7);
      return static_cast<uint32_t>(value);
    }
    throw FormatError("malformed: a number at offset " + std::to_string(offset_) + " does not end");
  }

  Bytes bytes_;
  size_t offset_;
};

}  // namespace macho
