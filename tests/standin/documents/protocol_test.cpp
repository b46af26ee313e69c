// Questions and answers, whatever the documents say.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <string>

#include "tests/standin/documents/document_worker.h"

namespace {

using namespace std::string_literals;
using Documents = DocumentTest;

TEST_F(Documents, AreAnsweredInTheOrderOfTheQuestions) {
  std::string questions;
  constexpr int kCount = 300;
  for (int i = 0; i < kCount; ++i) {
    const std::string number = std::to_string(i);
    questions += "html " + scratch.file(number, i % 3 ? "<p>page " + number : "") + '\0';
  }
  worker.send(questions);
  worker.closeInput();
  for (int i = 0; i < kCount; ++i) EXPECT_EQ(worker.receive(), ok(i % 3 ? "page " + std::to_string(i) : ""));
  EXPECT_EQ(worker.rest(), "");
  EXPECT_EQ(worker.wait(), 0);
}

TEST_F(Documents, MayBeAskedForInPieces) {
  const std::string question = "html " + scratch.file("page", "text") + '\0';
  for (const char byte : question) worker.send(std::string(1, byte));
  EXPECT_EQ(worker.receive(), ok("text"));
}

TEST_F(Documents, MayHaveAnyBytesInTheirPaths) {
  std::string name;
  for (int byte = 1; byte < 256; ++byte) {
    if (byte != '/' && byte != 'x') name += static_cast<char>(byte);
  }
  for (const std::string& part : {name.substr(0, 200), name.substr(200), " blank"s, "new\nline"s, "*"s}) {
    EXPECT_EQ(worker.ask("html", scratch.file(part, "found")), ok("found"));
  }
}

TEST_F(Documents, HaveTextWhateverItsLength) {
  std::string page;
  std::string text;
  for (int i = 0; i < 200000; ++i) {
    page += "<p>w\xC3\xB6rd" + std::to_string(i);
    text += (i ? " w\xC3\xB6rd" : "w\xC3\xB6rd") + std::to_string(i);
  }
  EXPECT_EQ(read("html", page), ok(text));
}

TEST_F(Documents, ThatAreTooLongForOneTextCountByTheirStart) {
  constexpr size_t kLongestText = 16 << 20;
  const std::string page(kLongestText + 100, 'x');
  const Answer start{"part", page.substr(0, kLongestText)};
  EXPECT_EQ(read("html", page), start);
  EXPECT_EQ(read("rtf", "{\\rtf1 " + page + "}"), start);
  EXPECT_EQ(read("html", start.text), ok(start.text));
  EXPECT_EQ(read("html", "next"), ok("next"));
}

TEST_F(Documents, OfUnknownFormatAreErrors) {
  const Answer answer =
      error("is of a format that isn't known; there are pdf, opendocument, openxml, epub, html, rtf");
  EXPECT_EQ(read("doc", "x"), answer);
  EXPECT_EQ(read("", "x"), answer);
  worker.send("html\0"s);  // without a path
  EXPECT_EQ(worker.receive(), error("isn't named by an absolute path"));
  worker.send("\0"s);
  EXPECT_EQ(worker.receive(), answer);
  EXPECT_EQ(read("html", "next"), ok("next"));
}

TEST_F(Documents, ThatAreNoRegularFilesAreNotOpened) {
  ASSERT_EQ(::mkfifo(scratch.at("pipe").c_str(), 0600), 0);
  scratch.link("link", scratch.file("page", "text"));
  for (const char* const format : {"pdf", "opendocument", "openxml", "epub", "html", "rtf"}) {
    const Answer answer = error("is no regular file");
    EXPECT_EQ(worker.ask(format, scratch.at("pipe")), answer);
    EXPECT_EQ(worker.ask(format, scratch.at("link")), answer);
    EXPECT_EQ(worker.ask(format, scratch.path()), answer);
    EXPECT_EQ(worker.ask(format, "/dev/zero"), answer);
    EXPECT_EQ(worker.ask(format, scratch.at("none")), unreadable("can't be read: No such file or directory"));
    EXPECT_EQ(worker.ask(format, "page"), error("isn't named by an absolute path"));
    EXPECT_EQ(worker.ask(format, "/" + std::string(5000, 'x')),
              unreadable("can't be read: File name too long"));
  }
}

// Of a file whose path is too long for the system, somebody has a descriptor.
TEST_F(Documents, AreReadThroughDescriptors) {
  const std::string path = scratch.file("page", "text");
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  const std::string shown = "/proc/" + std::to_string(::getpid()) + "/fd/";
  EXPECT_EQ(worker.ask("html", shown + std::to_string(file)), ok("text"));
  ::close(file);
  EXPECT_EQ(worker.ask("html", shown + "999999"), unreadable("can't be read: No such file or directory"));
}

TEST_F(Documents, ThatAreEmptyAreNoDocumentsButPages) {
  EXPECT_EQ(read("html", ""), ok(""));
  for (const char* const format : {"pdf", "opendocument", "openxml", "epub", "rtf"}) {
    EXPECT_EQ(read(format, "").status, "error") << format;
  }
}

TEST_F(Documents, ThatAreTooLargeAreNotRead) {
  const std::string path = scratch.file("large", "{\\rtf1 x}");
  ASSERT_EQ(::truncate(path.c_str(), (off_t{1} << 30) + 1), 0);
  for (const char* const format : {"pdf", "opendocument", "openxml", "epub", "html", "rtf"}) {
    EXPECT_EQ(worker.ask(format, path), error("is larger than 1024 MB"));
  }
  ASSERT_EQ(::truncate(path.c_str(), (64 << 20) + 1), 0);
  EXPECT_EQ(worker.ask("html", path), error("is larger than 64 MB"));
}

TEST_F(Documents, KeepTheTimeOfTheLastAccess) {
  const std::string pdf = scratch.file("a.pdf", "%PDF-1.4\n");
  const std::string page = scratch.file("a.html", "text");
  for (const std::string& path : {pdf, page}) {
    const timeval times[] = {{1000000000, 0}, {1100000000, 0}};  // a reading would be noted
    ASSERT_EQ(::utimes(path.c_str(), times), 0);
    worker.ask(path == pdf ? "pdf" : "html", path);
    struct stat info;
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_atime, 1000000000);
  }
}

TEST_F(Documents, EndInTheMiddleOfAQuestion) {
  worker.send("html " + scratch.file("page", "text") + '\0' + "html /tm");
  worker.closeInput();
  EXPECT_EQ(worker.receive(), ok("text"));
  EXPECT_EQ(worker.rest(), "");
  EXPECT_EQ(worker.wait(), 1);
}

TEST_F(Documents, EndWithAQuestionThatDoesNot) {
  worker.send(std::string(1 << 20, 'x'));
  EXPECT_EQ(worker.rest(), "");
  EXPECT_EQ(worker.wait(), 1);
}

}  // namespace
