#include "standin/coreservices/readers/reader_answer.h"

#include <algorithm>
#include <charconv>

namespace standin::metadata {
namespace {

constexpr size_t kLongestAnswer = 64 << 20;
constexpr size_t kLongestLine = 32;

struct AnswerWord {
  std::string_view word;
  ReaderAnswer::Kind kind;
};
constexpr AnswerWord kAnswerWords[] = {{"ok ", ReaderAnswer::Read},
                                       {"part ", ReaderAnswer::Part},
                                       {"error ", ReaderAnswer::Refused},
                                       {"unreadable ", ReaderAnswer::Unreadable}};

}  // namespace

Parsed parseAnswer(std::string_view received, ReaderAnswer& answer, size_t& length) {
  const size_t end = received.find('\n');
  if (std::min(end, received.size()) > kLongestLine) return Parsed::Nonsense;
  if (end == std::string_view::npos) return Parsed::More;
  for (const AnswerWord& each : kAnswerWords) {
    if (!received.starts_with(each.word)) continue;
    size_t size = 0;
    const char* const last = received.data() + end;
    const auto parsed = std::from_chars(received.data() + each.word.size(), last, size);
    if (parsed.ec != std::errc() || parsed.ptr != last || size > kLongestAnswer) return Parsed::Nonsense;
    length = end + 1 + size;
    if (received.size() < length) return Parsed::More;
    answer = {each.kind, std::string(received.substr(end + 1, size))};
    return Parsed::Answer;
  }
  return Parsed::Nonsense;
}

}  // namespace standin::metadata
