#include "standin/coreservices/readers/reader_answer.h"

#include <gtest/gtest.h>

namespace standin::metadata {
namespace {

// An answer comes in any pieces; found by fuzz/exiftool_answers.
TEST(ReaderAnswers, AreNonsenseWithALongLineWhetherItsEndIsThereOrNot) {
  const std::string line = "ok " + std::string(40, '0') + '5';
  ReaderAnswer answer;
  size_t length = 0;
  EXPECT_EQ(parseAnswer(line, answer, length), Parsed::Nonsense);
  EXPECT_EQ(parseAnswer(line + "\nabcde", answer, length), Parsed::Nonsense);
}

}  // namespace
}  // namespace standin::metadata
