#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/standin/documents/document_worker.h"

namespace {

using PdfDocuments = DocumentTest;

const std::string kReport = DOCUMENTS "/Harbour report.pdf";

std::string bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// One page; what else its trailer says. The table of objects is left to be found again, as in a damaged file.
std::string pdf(const std::string& trailer, const std::string& objects = "") {
  return "%PDF-1.4\n"
         "1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
         "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
         "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 300 300]/Contents 4 0 R"
         "/Resources<</Font<</F<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>>>>>>>endobj\n"
         "4 0 obj<</Length 38>>stream\nBT /F 12 Tf 9 99 Td (Tide tables) Tj ET\nendstream endobj\n" +
         objects + "trailer<</Root 1 0 R" + trailer + ">>\n%%EOF\n";
}

TEST_F(PdfDocuments, HaveTheTextOfTheirPages) {
  EXPECT_EQ(worker.ask("pdf", kReport), ok("Harbour report Berths Tides Accounts"));
  EXPECT_EQ(read("pdf", pdf("")), ok("Tide tables"));
}

TEST_F(PdfDocuments, ThatAreEncryptedSayIt) {
  const std::string zeros(64, '0');
  const std::string encryption =
      "/ID[<00><00>]/Encrypt<</Filter/Standard/V 1/R 2/P -4/O<" + zeros + ">/U<" + zeros + ">>>";
  EXPECT_EQ(read("pdf", pdf(encryption)), error("is encrypted"));
}

TEST_F(PdfDocuments, ThatAreNoneAreErrors) {
  EXPECT_EQ(read("pdf", "<html>"), error("is no PDF"));
  EXPECT_EQ(read("pdf", std::string(1024, ' ') + "%PDF-1.4"), error("is no PDF"));
  EXPECT_EQ(read("pdf", "%PDF-1.4\nand nothing"), error("is a damaged PDF"));
}

TEST_F(PdfDocuments, ThatAreCutOffAreAnsweredSomehow) {
  const std::string whole = bytesOf(kReport);
  ASSERT_GT(whole.size(), 500u);
  for (size_t length = 0; length < whole.size(); length += whole.size() / 20) {
    const Answer answer = read("pdf", whole.substr(0, length));
    EXPECT_FALSE(answer.status.empty()) << length;
  }
  EXPECT_EQ(worker.ask("pdf", kReport).status, "ok");
}

TEST_F(PdfDocuments, NeedAProgramThatIsMissed) {
  DocumentWorker poor("/nonexistent");
  EXPECT_EQ(poor.ask("pdf", kReport), unreadable("pdftotext isn't there: install Debian's poppler-utils"));
  EXPECT_EQ(poor.ask("html", scratch.file("page", "text")), ok("text"));
}

// In the place of pdftotext, one that does what a test wants.
class OtherPdftotext : public testing::Test {
 protected:
  Answer readWith(const std::string& script) {
    const std::string program = scratch.file("bin/pdftotext", "#!/bin/sh\nPATH=/bin:/usr/bin\n" + script);
    EXPECT_EQ(::chmod(program.c_str(), 0755), 0);
    DocumentWorker worker(scratch.folder("bin").c_str());
    return worker.ask("pdf", scratch.file("a.pdf", "%PDF-1.4\n"));
  }
  ScratchFolder scratch;
};

TEST_F(OtherPdftotext, IsToldTheFileAndTheEncoding) {
  EXPECT_EQ(readWith("echo \"$@\"; cat"), ok("-enc UTF-8 fd://0 - %PDF-1.4"));
}

TEST_F(OtherPdftotext, IsKilledWhenItTakesTooLong) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(readWith("echo some; exec sleep 100"), unreadable("takes more than 8 seconds to read"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST_F(OtherPdftotext, IsKilledWhenThereIsTextEnough) {
  const Answer answer = readWith("exec yes");
  EXPECT_EQ(answer.status, "part");
  EXPECT_EQ(answer.text.substr(0, 5), "y y y");
  EXPECT_EQ(answer.text.size(), (16u << 20) - 1);
}

TEST_F(OtherPdftotext, MayCrashOrComplain) {
  EXPECT_EQ(readWith("kill -SEGV $$"), unreadable("makes pdftotext crash"));
  EXPECT_EQ(readWith("exit 99"), unreadable("can't be read by pdftotext"));
  EXPECT_EQ(readWith("yes | head -c 1000000 >&2; echo text"), ok("text"));
  EXPECT_EQ(readWith("echo Copying of text from this document is not allowed >&2; exit 3"),
            error("forbids that its text is copied"));
}

}  // namespace
