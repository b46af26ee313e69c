#include "standin/coreservices/files/text_content.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "standin/coreservices/disk/descriptor.h"
#include "standin/coreservices/disk/unseen.h"

namespace standin::metadata {
namespace {

// Enough to tell most files that hold no text.
constexpr size_t kFirstLook = 4096;

// Why there may be text that can't be told.
struct Unreadable {
  std::string missing;
};

[[noreturn]] void failToRead(int error) {
  throw Unreadable{meansGone(error) ? std::string() : cannotBeRead(error)};
}

// Throws Unreadable; -1 for what is no regular file.
int openRegularFile(int folder, const char* name) {
  struct stat info;
  if (::fstatat(folder, name, &info, AT_SYMLINK_NOFOLLOW) != 0) failToRead(errno);
  if (!S_ISREG(info.st_mode)) return -1;
  // Should another kind of file take its place now, it isn't waited for.
  constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  int descriptor = ::openat(folder, name, kFlags | O_NOATIME);
  if (descriptor < 0 && errno == EPERM) descriptor = ::openat(folder, name, kFlags);
  if (descriptor < 0) failToRead(errno);
  return descriptor;
}

bool hasUtf16Mark(std::string_view bytes) {
  return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

// Appends up to `count` bytes. Throws Unreadable.
void readMore(int descriptor, size_t count, std::string& bytes) {
  const size_t start = bytes.size();
  bytes.resize(start + count);
  size_t got = 0;
  while (got < count) {
    const ssize_t now = ::read(descriptor, bytes.data() + start + got, count - got);
    if (now < 0 && errno == EINTR) continue;
    if (now < 0) failToRead(errno);
    if (now == 0) break;
    got += static_cast<size_t>(now);
  }
  bytes.resize(start + got);
}

// Whether a file may hold text that starts with these bytes. The last character may be cut.
bool mayStartText(std::string_view bytes) {
  if (hasUtf16Mark(bytes)) return true;
  const auto length = static_cast<int32_t>(bytes.size());
  for (int32_t position = 0; position < length;) {
    const int32_t start = position;
    UChar32 character = 0;
    U8_NEXT(bytes.data(), position, length, character);
    if (character <= 0) return character < 0 && length - start < U8_MAX_LENGTH;
  }
  return true;
}

// Throws Unreadable.
std::optional<std::string> readText(int folder, const char* name) {
  const Descriptor file(openRegularFile(folder, name));
  struct stat info;
  if (!file || ::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) return {};
  const auto size = static_cast<uint64_t>(info.st_size);
  const auto first = static_cast<size_t>(std::min<uint64_t>(size, kFirstLook));
  std::string bytes;
  readMore(file.get(), first, bytes);
  if (!mayStartText(bytes)) return {};
  if (size > kLargestText) {
    throw Unreadable{"is larger than " + std::to_string(kLargestText >> 20) +
                     " MB; its text is not searched"};
  }
  bytes.reserve(static_cast<size_t>(size));
  readMore(file.get(), static_cast<size_t>(size) - first, bytes);
  return textOfBytes(bytes);
}

// Text as it grows, with one blank for each run of white space.
class Folding {
 public:
  explicit Folding(std::string& text) : text_(text) {}

  void add(UChar32 character) {
    if (u_isUWhiteSpace(character)) {
      if (!afterBlank_) text_ += ' ';
      afterBlank_ = true;
      return;
    }
    afterBlank_ = false;
    char encoded[U8_MAX_LENGTH];
    size_t length = 0;
    U8_APPEND_UNSAFE(encoded, length, character);
    text_.append(encoded, length);
  }

 private:
  std::string& text_;
  bool afterBlank_ = false;
};

std::optional<std::string> textOfUtf8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  Folding folding(text);
  const auto length = static_cast<int32_t>(bytes.size());
  for (int32_t position = 0; position < length;) {
    UChar32 character = 0;
    U8_NEXT(bytes.data(), position, length, character);
    if (character <= 0) return {};  // no UTF-8, or NUL
    folding.add(character);
  }
  return text;
}

std::optional<std::string> textOfUtf16(std::string_view bytes, bool bigEndian) {
  if (bytes.size() % 2 != 0) return {};
  const auto unitAt = [&](size_t index) {
    const auto first = static_cast<uint8_t>(bytes[2 * index]);
    const auto second = static_cast<uint8_t>(bytes[2 * index + 1]);
    return static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
  };
  std::string text;
  Folding folding(text);
  const size_t length = bytes.size() / 2;
  for (size_t i = 0; i < length; ++i) {
    UChar32 character = unitAt(i);
    if (U16_IS_SURROGATE(character)) {
      if (!U16_IS_SURROGATE_LEAD(character) || i + 1 == length || !U16_IS_TRAIL(unitAt(i + 1))) return {};
      character = U16_GET_SUPPLEMENTARY(character, unitAt(++i));
    }
    if (character == 0) return {};
    folding.add(character);
  }
  return text;
}

}  // namespace

std::optional<std::string> textOfBytes(std::string_view bytes) {
  constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
  if (hasUtf16Mark(bytes)) return textOfUtf16(bytes.substr(2), bytes[0] == '\xFE');
  return textOfUtf8(bytes.starts_with(kUtf8Mark) ? bytes.substr(kUtf8Mark.size()) : bytes);
}

std::optional<std::string_view> TextContent::read(int folder, const char* name) {
  if (!std::exchange(asked_, true)) {
    try {
      text_ = readText(folder, name);
    } catch (const Unreadable& unreadable) {
      missing_ = unreadable.missing;
    }
  }
  return text_;
}

}  // namespace standin::metadata
