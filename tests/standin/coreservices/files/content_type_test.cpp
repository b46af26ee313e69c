// What a file's content is, by its MIME type, its name or its first bytes.
#include "standin/coreservices/files/content_type.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>

#include "tests/standin/coreservices/metadata/item_fixture.h"

namespace {

using namespace standin::metadata;
using namespace std::string_literals;
using ContentTypes = ItemTest;

std::string ofName(std::string_view name, Node node = Node::File) {
  const ContentType* const type = contentTypeOfName(name, node);
  return type ? std::string(type->identifier) : "";
}

std::string ofBytes(std::string_view bytes) {
  const ContentType* const type = contentTypeOfBytes(bytes);
  return type ? std::string(type->identifier) : "";
}

std::string ofMime(std::string_view mimeType) {
  const ContentType* const type = contentTypeOfMime(mimeType);
  return type ? std::string(type->identifier) : "";
}

std::vector<std::string_view> tree(std::string_view identifier) {
  return contentTypeTree(*contentTypeNamed(identifier));
}

TEST(ContentType, IsKnownByTheNamesExtensionInAnyCase) {
  EXPECT_EQ(ofName("a.jpg"), "public.jpeg");
  EXPECT_EQ(ofName("A.JPEG"), "public.jpeg");
  EXPECT_EQ(ofName("a.tar.gz"), "org.gnu.gnu-zip-archive");
  EXPECT_EQ(ofName("notes.c++"), "public.c-plus-plus-source");
  EXPECT_EQ(ofName("report.docx"), "org.openxmlformats.wordprocessingml.document");
  EXPECT_EQ(ofName("jpg"), "");
  EXPECT_EQ(ofName(".jpg"), "");
  EXPECT_EQ(ofName("a."), "");
  EXPECT_EQ(ofName("a.nobodyknows"), "");
}

TEST(ContentType, OfFoldersIsApartFromThatOfFiles) {
  EXPECT_EQ(ofName("Mail.app", Node::Folder), "com.apple.application-bundle");
  EXPECT_EQ(ofName("Mail.app", Node::File), "");
  EXPECT_EQ(ofName("photos.jpg", Node::Folder), "");
}

TEST(ContentType, IsKnownByMimeTypeWhateverItsParameters) {
  EXPECT_EQ(ofMime("image/jpeg"), "public.jpeg");
  EXPECT_EQ(ofMime("TEXT/HTML;charset=utf-8"), "public.html");
  EXPECT_EQ(ofMime("application/octet-stream"), "public.data");
  EXPECT_EQ(ofMime("image/"), "");
  EXPECT_EQ(ofMime(""), "");
}

TEST(ContentType, IsKnownByTheFirstBytes) {
  EXPECT_EQ(ofBytes("\xFF\xD8\xFF\xE0"), "public.jpeg");
  EXPECT_EQ(ofBytes("\x89PNG\r\n\x1A\n"), "public.png");
  EXPECT_EQ(ofBytes("RIFF1234WAVEfmt "), "com.microsoft.waveform-audio");
  EXPECT_EQ(ofBytes("\0\0\0\x18"
                    "ftypmp42"s),
            "public.mpeg-4");
  EXPECT_EQ(ofBytes("\0\0\0\x18"
                    "ftypM4A "s),
            "com.apple.m4a-audio");
  EXPECT_EQ(ofBytes("%PDF-1.4\n"), "com.adobe.pdf");
  EXPECT_EQ(ofBytes("PK\x03\x04"), "public.zip-archive");
  EXPECT_EQ(ofBytes(std::string(257, 'x') + "ustar"), "public.tar-archive");
  EXPECT_EQ(ofBytes(""), "");
  EXPECT_EQ(ofBytes("\x01\x02\x03"), "");
}

TEST(ContentType, OfReadableTextIsTextOrTheScriptThatItIs) {
  EXPECT_EQ(ofBytes("Read me.\n"), "public.plain-text");
  EXPECT_EQ(ofBytes("caf\xC3\xA9"), "public.plain-text");
  EXPECT_EQ(ofBytes("caf\xE9 latin"), "");
  EXPECT_EQ(ofBytes("a\0b"s), "");
  EXPECT_EQ(ofBytes("#!/bin/sh\necho"), "public.shell-script");
  EXPECT_EQ(ofBytes("#!/usr/bin/env python3\n"), "public.python-script");
  EXPECT_EQ(ofBytes("#!/opt/thing\n"), "public.script");
  EXPECT_EQ(ofBytes("#include <sh>\n"), "public.plain-text");
}

TEST(ContentType, OfTextMayCutACharacterAtTheEndOfWhatIsLookedAt) {
  EXPECT_EQ(ofBytes(std::string(kSignatureLength - 1, 'x') + "\xC3"), "public.plain-text");
  EXPECT_EQ(ofBytes(std::string(kSignatureLength - 2, 'x') + "\xC3"), "");
}

TEST(ContentType, ConformsToOthersStepByStep) {
  using Tree = std::vector<std::string_view>;
  EXPECT_EQ(tree("public.jpeg"),
            (Tree{"public.jpeg", "public.image", "public.data", "public.item", "public.content"}));
  EXPECT_EQ(tree("public.folder"), (Tree{"public.folder", "public.directory", "public.item"}));
  EXPECT_EQ(tree("public.python-script"),
            (Tree{"public.python-script", "public.shell-script", "public.script", "public.source-code",
                  "public.plain-text", "public.text", "public.data", "public.item", "public.content"}));
}

TEST(ContentType, OfTwoParentsComesBeforeAllThatItConformsTo) {
  using Tree = std::vector<std::string_view>;
  EXPECT_EQ(tree("public.svg-image"), (Tree{"public.svg-image", "public.image", "public.xml", "public.text",
                                            "public.data", "public.item", "public.content"}));
  EXPECT_EQ(tree("com.sun.java-archive"),
            (Tree{"com.sun.java-archive", "public.zip-archive", "com.pkware.zip-archive", "public.data",
                  "public.archive", "public.executable", "public.item"}));
}

const char* const kExtensions[] = {"txt", "html", "c",   "py",  "jpg", "png",  "heic", "mp3", "m4a",  "wav",
                                   "mov", "mp4",  "mkv", "pdf", "ps",  "docx", "odt",  "ttf", "dotm", "ppsx",
                                   "otg", "zip",  "dmg", "exe", "vcf", "ics",  "eml",  "svg", "epub", "jar"};

TEST(ContentType, StandsInATreeBeforeItsParents) {
  for (const char* const extension : kExtensions) {
    const auto all = contentTypeTree(*contentTypeOfName("a."s + extension, Node::File));
    for (auto type = all.begin(); type != all.end(); ++type) {
      EXPECT_EQ(std::count(all.begin(), all.end(), *type), 1) << extension << ": " << *type;
      std::istringstream parents{std::string(contentTypeNamed(*type)->conformsTo)};
      for (std::string parent; parents >> parent;) {
        EXPECT_GT(std::find(all.begin(), all.end(), parent), type) << extension << ": " << parent;
        EXPECT_NE(std::find(all.begin(), all.end(), parent), all.end()) << extension << ": " << parent;
      }
    }
  }
}

TEST(ContentType, ConformsToNothingThatIsUnknown) {
  for (const char* const extension : kExtensions) {
    const ContentType* const type = contentTypeOfName("a."s + extension, Node::File);
    ASSERT_TRUE(type) << extension;
    EXPECT_FALSE(type->kind.empty()) << extension;
    const auto all = contentTypeTree(*type);
    EXPECT_GE(all.size(), 3u) << extension;
    EXPECT_TRUE(std::find(all.begin(), all.end(), "public.item") != all.end()) << extension;
    // As many as are named on the way.
    for (const std::string_view identifier : all) {
      std::string_view rest = contentTypeNamed(identifier)->conformsTo;
      while (!rest.empty()) {
        const std::string_view parent = rest.substr(0, rest.find(' '));
        EXPECT_TRUE(contentTypeNamed(parent)) << identifier << " conforms to " << parent;
        rest.remove_prefix(std::min(parent.size() + 1, rest.size()));
      }
    }
  }
}

Text textOfName(std::string_view name) {
  return textOf(*contentTypeOfName(name, Node::File));
}

TEST(ContentType, SaysWhatReadsItsText) {
  using enum Text;
  constexpr std::pair<Text, std::string_view> kTexts[] = {
      {Pdf, "pdf"},
      {OpenXml, "docx docm dotx dotm xlsx xlsm xltx xltm pptx pptm ppsx ppsm potx potm"},
      {OpenDocument, "odt ott ods ots odp otp odg otg"},
      {Epub, "epub"},
      {Html, "html htm xhtml"},
      {Rtf, "rtf"},
      {Plain, "txt md log csv json yaml xml css c h cpp sh py pl js vcf ics svg"},
      {None, "jpg png mp3 mov ttf zip jar tar gz doc xls ppt ps ai eml plist exe dll dylib"},
  };
  for (const auto& [text, extensions] : kTexts) {
    std::istringstream words{std::string(extensions)};
    for (std::string word; words >> word;) EXPECT_EQ(textOfName("a." + word), text) << word;
  }
}

TEST(ContentType, ThatIsNotKnownHasTheTextThatItsFilesHold) {
  EXPECT_EQ(textOf(*contentTypeNamed("public.data")), Text::Plain);
  EXPECT_EQ(textOf(*contentTypeNamed("public.unix-executable")), Text::Plain);
  EXPECT_EQ(textOf(*contentTypeOfBytes("Read me.\n")), Text::Plain);
  EXPECT_EQ(textOf(*contentTypeOfBytes("#!/usr/bin/env python3\n")), Text::Plain);
  EXPECT_EQ(textOf(*contentTypeOfBytes("\x89PNG\r\n\x1A\n")), Text::None);
  EXPECT_EQ(textOf(*contentTypeOfBytes("%PDF-1.4\n")), Text::Pdf);
  EXPECT_EQ(textOf(*contentTypeOfBytes("{\\rtf1 x}")), Text::Rtf);
  EXPECT_EQ(textOf(*contentTypeOfBytes("<HTML>")), Text::Html);
}

TEST(ContentType, OfFoldersAndLinksHasNoText) {
  for (const char* const type : {"public.folder", "public.symlink", "com.apple.application-bundle"}) {
    EXPECT_EQ(textOf(*contentTypeNamed(type)), Text::None) << type;
  }
}

TEST(ContentType, OfAnOpenDocumentIsKnownByTheMimeTypeAtItsStart) {
  const auto named = [](std::string_view kind) {
    return ofBytes("PK\x03\x04" + std::string(26, 'x') + "mimetypeapplication/vnd.oasis.opendocument." +
                   std::string(kind) + "PK");
  };
  for (const char* const kind : {"text", "text-template", "spreadsheet", "spreadsheet-template",
                                 "presentation", "presentation-template", "graphics", "graphics-template"}) {
    EXPECT_EQ(named(kind), "org.oasis-open.opendocument."s + kind);
  }
}

TEST_F(ContentTypes, AreToldOfRealFiles) {
  const auto photo = make(scratch.file("photo.jpg", "no photo at all"));
  EXPECT_EQ(text(photo, kMDItemContentType), "public.jpeg");
  EXPECT_EQ(texts(photo, kMDItemContentTypeTree),
            (std::vector<std::string>{"public.jpeg", "public.image", "public.data", "public.item",
                                      "public.content"}));
  EXPECT_EQ(text(photo, kMDItemKind), "JPEG image");
  EXPECT_EQ(text(make(scratch.file("README", "Read me.\n")), kMDItemContentType), "public.plain-text");
  EXPECT_EQ(text(make(scratch.file("picture", "GIF89a")), kMDItemContentType), "com.compuserve.gif");
  EXPECT_EQ(text(make(scratch.file("empty")), kMDItemContentType), "public.data");
  EXPECT_EQ(text(make(scratch.file("x.nobodyknows", "\x01\x02")), kMDItemContentType), "public.data");
  EXPECT_EQ(text(make(scratch.file("x.nobodyknows", "\x01\x02")), kMDItemKind), "Document");
}

TEST_F(ContentTypes, OfProgramsFoldersAndLinksAreTheirOwn) {
  const std::string program = scratch.file("program", "\x01\x02");
  ASSERT_EQ(::chmod(program.c_str(), 0755), 0);
  EXPECT_EQ(text(make(program), kMDItemContentType), "public.unix-executable");
  EXPECT_EQ(text(make(scratch.folder("box.jpg")), kMDItemContentType), "public.folder");
  EXPECT_EQ(text(make(scratch.at("box.jpg")), kMDItemKind), "Folder");
  EXPECT_EQ(text(make(scratch.folder("Mail.app")), kMDItemContentType), "com.apple.application-bundle");
  EXPECT_EQ(text(make(scratch.link("link.jpg", "/nowhere")), kMDItemContentType), "public.symlink");
  ASSERT_EQ(::mkfifo(scratch.at("pipe.jpg").c_str(), 0600), 0);
  EXPECT_FALSE(get(make(scratch.at("pipe.jpg")), kMDItemContentType));
}

TEST_F(ContentTypes, OfFilesThatMayNotBeReadAreTheBestThatTheNameTells) {
  const std::string path = scratch.file("secret", "%PDF-1.4");
  ASSERT_EQ(::chmod(path.c_str(), 0), 0);
  const bool mayRead = ::access(path.c_str(), R_OK) == 0;  // as root
  EXPECT_EQ(text(make(path), kMDItemContentType), mayRead ? "com.adobe.pdf" : "public.data");
}

}  // namespace
