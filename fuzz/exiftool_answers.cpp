// What the reader of tags answers: its frame, the tags, the attributes that they mean, and these as they are
// kept.
//
// The input: a byte that says which of them. An answer is texts that are each ended by a zero byte, a tag and
// a value in turn; or for each tag a byte that says which of the known ones it is, and the value.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/input.h"
#include "standin/coreservices/attributes/attributes.h"
#include "standin/coreservices/media/media_attributes.h"
#include "standin/coreservices/media/media_table.h"
#include "standin/coreservices/media/media_tags.h"
#include "standin/coreservices/readers/reader_answer.h"

namespace {

using namespace standin::metadata;

// As the reader is asked for them, without the mark for numbers.
std::vector<std::string> findKnownTags() {
  std::vector<std::string> tags;
  const auto add = [&](std::string_view tag) {
    if (tag.empty()) return;
    const std::string_view name = tag.substr(0, tag.find('#'));
    tags.push_back((name.find(':') == std::string_view::npos ? "File:" : "") + std::string(name));
  };
  for (const MediaRow& row : mediaTable()) {
    for (const std::string_view tag : row.tags) add(tag);
  }
  for (const std::string_view tag : kFurtherTags) add(tag);
  return tags;
}

std::string answerOf(fuzz::Input& input) {
  static const std::vector<std::string> kKnown = findKnownTags();
  std::string answer;
  while (!input.atEnd()) {
    answer += kKnown[input.number<uint16_t>() % kKnown.size()];
    answer += '\0';
    answer += input.text();
    answer += '\0';
  }
  return answer;
}

size_t countKept(std::string_view bytes, FileAttribute attribute) {
  std::vector<Value> values;
  decodeValues(bytes, attribute, values);
  return values.size();
}

void useTags(std::string_view answer) {
  const std::optional<MediaTags> tags = parseMediaTags(answer);
  if (!tags) return;
  const MediaAttributes attributes = attributesOf(*tags);
  const std::string kept = encodeAttributes(attributes);
  size_t count = 0;
  FileAttribute last = FileAttribute::None;  // the values of one attribute stand together
  for (const auto& [attribute, value] : attributes) {
    if (attribute != last) count += countKept(kept, attribute);
    last = attribute;
  }
  fuzz::require(count == attributes.size(), "an attribute that isn't kept");
}

// Answers may come in any pieces: what isn't whole yet is neither taken nor refused for its end alone.
void useFrame(std::string_view received, size_t first) {
  ReaderAnswer answer;
  size_t length = 0;
  const Parsed whole = parseAnswer(received, answer, length);
  if (whole == Parsed::Answer)
    fuzz::require(length <= received.size(), "an answer of more than was received");
  const Parsed part = parseAnswer(received.substr(0, first), answer, length);
  if (part != Parsed::More) fuzz::require(part == whole, "an answer that changes as more of it comes");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  switch (input.byte() % 4) {
    case 0:
      useTags(input.rest());
      break;
    case 1:
      useTags(answerOf(input));
      break;
    case 2: {
      const size_t first = input.byte();
      useFrame(input.rest(), first);
      break;
    }
    default: {
      const auto attribute = FileAttribute{input.byte()};
      countKept(input.rest(), attribute);
    }
  }
  return 0;
}
