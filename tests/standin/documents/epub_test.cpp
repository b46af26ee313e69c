#include <string>
#include <vector>

#include "tests/standin/documents/document_worker.h"
#include "tests/standin/documents/zip_writer.h"

namespace {

using EpubBooks = DocumentTest;

const char* const kContainer =
    "<container><rootfiles><rootfile full-path=\"OEBPS/content.opf\" "
    "media-type=\"application/oebps-package+xml\"/></rootfiles></container>";

const char* const kPackage =
    "<?xml version=\"1.0\"?><!DOCTYPE package PUBLIC \"-//X//DTD Package//EN\" "
    "\"http://example.invalid/p.dtd\">"
    "<package><manifest>"
    "<item id=\"a\" href=\"text/one%20page.xhtml\" media-type=\"application/xhtml+xml\"/>"
    "<item id=\"b\" href=\"../two.xhtml#start\" media-type=\"application/xhtml+xml\"/>"
    "<item id=\"c\" href=\"style.css\" media-type=\"text/css\"/>"
    "<item id=\"d\" href=\"\xE6\xB8\xAF.xhtml\" media-type=\"application/xhtml+xml\"/>"
    "<item id=\"e\" href=\"missing.xhtml\" media-type=\"application/xhtml+xml\"/>"
    "</manifest></package>";

std::string page(const std::string& text) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\"?><html "
         "xmlns=\"http://www.w3.org/1999/xhtml\"><head><title/>"
         "<script src=\"no\"/></head><body><p>" +
         text + "</p></body></html>";
}

std::vector<ZipEntry> book() {
  std::vector<ZipEntry> entries{stored("mimetype", "application/epub+zip"),
                                stored("META-INF/container.xml", kContainer),
                                stored("OEBPS/content.opf", kPackage),
                                stored("OEBPS/style.css", "no { }"),
                                stored("OEBPS/text/one page.xhtml", page("chap<i>ter</i> one")),
                                stored("two.xhtml", page("caf\xC3\xA9&nbsp;two")),
                                stored("OEBPS/other.xhtml", page("no"))};
  entries.push_back(stored("OEBPS/\xE6\xB8\xAF.xhtml", page("three")));
  entries.back().flags = 0x800;  // a name in UTF-8
  return entries;
}

std::string encryptionOf(const std::string& entries) {
  return "<encryption><EncryptedData><CipherData>" + entries + "</CipherData></EncryptedData></encryption>";
}

TEST_F(EpubBooks, HaveTheTextOfTheirPages) {
  EXPECT_EQ(read("epub", zipOf(book())), ok("chapter one caf\xC3\xA9 two three"));
}

TEST_F(EpubBooks, ThatAreEncryptedSayIt) {
  auto entries = book();
  entries.push_back(stored("META-INF/encryption.xml",
                           encryptionOf("<CipherReference URI=\"OEBPS/text/one%20page.xhtml\"/>")));
  EXPECT_EQ(read("epub", zipOf(entries)), ok("caf\xC3\xA9 two three"));
  entries.back() =
      stored("META-INF/encryption.xml", encryptionOf("<CipherReference URI=\"OEBPS/text/one%20page.xhtml\"/>"
                                                     "<CipherReference URI=\"two.xhtml\"/><CipherReference "
                                                     "URI=\"OEBPS/\xE6\xB8\xAF.xhtml\"/>"));
  EXPECT_EQ(read("epub", zipOf(entries)), error("is encrypted"));
}

TEST_F(EpubBooks, WithReferencesThatLeadNowhereHaveNoText) {
  const std::string package =
      "<package><manifest><item href=\"../../../../etc/passwd\" media-type=\"text/html\"/>"
      "<item href=\"%\" media-type=\"text/html\"/><item href=\"%4\" media-type=\"text/html\"/>"
      "<item media-type=\"text/html\"/></manifest></package>";
  EXPECT_EQ(read("epub",
                 zipOf({stored("META-INF/container.xml", kContainer), stored("OEBPS/content.opf", package)})),
            ok(""));
}

}  // namespace
