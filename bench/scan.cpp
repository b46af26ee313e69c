// How long a query takes over a tree of files, and how much memory its results hold, beside `find` over the
// same tree printing size, time and path. Usage: bench-scan [FILES]; 100,000 unless said otherwise.
#include <CoreServices/CoreServices.h>
#include <fcntl.h>
#include <malloc.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "standin/coreservices/control.h"

namespace {

namespace fs = std::filesystem;

constexpr int kFilesPerFolder = 100;
constexpr int kRounds = 5;

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double best(std::vector<double> times) {
  return *std::min_element(times.begin(), times.end());
}

void makeTree(const std::string& root, int files) {
  for (int i = 0; i < files; ++i) {
    char folder[64];
    std::snprintf(folder, sizeof folder, "/group-%03d/folder-%05d", i / kFilesPerFolder / 50,
                  i / kFilesPerFolder);
    if (i % kFilesPerFolder == 0) fs::create_directories(root + folder);
    char name[64];
    std::snprintf(name, sizeof name, "/a file named %06d.txt", i);
    const std::string path = root + folder + name;
    const int fd = ::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
    if (fd < 0 || ::write(fd, path.data(), static_cast<size_t>(i % 40)) < 0) {
      std::fprintf(stderr, "bench-scan: can't write %s\n", path.c_str());
      std::exit(1);
    }
    ::close(fd);
  }
}

size_t heapInUse() {
  return ::mallinfo2().uordblks + ::mallinfo2().hblkhd;
}

MDQueryRef makeQuery() {
  return MDQueryCreate(kCFAllocatorDefault, CFSTR("kMDItemFSSize >= 0"), nullptr, nullptr);
}

void readResults(MDQueryRef query) {
  for (CFIndex i = 0; i < MDQueryGetResultCount(query); ++i) {
    const auto item = static_cast<MDItemRef>(const_cast<void*>(MDQueryGetResultAtIndex(query, i)));
    for (const CFStringRef key : {kMDItemFSName, kMDItemFSSize, kMDItemPath}) {
      const CFTypeRef value = MDItemCopyAttribute(item, key);
      if (!value) {
        std::fprintf(stderr, "bench-scan: result %ld has no value\n", i);
        std::exit(1);
      }
      CFRelease(value);
    }
  }
}

struct Measured {
  std::vector<double> find, query, read;
  CFIndex results = 0;
  size_t heapOfResults = 0, heapOfItems = 0;
};

void measureOnce(const std::string& root, Measured& measured) {
  const std::string find = "find '" + root + "' -printf '%s %T@ %p\\n' > /dev/null";
  measured.find.push_back(secondsOf([&] {
    if (std::system(find.c_str()) != 0) std::exit(1);
  }));
  const size_t before = heapInUse();
  const MDQueryRef query = makeQuery();
  measured.query.push_back(secondsOf([&] { MDQueryExecute(query, kMDQuerySynchronous); }));
  measured.results = MDQueryGetResultCount(query);
  const size_t gathered = heapInUse();
  measured.read.push_back(secondsOf([&] { readResults(query); }));
  measured.heapOfResults = gathered - before;
  measured.heapOfItems = heapInUse() - gathered;
  CFRelease(query);
}

}  // namespace

int main(int argc, char** argv) {
  const int files = argc > 1 ? std::atoi(argv[1]) : 100000;
  if (files <= 0) {
    std::fprintf(stderr, "bench-scan: FILES must be a number above 0\n");
    return 2;
  }
  std::string root = (fs::canonical(fs::temp_directory_path()) / "bench-scan-XXXXXX").string();
  if (!::mkdtemp(root.data())) {
    std::perror("bench-scan: no temporary folder");
    return 1;
  }
  makeTree(root, files);
  standin::setIndexedFolders({root});
  Measured measured;
  for (int round = 0; round < kRounds; ++round) measureOnce(root, measured);
  fs::remove_all(root);

  const double results = static_cast<double>(measured.results);
  std::printf("%ld results of %d files; best of %d rounds\n", measured.results, files, kRounds);
  std::printf("find                    %7.3f s\n", best(measured.find));
  std::printf("query                   %7.3f s  %.2f times find\n", best(measured.query),
              best(measured.query) / best(measured.find));
  std::printf("name, size, path of all %7.3f s\n", best(measured.read));
  std::printf("query and reading       %7.3f s  %.2f times find\n",
              best(measured.query) + best(measured.read),
              (best(measured.query) + best(measured.read)) / best(measured.find));
  std::printf("memory of a result      %7.1f bytes\n", static_cast<double>(measured.heapOfResults) / results);
  std::printf("memory of its item      %7.1f bytes more, once it was looked at\n",
              static_cast<double>(measured.heapOfItems) / results);
  return measured.results == files ? 0 : 1;
}
