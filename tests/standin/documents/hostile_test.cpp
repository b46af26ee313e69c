// Documents that somebody made to do harm, or that were damaged on the way.
#include <chrono>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/standin/documents/document_worker.h"
#include "tests/standin/documents/office_documents.h"
#include "tests/support/sanitizers.h"

namespace {

using HostileDocuments = DocumentTest;

const auto kAtMost = std::chrono::seconds(underAddressSanitizer() ? 20 : 1);  // of processor time

const Answer kUnpacksTooMuch = error("unpacks to more than 64 MB");

const char* const kTypes =
    "<Types><Default Extension=\"xml\" ContentType=\"application/"
    "vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml\"/></Types>";

constexpr std::string_view kStart = "<document><t>x";
constexpr std::string_view kEnd = "</t></document>";

ZipEntry wordBomb(const std::string& name, size_t zeros) {
  return bomb(name, kStart, zeros, kEnd);
}

TEST_F(HostileDocuments, ThatUnpackToGigabytesCostASecondAndOneMessage) {
  for (const size_t zeros : {380 << 10, 4 << 20}) {  // to 400 MB, and to 4 GB
    ZipEntry entry = wordBomb("word/document.xml", zeros);
    for (const uint32_t size : {entry.size, 0U, 1000U}) {  // which may be a lie
      entry.size = size;
      const std::string path =
          scratch.file("bomb.docx", zipOf({stored("[Content_Types].xml", kTypes), entry}));
      const auto start = worker.processorTime();
      EXPECT_EQ(worker.ask("openxml", path), kUnpacksTooMuch) << zeros << ", " << size;
      EXPECT_LT(worker.processorTime() - start, kAtMost) << zeros << ", " << size;
    }
  }
  EXPECT_EQ(read("openxml", docx("<w:p><w:t>next</w:t></w:p>")), ok("next"));
}

// Each piece is as good as it says, and of a fair size: it is the sum that counts.
TEST_F(HostileDocuments, ThatUnpackToGigabytesInManyPiecesCostNoMore) {
  constexpr size_t kZeros = 1000;  // a megabyte
  const uint32_t crc = crcOf(std::string(kStart) + std::string(blanksOf(kZeros), ' ') + std::string(kEnd));
  const auto documentOf = [&](int pieces) {
    std::vector<ZipEntry> entries{stored("[Content_Types].xml", kTypes)};
    for (int i = 0; i < pieces; ++i) {
      entries.push_back(wordBomb("word/" + std::to_string(i) + ".xml", kZeros));
      entries.back().crc = crc;
    }
    return scratch.file("pieces.docx", zipOf(entries));
  };
  EXPECT_EQ(worker.ask("openxml", documentOf(3)), ok("x x x"));
  const std::string path = documentOf(1000);
  const auto start = worker.processorTime();
  EXPECT_EQ(worker.ask("openxml", path), kUnpacksTooMuch);
  EXPECT_LT(worker.processorTime() - start, kAtMost);
}

TEST_F(HostileDocuments, OfEveryPackedFormatAreStopped) {
  EXPECT_EQ(read("opendocument", zipOf({bomb("content.xml", "<a><p>x", 1 << 20, "</p></a>")})),
            kUnpacksTooMuch);
  EXPECT_EQ(read("opendocument", zipOf({bomb("META-INF/manifest.xml", "<a>", 1 << 20, "</a>")})),
            kUnpacksTooMuch);
  EXPECT_EQ(read("openxml", zipOf({bomb("[Content_Types].xml", "<a>", 1 << 20, "</a>")})), kUnpacksTooMuch);
  EXPECT_EQ(read("epub", zipOf({bomb("META-INF/container.xml", "<a>", 1 << 20, "</a>")})), kUnpacksTooMuch);
  EXPECT_EQ(read("epub", zipOf({stored("META-INF/container.xml", "<a><rootfile full-path=\"p\"/></a>"),
                                stored("p", "<a><item href=\"q\" media-type=\"text/html\"/></a>"),
                                bomb("q", "<p>", 1 << 20, "")})),
            kUnpacksTooMuch);
}

// What isn't needed isn't unpacked.
TEST_F(HostileDocuments, MayHoldAnythingThatIsNotRead) {
  EXPECT_EQ(read("opendocument", zipOf({bomb("Pictures/1.svg", "<a>", 1 << 20, "</a>"),
                                        stored("content.xml", "<a><p>text</p></a>")})),
            ok("text"));
}

TEST_F(HostileDocuments, WithEntitiesOfEntitiesAreNotExpanded) {
  std::string xml = "<!DOCTYPE a [<!ENTITY l0 \"lol\">";
  for (int i = 1; i < 30; ++i) {
    const std::string before = "&l" + std::to_string(i - 1) + ";";
    xml += "<!ENTITY l" + std::to_string(i) + " \"";
    for (int k = 0; k < 10; ++k) xml += before;
    xml += "\">";
  }
  xml += "]><a><p>&l29;</p></a>";
  const std::string path = scratch.file("laughs.odt", zipOf({stored("content.xml", xml)}));
  const auto start = worker.processorTime();
  const Answer answer = worker.ask("opendocument", path);
  EXPECT_LT(worker.processorTime() - start, kAtMost);
  EXPECT_EQ(answer, error("is damaged: what it holds as content.xml is no well-formed XML"));
}

TEST_F(HostileDocuments, AreToldNothingOfOtherFiles) {
  const std::string secret = scratch.file("secret", "secret");
  const std::string kDeclarations[] = {
      "<!ENTITY x SYSTEM \"file://" + secret + "\">",
      "<!ENTITY % p SYSTEM \"file://" + secret + "\"> %p;",
      "<!ENTITY % p \"<!ENTITY x 'secret'>\"> %p;",
  };
  for (const std::string& declaration : kDeclarations) {
    const std::string xml = "<!DOCTYPE a [" + declaration + "]><a><p>&x;</p></a>";
    EXPECT_EQ(read("opendocument", zipOf({stored("content.xml", xml)})).text.find("secret"),
              std::string::npos);
  }
}

TEST_F(HostileDocuments, NestAsDeepAsXmlMay) {
  std::string xml;
  for (int i = 0; i < 100000; ++i) xml += "<a>";
  EXPECT_EQ(read("opendocument", zipOf({stored("content.xml", xml)})).status, "error");
  std::string page;
  for (int i = 0; i < 200000; ++i) page += "<div>";
  EXPECT_EQ(read("html", page + "text"), ok("text"));
}

TEST_F(HostileDocuments, ThatKeepTheParserBusyAreGivenUp) {
  std::string page;
  for (int i = 0; i < 300000; ++i) page += "<b>";
  for (int i = 0; i < 1000000; ++i) page += "</i>";
  const std::string path = scratch.file("busy.html", page);
  const auto start = worker.processorTime();
  EXPECT_EQ(worker.ask("html", path), unreadable("takes more than 4 seconds to read"));
  EXPECT_LT(worker.processorTime() - start, std::chrono::seconds(10));
}

TEST_F(HostileDocuments, CannotTakeTheMemory) {
  if (underAddressSanitizer()) GTEST_SKIP() << "the sanitizer needs more address space than any limit";
  EXPECT_EQ(read("rtf", "{\\rtf1" + std::string(30 << 20, '{')),
            unreadable("takes more than 512 MB of memory to read"));
  EXPECT_EQ(read("html", "next"), ok("next"));
}

TEST_F(HostileDocuments, ThatAreCutOffAnywhereAreErrors) {
  const std::string whole = docx("<w:p><w:t>text</w:t></w:p>");
  for (size_t length = 0; length < whole.size(); length += 7) {
    EXPECT_EQ(read("openxml", whole.substr(0, length)).status, "error") << length;
  }
}

TEST_F(HostileDocuments, WithWrongBytesAnywhereAreAnswered) {
  std::mt19937 random(4711);
  const auto damaged = [&](std::string bytes) {
    for (unsigned i = random() % 4 + 1; i > 0; --i)
      bytes[random() % bytes.size()] = static_cast<char>(random());
    return bytes;
  };
  const std::pair<const char*, std::string> kDocuments[] = {
      {"openxml", docx("<w:p><w:t>text</w:t></w:p>")},
      {"opendocument", openDocument("<text:p>text</text:p>")},
      {"rtf",
       "{\\rtf1\\ansi{\\fonttbl{\\f0\\fcharset128 A;}}\\f0 \\'93\\'8c\\u26481?\\bin3 abc{\\*\\x y}\\par}"},
      {"html",
       "<html><meta charset=Shift_JIS><title>a</title><p>b<script>c</script>&eacute;<!-- d --></html>"},
  };
  for (const auto& [format, whole] : kDocuments) {
    for (int i = 0; i < 300; ++i) {
      const std::string bytes = damaged(whole);
      ASSERT_FALSE(read(format, bytes).status.empty()) << format << ", case " << i;
    }
  }
}

}  // namespace
