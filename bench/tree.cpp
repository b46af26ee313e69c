#include "bench/tree.h"

#include <malloc.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace bench {
namespace {

namespace fs = std::filesystem;

constexpr int kFilesPerFolder = 100;

// Up to 39 bytes of text.
std::string smallText(int number, std::string& content) {
  content.assign("any text, but not more than that of it", static_cast<size_t>(number % 39));
  return "txt";
}

void makeFiles(const char* program, const std::string& root, int files, const MakeContent& make) {
  for (int i = 0; i < files; ++i) {
    char folder[64];
    std::snprintf(folder, sizeof folder, "/group-%03d/folder-%05d", i / kFilesPerFolder / 50,
                  i / kFilesPerFolder);
    if (i % kFilesPerFolder == 0) fs::create_directories(root + folder);
    char name[64];
    std::snprintf(name, sizeof name, "/a file named %06d.", i);
    std::string content;
    const std::string extension = make(i, content);
    const std::string path = root + folder + name + extension;
    std::ofstream file(path, std::ios::binary);
    if (!(file << content).flush()) {
      std::fprintf(stderr, "%s: can't write %s\n", program, path.c_str());
      std::exit(1);
    }
  }
}

}  // namespace

Tree::Tree(const char* program, int files) : Tree(program, files, smallText) {}

Tree::Tree(const char* program, int files, const MakeContent& make) {
  path_ = (fs::canonical(fs::temp_directory_path()) / "bench-XXXXXX").string();
  if (!::mkdtemp(path_.data())) {
    std::fprintf(stderr, "%s: no temporary folder\n", program);
    std::exit(1);
  }
  makeFiles(program, path_, files, make);
}

Tree::~Tree() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

int countFrom(const char* program, int argc, char** argv, int usual) {
  const int count = argc > 1 ? std::atoi(argv[1]) : usual;
  if (count > 0) return count;
  std::fprintf(stderr, "%s: '%s' is no number above 0\n", program, argv[1]);
  std::exit(2);
}

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double best(const std::vector<double>& times) {
  return *std::min_element(times.begin(), times.end());
}

size_t heapInUse() {
  return ::mallinfo2().uordblks + ::mallinfo2().hblkhd;
}

}  // namespace bench
