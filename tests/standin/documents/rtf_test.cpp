#include <string>

#include "tests/standin/documents/document_worker.h"

namespace {

using namespace std::string_literals;

class RtfDocuments : public DocumentTest {
 protected:
  Answer readBody(const std::string& body) { return read("rtf", "{\\rtf1\\ansi " + body + "}"); }
};

TEST_F(RtfDocuments, HaveTheTextThatIsShown) {
  EXPECT_EQ(worker.ask("rtf", DOCUMENTS "/Minutes of May.rtf"),
            ok("Five members came. The lamp on the pier is to be painted."));
  EXPECT_EQ(readBody("{\\info{\\title no}}{\\colortbl;\\red0;}{\\stylesheet{\\s1 no;}}{\\*\\nobody no}shown"),
            ok("shown"));
  EXPECT_EQ(readBody("{\\field{\\*\\fldinst HYPERLINK \"no\"}{\\fldrslt link}}"), ok("link"));
  EXPECT_EQ(readBody("a{\\v no}b{\\deleted no}c\\v no\\v0 d\\v no\\plain e"), ok("abcde"));
  EXPECT_EQ(readBody("body{\\header head}{\\footer foot}{\\footnote note}{\\*\\annotation remark}more"),
            ok("body head foot note remark more"));
  EXPECT_EQ(readBody("{\\shp{\\*\\shpinst{\\sp{\\sn no}{\\sv no}}{\\shptxt boxed}}}"), ok("boxed"));
}

TEST_F(RtfDocuments, HaveWordsAcrossGroupsAndLines) {
  EXPECT_EQ(readBody("har{\\b bo}u\\i r\\i0  master\\par mas\r\nter\\tab x\\cell y\\line z\\\nend"),
            ok("harbour master master x y z end"));
  EXPECT_EQ(readBody("har\\-bour\\~master self\\_made \\{\\\\\\}"), ok("harbour master self-made {\\}"));
  EXPECT_EQ(readBody("\\ldblquote a\\rdblquote\\emdash b"), ok("\xE2\x80\x9C"
                                                               "a\xE2\x80\x9D\xE2\x80\x94"
                                                               "b"));
}

TEST_F(RtfDocuments, AreReadInTheCodePagesOfTheirFonts) {
  const std::string fonts =
      "\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fcharset0 Arial;}{\\f1\\fcharset204 B;}{\\f2\\fcharset128 C;}"
      "{\\f3\\fcharset2 Symbol;}{\\f4\\fcharset161\\cpg1250 D;}}";
  EXPECT_EQ(readBody(fonts + "caf\\'e9{\\f1 \\'ec\\'E8\xF0}\\'e9"),
            ok("caf\xC3\xA9\xD0\xBC\xD0\xB8\xD1\x80\xC3\xA9"));
  // A second byte may look like a letter, a backslash, a brace.
  EXPECT_EQ(readBody(fonts + "\\f2 \\'93\\'8c \\'83n \\'95\\'5c\\'95\\\\ \\'83\\}"),
            ok("\xE6\x9D\xB1 \xE3\x83\x8F \xE8\xA1\xA8\xE8\xA1\xA8 \xE3\x83\x9E"));
  EXPECT_EQ(readBody(fonts + "a\\f3 \\'b7b\\f4\\'b9\\plain c"), ok("a\xC4\x85"
                                                                   "c"));
}

TEST_F(RtfDocuments, AreReadInTheCodePageOfTheDocument) {
  EXPECT_EQ(read("rtf", "{\\rtf1\\ansi\\ansicpg1251 \\'ec\\'e8\\'f0}"), ok("\xD0\xBC\xD0\xB8\xD1\x80"));
  EXPECT_EQ(read("rtf", "{\\rtf1\\mac caf\\'8e}"), ok("caf\xC3\xA9"));
  EXPECT_EQ(read("rtf", "{\\rtf1\\pc caf\\'82}"), ok("caf\xC3\xA9"));
  EXPECT_EQ(read("rtf", "{\\rtf1\\ansi\\ansicpg65001 caf\xC3\xA9}"), ok("caf\xC3\xA9"));
  EXPECT_EQ(read("rtf", "{\\rtf1\\ansi\\ansicpg99999 caf\\'e9}"), ok("caf\xC3\xA9"));
}

TEST_F(RtfDocuments, HaveUnicodeInsteadOfItsFallback) {
  EXPECT_EQ(readBody("\\u26481?\\u20140\\'3f!"), ok("\xE6\x9D\xB1\xE4\xBA\xAC!"));
  EXPECT_EQ(readBody("\\uc2\\u8364 ??x{\\uc0\\u8364 y}\\u8364\\'a2\\'e3z"),
            ok("\xE2\x82\xACx\xE2\x82\xACy\xE2\x82\xACz"));
  EXPECT_EQ(readBody("\\u-10180?\\u-8370?"), ok("\xF0\x9F\x8D\x8E"));
  EXPECT_EQ(readBody("\\u8220\\ldblquote a"), ok("\xE2\x80\x9C"
                                                 "a"));
  EXPECT_EQ(readBody("{\\u8364}x"), ok("\xE2\x82\xACx"));  // a group's end ends the fallback, too
}

TEST_F(RtfDocuments, HaveNoCharacterOfHalves) {
  EXPECT_EQ(readBody("\\u-10180?x"), ok("x"));
  EXPECT_EQ(readBody("\\u-8370?x"), ok("\xEF\xBF\xBDx"));
  EXPECT_EQ(readBody("\\u99999999?x"), ok("\xEF\xBF\xBDx"));
}

TEST_F(RtfDocuments, HaveNoTextInPictures) {
  EXPECT_EQ(readBody("a{\\pict\\bin5 }}}{\\}b"), ok("ab"));
  EXPECT_EQ(readBody("a{\\pict\\wmetafile8 0123456789abcdef}b"), ok("ab"));
  EXPECT_EQ(readBody("a{\\pict\\bin2000000000 }b"), ok("a"));
  EXPECT_EQ(readBody("a{\\pict\\bin-5 }b"), ok("ab"));
}

TEST_F(RtfDocuments, MayNestAsDeepAsTheyLike) {
  constexpr size_t kDepth = 100000;
  EXPECT_EQ(readBody(std::string(kDepth, '{') + "deep" + std::string(kDepth, '}') + " up"), ok("deep up"));
  EXPECT_EQ(readBody(std::string(kDepth, '{') + "deep"), ok("deep"));
  EXPECT_EQ(readBody("a" + std::string(kDepth, '}') + "b"), ok("a"));
}

TEST_F(RtfDocuments, ThatAreBrokenHaveTheTextUpToThere) {
  const std::string whole =
      "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fcharset128 A;}}a\\'93\\'8c\\u26481?{\\*\\x y}{\\pict\\bin3 "
      "abc}\\par}";
  for (size_t length = 0; length < whole.size(); ++length) {
    const Answer answer = read("rtf", whole.substr(0, length));
    EXPECT_EQ(answer.status, length < 5 ? "error" : "ok") << length;
  }
  EXPECT_EQ(read("rtf", "hello"), error("is no RTF"));
  EXPECT_EQ(readBody("a\\'zz\\'}b"), ok("azz"));
  EXPECT_EQ(readBody("a\\"), ok("a}"));
  EXPECT_EQ(readBody("\\" + std::string(100000, 'w') + std::string(100, '9') + " a"), ok("a"));
}

}  // namespace
