#include "standin/documents/questions.h"

#include <stdexcept>

#include "standin/documents/file.h"

namespace standin::documents {

std::optional<Question> QuestionReader::next() {
  size_t end = 0;
  while ((end = bytes_.find('\0')) == std::string::npos) {
    if (bytes_.size() > kLongestQuestion) throw std::runtime_error("a question is too long");
    char buffer[4096];
    const size_t got = readSome(input_, buffer, sizeof buffer);
    if (got == 0 && bytes_.empty()) return {};
    if (got == 0) throw std::runtime_error("the input ended in the middle of a question");
    bytes_.append(buffer, got);
  }
  const std::string line = bytes_.substr(0, end);
  bytes_.erase(0, end + 1);
  const size_t blank = line.find(' ');
  if (blank == std::string::npos) return Question{line, ""};
  return Question{line.substr(0, blank), line.substr(blank + 1)};
}

}  // namespace standin::documents
