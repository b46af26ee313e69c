#include <string>

#include "tests/standin/documents/document_worker.h"

namespace {

using namespace std::string_literals;
using HtmlPages = DocumentTest;

TEST_F(HtmlPages, HaveTheTextThatIsShownAndTheTitle) {
  EXPECT_EQ(worker.ask("html", DOCUMENTS "/Opening hours.html"),
            ok("Opening hours Opening hours Daily from the morning tide to the evening tide."));
  EXPECT_EQ(read("html",
                 "<!DOCTYPE html><html><head><title>The title</title><meta name=keywords content=no>"
                 "<style>p { color: no }</style><script>no('<p>no</p>')</script></head>"
                 "<body><!-- no --><p title=no>shown</p><noscript>no</noscript><img alt=no></body></html>"),
            ok("The title shown"));
}

TEST_F(HtmlPages, HaveWordsAcrossTagsInsideThemAndPartedByOthers) {
  EXPECT_EQ(read("html", "har<b>bo</b>u<i class=x>r</i> mas<wbr>ter"), ok("harbour master"));
  EXPECT_EQ(read("html", "<ul><li>one<li>two</ul>three<br>four<table><tr><td>five<td>six</table>seven"),
            ok("one two three four five six seven"));
  EXPECT_EQ(read("html", "<article>one</article><custom-tag>two</custom-tag>three"), ok("one two three"));
  EXPECT_EQ(read("html", "  a \n\t b&nbsp;&nbsp;c  "), ok("a b c"));
  EXPECT_EQ(read("html", "<ruby>\xE6\xB8\xAF<rt>minato</rt></ruby>\xE3\x81\xAE"),
            ok("\xE6\xB8\xAF\xE3\x81\xAE"));
}

TEST_F(HtmlPages, HaveCharactersByTheirNamesAndNumbers) {
  EXPECT_EQ(read("html", "caf&eacute; &#8364;&#x1F34E; &lt;b&gt; har&shy;bour a&zwj;b &nobody; AT&T"),
            ok("caf\xC3\xA9 \xE2\x82\xAC\xF0\x9F\x8D\x8E <b> harbour a\xE2\x80\x8D"
               "b &nobody; AT&T"));
}

TEST_F(HtmlPages, AreReadInTheirEncodings) {
  const Answer cafe = ok("caf\xC3\xA9");
  EXPECT_EQ(read("html", "caf\xC3\xA9"), cafe);
  EXPECT_EQ(read("html", "caf\xE9"), cafe);
  EXPECT_EQ(read("html",
                 "\xEF\xBB\xBF"
                 "caf\xC3\xA9"),
            cafe);
  EXPECT_EQ(read("html", "<meta charset=utf-8>caf\xC3\xA9"), cafe);
  EXPECT_EQ(read("html", "<META CHARSET = 'ISO-8859-1'>caf\xE9"), cafe);
  EXPECT_EQ(read("html", "<meta charset=iso-8859-1>\x80"), ok("\xE2\x82\xAC"));
  EXPECT_EQ(
      read("html", "<meta http-equiv=Content-Type content=\"text/html; charset=windows-1251\">\xEC\xE8\xF0"),
      ok("\xD0\xBC\xD0\xB8\xD1\x80"));
  EXPECT_EQ(read("html", "<meta charset=Shift_JIS>\x93\x8C\x8B\x9E"), ok("\xE6\x9D\xB1\xE4\xBA\xAC"));
  EXPECT_EQ(
      read("html", "<?xml version='1.0' encoding='windows-1251'?><html><title/><body><p>\xEC\xE8\xF0</p>"),
      ok("\xD0\xBC\xD0\xB8\xD1\x80"));
  EXPECT_EQ(read("html", "\xFF\xFE<\0p\0>\0q\0"s), ok("q"));
  EXPECT_EQ(read("html", "\xFE\xFF\0<\0p\0>\0q"s), ok("q"));
}

TEST_F(HtmlPages, AreReadInSpiteOfAWrongWordForTheEncoding) {
  EXPECT_EQ(read("html", "<meta charset=utf-16>caf\xC3\xA9"), ok("caf\xC3\xA9"));
  EXPECT_EQ(read("html", "<meta charset=nobody-knows>caf\xC3\xA9"), ok("caf\xC3\xA9"));
  EXPECT_EQ(read("html", "<meta charset=>caf\xE9"), ok("caf\xC3\xA9"));
  EXPECT_EQ(read("html", "<meta charset=utf-8>a \xFF b \xC3"), ok("a \xEF\xBF\xBD b \xEF\xBF\xBD"));
}

TEST_F(HtmlPages, AreReadInSpiteOfTagsThatNobodyClosed) {
  EXPECT_EQ(read("html", "<p>one<b>two<p>three</i></div>four<a href=\"five"), ok("onetwo threefour"));
  EXPECT_EQ(read("html", "one</script>two"), ok("onetwo"));
  EXPECT_EQ(read("html", "one<!-- two"), ok("one"));
  EXPECT_EQ(read("html", "one<script>two"), ok("one"));
  EXPECT_EQ(read("html", "a\0b"s), ok("a b"));
}

}  // namespace
