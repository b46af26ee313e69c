// What programs do to files, at random: each time something to one of the files and folders in the scratch
// folder's "in" and, less often, in its "out". Both folders must be there.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "tests/support/scratch_folder.h"

class RandomOperations {
 public:
  RandomOperations(const ScratchFolder& scratch, unsigned seed) : scratch_(scratch), random_(seed) {}

  size_t upTo(size_t end) { return random_() % end; }

  void doOne() {
    switch (upTo(12)) {
      case 0:
      case 1:
        return makeFile();
      case 2:
        return void(
            std::filesystem::create_directories(newPath() + "/" + newName() + "/" + newName(), ignored_));
      case 3:
        return void(std::filesystem::create_directory(newPath(), ignored_));
      case 4:
        return std::ofstream(somePath(), std::ios::app) << "more", void();
      case 5:
      case 6:
      case 7:
        return rename();
      case 8:
        return exchange();
      case 9:
        return void(std::filesystem::remove(somePath(), ignored_));
      case 10:
        if (upTo(3) == 0) std::filesystem::remove_all(somePath(), ignored_);
        return;
      default:
        return void(::chmod(somePath().c_str(), 0700));
    }
  }

 private:
  std::string newName() { return std::string(1, static_cast<char>('a' + upTo(6))); }

  std::string someRoot() { return scratch_.at(upTo(6) == 0 ? "out" : "in"); }

  // Goes down from a root, at each folder stopping or going on with one of its entries.
  std::string somePath(bool onlyFolders = false) {
    std::string path = someRoot();
    for (bool atRoot = true; atRoot || upTo(4) != 0; atRoot = false) {
      std::vector<std::string> below;
      for (const std::filesystem::directory_entry& entry :
           std::filesystem::directory_iterator(path, ignored_)) {
        if (!onlyFolders || entry.is_directory()) below.push_back(entry.path().string());
      }
      std::sort(below.begin(), below.end());  // the same operations on every file system
      if (below.empty() || (onlyFolders && atRoot && upTo(4) == 0))
        return atRoot && !onlyFolders ? path + "/none" : path;
      path = below[upTo(below.size())];
    }
    return path;
  }
  std::string newPath() { return somePath(true) + "/" + newName(); }
  void makeFile() { std::ofstream stream(newPath(), std::ios::app); }
  void rename() {
    const std::string from = somePath();
    std::rename(from.c_str(), newPath().c_str());
  }
  void exchange() {
    constexpr unsigned kExchange = 2;
    const std::string left = somePath();
    const std::string right = somePath();
    ::syscall(SYS_renameat2, AT_FDCWD, left.c_str(), AT_FDCWD, right.c_str(), kExchange);
  }

  const ScratchFolder& scratch_;
  std::mt19937 random_;
  std::error_code ignored_;
};
