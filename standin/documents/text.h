// The text of a document as it grows.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace standin::documents {

// Has one blank for each run of white space and control characters, and none at its ends. Soft hyphens, which
// show only where a line ends, are left out, so that a word is found however it was typeset.
class Text {
 public:
  // Characters of UTF-8, none of them cut; what is none becomes U+FFFD.
  void add(std::string_view characters);

  // Parts what comes from what was before.
  void addBlank() { blank_ = true; }

  // Whether there is more than fits in (kLongestText): reading on is of no use.
  bool isFull() const { return full_; }
  // There is more, which isn't added.
  void setFull() { full_ = true; }

  const std::string& utf8() const { return utf8_; }

 private:
  void addCharacter(int32_t character);  // negative for what is none
  void append(std::string_view characters);

  std::string utf8_;
  bool blank_ = false;
  bool full_ = false;
};

}  // namespace standin::documents
