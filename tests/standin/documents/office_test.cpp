#include <string>

#include "tests/standin/documents/document_worker.h"
#include "tests/standin/documents/office_documents.h"

namespace {

using OfficeDocuments = DocumentTest;

TEST_F(OfficeDocuments, HaveTheTextOfRealFiles) {
  EXPECT_EQ(worker.ask("openxml", DOCUMENTS "/Summer regatta.docx"),
            ok("You are invited to the summer regatta."));
  EXPECT_EQ(worker.ask("opendocument", DOCUMENTS "/Club rules.odt"),
            ok("1. Members moor at their own berth. 2. Lamps are out by eleven."));
}

TEST_F(OfficeDocuments, OfWordHaveWordsAcrossRuns) {
  EXPECT_EQ(read("openxml",
                 docx("<w:p><w:r><w:t>har</w:t></w:r><w:proofErr/><w:r><w:rPr><w:b/></w:rPr><w:t>bour</w:t>"
                      "</w:r></w:p><w:p><w:r><w:t>master</w:t><w:tab/><w:t>a</w:t><w:br/><w:t>b</w:t>"
                      "<w:footnoteReference/><w:t>c</w:t></w:r></w:p>")),
            ok("harbour master a b c"));
  EXPECT_EQ(read("openxml", docx("<w:tbl><w:tr><w:tc><w:p><w:r><w:t>one</w:t></w:r></w:p></w:tc>"
                                 "<w:tc><w:p><w:r><w:t>two</w:t></w:r></w:p></w:tc></w:tr></w:tbl>")),
            ok("one two"));
}

TEST_F(OfficeDocuments, OfWordHaveNothingThatIsNotShown) {
  EXPECT_EQ(
      read("openxml", docx("<w:p><w:r><w:instrText>PAGE no</w:instrText><w:delText>no</w:delText><w:t>a</w:t>"
                           "<mc:AlternateContent><mc:Choice><w:t>b</w:t></mc:Choice>"
                           "<mc:Fallback><w:t>no</w:t></mc:Fallback></mc:AlternateContent>"
                           "<w:t xml:space=\"preserve\"> &lt;&amp;c&#x1F34E;</w:t></w:r></w:p>")),
      ok("ab <&c\xF0\x9F\x8D\x8E"));
}

TEST_F(OfficeDocuments, OfWordHaveHeadersNotesAndComments) {
  const auto part = [](const std::string& name) {
    return wordXml("<w:p><w:r><w:t>" + name + "</w:t></w:r></w:p>");
  };
  EXPECT_EQ(read("openxml",
                 openXml({{"word/document.xml", "wordprocessingml.template.main", part("body")},
                          {"word/header1.xml", "wordprocessingml.header", part("head")},
                          {"word/footer7.xml", "wordprocessingml.footer", part("foot")},
                          {"word/footnotes.xml", "wordprocessingml.footnotes", part("note")},
                          {"word/endnotes.xml", "wordprocessingml.endnotes", part("end")},
                          {"word/comments.xml", "wordprocessingml.comments", part("remark")},
                          {"word/styles.xml", "wordprocessingml.styles", part("no")},
                          {"word/glossary/document.xml", "wordprocessingml.document.glossary", part("no")}})),
            ok("body head foot note end remark"));
}

TEST_F(OfficeDocuments, MayNameTheirPartsAsTheyLike) {
  EXPECT_EQ(
      read("openxml", zipOf({stored("x/any.part", wordXml("<w:p><w:t>found</w:t></w:p>")),
                             stored("[Content_Types].xml",
                                    "<Types><Default Extension=\"PART\" ContentType=\"application/"
                                    "vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml\"/>"
                                    "</Types>")})),
      ok("found"));
}

TEST_F(OfficeDocuments, OfExcelHaveTheValuesOfTheirCells) {
  EXPECT_EQ(read("openxml",
                 openXml({{"xl/sharedStrings.xml", "spreadsheetml.sharedStrings",
                           "<sst><si><r><t>har</t></r><r><t>bour</t></r></si>"
                           "<si><t>\xE6\xB8\xAF</t><rPh><t>no</t></rPh></si></sst>"},
                          {"xl/worksheets/sheet1.xml", "spreadsheetml.worksheet",
                           "<worksheet><sheetData><row><c t=\"s\"><v>12</v></c><c><f>34+0</f><v>2011</v></c>"
                           "<c t=\"str\"><v>text</v></c><c t=\"b\"><v>13</v></c><c t=\"e\"><v>#N/A</v></c>"
                           "<c t=\"inlineStr\"><is><t>inline</t></is></c></row></sheetData></worksheet>"},
                          {"xl/comments1.xml", "spreadsheetml.comments",
                           "<comments><authors><author>no</author></authors><commentList><comment><text>"
                           "<r><t>remark</t></r></text></comment></commentList></comments>"}})),
            ok("harbour \xE6\xB8\xAF 2011 text inline remark"));
}

TEST_F(OfficeDocuments, OfPowerPointHaveTheTextOfSlidesAndNotes) {
  const auto slide = [](const std::string& text) {
    return "<p:sld xmlns:p=\"urn:p\" xmlns:a=\"urn:a\"><p:sp><p:txBody><a:p><a:r><a:t>" + text +
           "</a:t></a:r></a:p></p:txBody></p:sp></p:sld>";
  };
  EXPECT_EQ(read("openxml",
                 openXml({{"ppt/slides/slide1.xml", "presentationml.slide", slide("one")},
                          {"ppt/slides/slide2.xml", "presentationml.slide", slide("two")},
                          {"ppt/notesSlides/notesSlide1.xml", "presentationml.notesSlide", slide("note")},
                          {"ppt/slideLayouts/slideLayout1.xml", "presentationml.slideLayout", slide("no")},
                          {"ppt/slideMasters/slideMaster1.xml", "presentationml.slideMaster", slide("no")}})),
            ok("one two note"));
}

TEST_F(OfficeDocuments, OfOpenDocumentHaveParagraphsAndCells) {
  EXPECT_EQ(
      read("opendocument",
           openDocument(
               "<office:text><text:tracked-changes><text:p>no</text:p></text:tracked-changes>"
               "<text:h>title</text:h><text:p>har<text:span>bour</text:span><text:s/>a<text:tab/>b"
               "<text:line-break/>c<text:note><text:note-citation>1</text:note-citation><text:note-body>"
               "<text:p>note</text:p></text:note-body></text:note></text:p>"
               "<text:p>x<office:annotation><dc:creator>no</dc:creator><dc:date>2011</dc:date>"
               "<text:p>remark</text:p></office:annotation>y</text:p><table:table-row><table:table-cell>"
               "<text:p>1</text:p></table:table-cell><table:table-cell><text:p>2</text:p>"
               "</table:table-cell></table:table-row><draw:frame><svg:title>no</svg:title>"
               "<text:p>page <text:page-number>&lt;number&gt;</text:page-number></text:p></draw:frame>"
               "</office:text>")),
      ok("title harbour a b c note x remark y 1 2 page head"));
}

TEST_F(OfficeDocuments, WithoutTextHaveNone) {
  EXPECT_EQ(read("openxml", docx("<w:p/>")), ok(""));
  EXPECT_EQ(read("openxml", openXml({})), ok(""));
}

TEST_F(OfficeDocuments, ThatAreEncryptedSayIt) {
  EXPECT_EQ(read("opendocument", openDocument("", "<manifest:encryption-data/>")), error("is encrypted"));
  EXPECT_EQ(read("openxml", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 and so on"),
            error("is encrypted, or no Office Open XML file"));
  ZipEntry secret = stored("content.xml", "............secret");
  secret.flags = 1;
  EXPECT_EQ(read("opendocument", zipOf({secret})), error("is encrypted"));
}

TEST_F(OfficeDocuments, ThatAreOthersAreErrors) {
  EXPECT_EQ(read("openxml", openDocument("")),
            error("is no Office Open XML file: it holds no [Content_Types].xml"));
  EXPECT_EQ(read("opendocument", docx("")), error("is no OpenDocument file: it holds no content.xml"));
  EXPECT_EQ(read("epub", docx("")), error("is no EPUB book: its container.xml names no package"));
  EXPECT_EQ(read("openxml", "text"),
            error("is no ZIP archive, as every Office Open XML file is, or is cut off"));
  EXPECT_EQ(read("openxml", docx("<w:p>")),
            error("is damaged: what it holds as word/document.xml is no well-formed XML"));
}

}  // namespace
