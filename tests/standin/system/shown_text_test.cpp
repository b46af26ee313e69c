// Text from outside as a terminal may be given it.
#include "standin/gate/shown_text.h"

#include <gtest/gtest.h>

#include "standin/gate/gate.h"

namespace {

using standin::shownText;

TEST(ShownText, IsTheTextWhereNothingDisturbs) {
  for (const char* const text :
       {"", "plain", "back\\slash", "caf\u00E9", "\u6771\u4EAC", "\U0001F30A", "e\u0301", "\u00A0"})
    EXPECT_EQ(shownText(text), text);
}

TEST(ShownText, HasEscapesForWhatATerminalObeys) {
  EXPECT_EQ(shownText("a\tb\nc\rd"), "a\\tb\\nc\\x0Dd");
  EXPECT_EQ(shownText("\x1B[31m\a\x7F"), "\\x1B[31m\\x07\\x7F");
  EXPECT_EQ(shownText(std::string_view("\0", 1)), "\\x00");
  EXPECT_EQ(shownText("\u0080\u009B\u009F"), "\\u0080\\u009B\\u009F");
  EXPECT_EQ(shownText("\u2028\u202E\u2066\u2069\u200E\u200F\u061C"),
            "\\u2028\\u202E\\u2066\\u2069\\u200E\\u200F\\u061C");
}

TEST(ShownText, HasEscapesForBytesThatAreNoUTF8) {
  EXPECT_EQ(shownText("\xFFx\x9B"), "\\xFFx\\x9B");
  EXPECT_EQ(shownText("\xE6\x9D"), "\\xE6\\x9D");
  EXPECT_EQ(shownText("\xED\xA0\x80"), "\\xED\\xA0\\x80");
  EXPECT_EQ(shownText("\xC0\x80"), "\\xC0\\x80");
  EXPECT_EQ(shownText("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");
}

TEST(ShownText, IsWhatAnEndOfTheProcessIsExplainedWith) {
  EXPECT_DEATH(standin::die("call", "about \x1B[31m\x9B"), "standin: call: about \\\\x1B\\[31m\\\\x9B\n");
}

}  // namespace
