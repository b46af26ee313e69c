// The questions that come on standard input.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace standin::documents {

// Longer than any path that can be opened.
constexpr size_t kLongestQuestion = 1 << 16;

struct Question {
  std::string format;
  std::string path;
};

class QuestionReader {
 public:
  explicit QuestionReader(int input) : input_(input) {}

  // Nothing at the end of the input. Throws a std::runtime_error when that is in the middle of a question,
  // and for one that is too long.
  std::optional<Question> next();

 private:
  int input_;
  std::string bytes_;  // that have been read and not been used
};

}  // namespace standin::documents
