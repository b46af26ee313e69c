#include "bench/media_files.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

namespace bench {
namespace {

namespace fs = std::filesystem;

constexpr int kWords = 400;  // of a document: about a page

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

}  // namespace

std::string media(int number, std::string& content) {
  static const auto photos = filesOf("Photos", {".jpg"});
  static const auto songs = filesOf("Music", {".mp3", ".flac", ".ogg", ".m4a"});
  const int kind = number % 10, which = number / 10;
  if (kind < 5) return copied(photos, which, content);
  return kind < 7 ? copied(songs, which, content) : document(3 * which + kind - 7, content);
}

}  // namespace bench
