// What queries for the content of photos, songs and documents cost, the first time and later, each beside
// what people would type instead: exiftool over all the files, with as many processes as there are
// processors, and find. Usage: bench-media [FILES]; 2,000 unless said otherwise.
#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "bench/processes.h"
#include "bench/tree.h"

namespace {

using Command = std::vector<std::string>;
namespace fs = std::filesystem;

constexpr int kFirstRounds = 3, kLaterRounds = 25;
constexpr int kWords = 400;  // of a document: about a page

// Files

// Photos and songs with true metadata, as they are.
std::vector<fs::path> filesOf(const char* folder, std::initializer_list<std::string> extensions) {
  std::vector<fs::path> found;
  for (const auto& entry : fs::recursive_directory_iterator(fs::path(LIBRARY) / folder)) {
    if (std::ranges::find(extensions, entry.path().extension().string()) != extensions.end())
      found.push_back(entry.path());
  }
  std::ranges::sort(found);
  return found;
}

std::string copied(const std::vector<fs::path>& files, int number, std::string& content) {
  const fs::path& file = files[static_cast<size_t>(number) % files.size()];
  std::ifstream stream(file, std::ios::binary);
  content.assign(std::istreambuf_iterator<char>(stream), {});
  return file.extension().string().substr(1);
}

std::string words(int number) {
  static const char* const kVocabulary[] = {"water",  "boat",  "wind", "the",   "of",     "and",    "a",
                                            "anchor", "rope",  "tide", "storm", "crew",   "deck",   "light",
                                            "north",  "chart", "sail", "coast", "island", "Captain"};
  std::minstd_rand random(static_cast<unsigned>(number) + 1);
  std::string text;
  for (int i = 0; i < kWords; ++i) text += std::string(kVocabulary[random() % std::size(kVocabulary)]) + ' ';
  return number % 20 == 0 ? text + "harbour" : text;
}

std::string pdf(const std::string& text) {
  constexpr size_t kLine = 80;
  std::string page = "BT /F1 10 Tf 40 800 Td 12 TL";
  for (size_t i = 0; i < text.size(); i += kLine) page += " (" + text.substr(i, kLine) + ") Tj T*";
  page += " ET";
  const std::string objects[] = {
      "<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [4 0 R] /Count 1 >>",
      "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 5 0 R /Resources << /Font << /F1 3 0 R "
      ">> "
      ">> >>",
      "<< /Length " + std::to_string(page.size()) + " >>\nstream\n" + page + "\nendstream"};
  std::string file = "%PDF-1.4\n", table = "xref\n0 6\n0000000000 65535 f \n";
  for (size_t i = 0; i < std::size(objects); ++i) {
    char row[32];
    std::snprintf(row, sizeof row, "%010zu 00000 n \n", file.size());
    table += row;
    file += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
  }
  const std::string start = std::to_string(file.size());
  return file + table + "trailer << /Size 6 /Root 1 0 R >>\nstartxref\n" + start + "\n%%EOF\n";
}

// Most are PDF files, as among the documents that people keep.
std::string document(int number, std::string& content) {
  static const auto office = filesOf("Documents", {".odt", ".docx"});
  switch (number % 10) {
    case 6:
    case 7:
      return copied(office, number / 5, content);
    case 8:
      content = "<html><head><title>Page</title></head><body><p>" + words(number) + "</p></body></html>";
      return "html";
    case 9:
      content = "{\\rtf1\\ansi " + words(number) + "}";
      return "rtf";
    default:
      content = pdf(words(number));
      return "pdf";
  }
}

// Of ten files five are photos, two songs, and three documents.
std::string media(int number, std::string& content) {
  static const auto photos = filesOf("Photos", {".jpg"});
  static const auto songs = filesOf("Music", {".mp3", ".flac", ".ogg", ".m4a"});
  const int kind = number % 10, which = number / 10;
  if (kind < 5) return copied(photos, which, content);
  return kind < 7 ? copied(songs, which, content) : document(3 * which + kind - 7, content);
}

// Commands

Command shell(const std::string& script, const std::string& folder, const std::string& more = "") {
  return {"sh", "-c", script, "sh", folder, more};
}

bench::Usage runOrEnd(const Command& command) {
  const bench::Usage usage = bench::run(command);
  if (usage.status == 0) return usage;
  std::fprintf(stderr, "bench-media: %s failed: %s\n", command.front().c_str(), usage.errors.c_str());
  std::exit(1);
}

double median(std::vector<double> numbers) {
  std::ranges::sort(numbers);
  return numbers[numbers.size() / 2];
}

struct Measured {
  double ours, theirs;  // seconds, the median of the rounds
};

// Pairs the commands in each round.
Measured compare(const char* what, const Command& ours, const Command& theirs, const char* name, int rounds,
                 const Command& before) {
  std::vector<double> own, others, ratios, processor;
  for (int round = 0; round < rounds; ++round) {
    if (!before.empty()) runOrEnd(before);
    const bench::Usage mine = runOrEnd(ours);
    const bench::Usage other = runOrEnd(theirs);
    own.push_back(mine.elapsed);
    others.push_back(other.elapsed);
    ratios.push_back(mine.elapsed / other.elapsed);
    processor.push_back(mine.seconds / other.seconds);
  }
  std::printf("%-26s %8.4f s %8.4f s %6.2f times %-9s %6.2f in processor time\n", what, median(own),
              median(others), median(ratios), name, median(processor));
  std::fflush(stdout);
  return {median(own), median(others)};
}

void compareQuery(const char* what, const char* query, const std::string& folder, int files) {
  const Command ours = {SHOTLIGHT, "find", query, "--count", "--in", folder};
  const unsigned processors = std::max(1U, std::thread::hardware_concurrency());
  const std::string share = std::to_string((static_cast<unsigned>(files) + processors - 1) / processors);
  const Command exiftool = shell("find \"$1\" -type f -print0 | xargs -0 -P " + std::to_string(processors) +
                                     " -n \"$2\" exiftool -q -j -fast",
                                 folder, share);
  const Command find = {"find", folder, "-printf", "%s %T@ %p\\n"};
  const Measured first = compare((std::string(what) + ", first").c_str(), ours, exiftool, "exiftool",
                                 kFirstRounds, {SHOTLIGHT, "store", "--clear"});
  const Measured later =
      compare((std::string(what) + ", later").c_str(), ours, find, "find", kLaterRounds, {});
  std::printf("%-26s %8.0f times faster than the first\n", "", first.ours / later.ours);
}

}  // namespace

int main(int argc, char** argv) {
  const int files = bench::countFrom("bench-media", argc, argv, 2000);
  const bench::Tree tree("bench-media", files, media);
  const bench::Tree cache("bench-media", 1);
  ::setenv("XDG_CACHE_HOME", cache.path().c_str(), 1);
  std::printf("%d photos, songs and documents; the median of %d rounds first, %d later; of wall time\n",
              files, kFirstRounds, kLaterRounds);
  compareQuery("ISO speed", "kMDItemISOSpeed > 100", tree.path(), files);
  compareQuery("text", "kMDItemTextContent == \"harbour\"c", tree.path(), files);
}
