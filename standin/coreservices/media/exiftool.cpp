#include "standin/coreservices/media/exiftool.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "standin/coreservices/media/media_table.h"
#include "standin/coreservices/readers/child_process.h"

namespace standin::metadata {
namespace {

// exiftool unpacks some parts of documents whole, however large they get.
constexpr size_t kMostMemory = size_t{1} << 30;

constexpr char kReadTags[] =
#include "read_tags.inc"  // read_tags.pl as a literal, made by CMake
    ;

// Links followed: the library lies beside the program itself.
std::string realProgram(const std::string& name) {
  const std::optional<std::string> found = findProgram(name);
  std::error_code error;
  const std::filesystem::path path = found ? std::filesystem::canonical(*found, error) : "";
  return error ? *found : path.string();
}

bool isList(const MediaRow& row) {
  return row.convert == convert::texts || row.convert == convert::words ||
         row.convert == convert::keywordsInSubject;
}

std::vector<std::string> arguments() {
  std::set<std::string> wanted;
  for (const MediaRow& row : mediaTable()) {
    for (const std::string_view tag : row.tags) {
      if (!tag.empty()) wanted.insert(std::string(tag) + (isList(row) ? "+" : ""));
    }
  }
  wanted.insert(std::begin(kFurtherTags), std::end(kFurtherTags));
  std::vector<std::string> all = {"-e", kReadTags, "--", realProgram("exiftool")};
  all.insert(all.end(), wanted.begin(), wanted.end());
  return all;
}

}  // namespace

ReaderPool::Options exiftoolReader(size_t processes) {
  ReaderPool::Options options;
  options.name = "exiftool";
  options.program = "perl";
  options.package = "libimage-exiftool-perl";
  options.processes = processes;
  options.mostMemory = kMostMemory;
  options.arguments = arguments;
  return options;
}

}  // namespace standin::metadata
