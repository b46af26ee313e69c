// The text of a plain-text file, read when a query asks for it.
//
// A file is plain text by what it holds, whatever its name: valid UTF-8 without NUL, or UTF-16 with a byte
// order mark, and no more than kLargestText bytes. Nothing but a regular file is opened, so neither pipes nor
// devices hold up a search, and a symbolic link isn't followed. Reading leaves the time of last access alone
// where the system lets it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace standin::metadata {

inline constexpr size_t kLargestText = 16 << 20;

class TextContent {
 public:
  // The text of the file that `name` leads to from `folder`, as UTF-8 with one blank for each run of white
  // space; nothing when it has none or can't be read. It is read once, and good until this dies.
  std::optional<std::string_view> read(int folder, const char* name);
  // What is missing of it, for people; empty when nothing is, and where there is no text.
  const std::string& missing() const { return missing_; }

 private:
  bool asked_ = false;
  std::optional<std::string> text_;
  std::string missing_;
};

// What the bytes of a whole file say, as above; nothing when they are no text.
std::optional<std::string> textOfBytes(std::string_view bytes);

}  // namespace standin::metadata
