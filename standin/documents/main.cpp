// document-text: reads the text of documents for another program, on its standard input and output.
//
//   ready\n                     once, from here
//   FORMAT PATH\0               a question; as many as one likes may be sent ahead
//   ok LENGTH\n TEXT            the answer: LENGTH bytes of UTF-8
//   part LENGTH\n TEXT          the same, where the document has more text than that
//   error LENGTH\n MESSAGE      or this, for people, without the path: "is encrypted"
//   unreadable LENGTH\n MESSAGE or this, where it isn't the document's fault: "can't be read: Permission
//   denied"
//
// Answers come in the order of the questions, and end with the input. Who asks should wait no longer than ten
// seconds for an answer: what this program's own limits (limits.h) don't stop is best killed.
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>

#include "standin/documents/file.h"
#include "standin/documents/formats.h"
#include "standin/documents/questions.h"

namespace standin::documents {
namespace {

struct Format {
  std::string_view name;
  void (*read)(int file, const Deadline& deadline, Text& text);
  std::chrono::seconds time = kLongestTime;
};

constexpr Format kFormats[] = {
    {"pdf", readPdf, kLongestTimeOfPdftotext},
    {"opendocument", readOpenDocument},
    {"openxml", readOpenXml},
    {"epub", readEpub},
    {"html", readHtml},
    {"rtf", readRtf},
};

const Format& formatNamed(std::string_view name) {
  std::string names;
  for (const Format& format : kFormats) {
    if (format.name == name) return format;
    names += (names.empty() ? "" : ", ") + std::string(format.name);
  }
  throw DocumentError("is of a format that isn't known; there are " + names);
}

std::string answer(std::string_view status, std::string_view bytes) {
  return std::string(status) + ' ' + std::to_string(bytes.size()) + '\n' + std::string(bytes);
}

std::string answerTo(const Question& question) {
  try {
    const Format& format = formatNamed(question.format);
    const Deadline deadline(format.time);
    const DocumentFile file(question.path);
    Text text;
    format.read(file.descriptor(), deadline, text);
    return answer(text.isFull() ? "part" : "ok", text.utf8());
  } catch (const UnreadableError& error) {
    return answer("unreadable", error.what());
  } catch (const DocumentError& error) {
    return answer("error", error.what());
  } catch (const std::bad_alloc&) {  // here, or in the whole system
    return answer("unreadable",
                  "takes more than " + std::to_string(kMostMemory / kMegabyte) + " MB of memory to read");
  }
}

// The sanitizers need far more address space than they use.
void limitMemory() {
#ifndef ADDRESS_SANITIZER
  rlimit limit{};
  ::getrlimit(RLIMIT_AS, &limit);
  limit.rlim_cur = std::min<rlim_t>(kMostMemory, limit.rlim_max);
  ::setrlimit(RLIMIT_AS, &limit);
#endif
}

int run() {
  std::setlocale(LC_CTYPE, "C.UTF-8");  // for libarchive, which gives names in the locale's encoding
  limitMemory();
  if (!writeAll(STDOUT_FILENO, "ready\n")) return 1;
  QuestionReader questions(STDIN_FILENO);
  while (const auto question = questions.next()) {
    if (!writeAll(STDOUT_FILENO, answerTo(*question))) return 1;
  }
  return 0;
}

}  // namespace
}  // namespace standin::documents

int main() {
  try {
    return standin::documents::run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "document-text: %s\n", error.what());
    return 1;
  }
}
