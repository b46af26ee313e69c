// A folder of files for the time of a test.
#pragma once

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "standin/coreservices/metadata/control.h"

class TempTree {
 public:
  TempTree() {
    std::string name = (std::filesystem::temp_directory_path() / "plugin-test-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error(name + ": can't be made");
    root_ = std::filesystem::canonical(name);
  }
  ~TempTree() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }
  TempTree(const TempTree&) = delete;
  TempTree& operator=(const TempTree&) = delete;

  std::string path(const std::string& name = {}) const {
    return name.empty() ? root_.string() : (root_ / name).string();
  }

  // A file of `size` bytes, with the folders that lead to it.
  void add(const std::string& name, size_t size = 0) const {
    std::filesystem::create_directories((root_ / name).parent_path());
    std::ofstream(root_ / name, std::ios::binary) << std::string(size, 'x');
  }

  // Makes this the one folder that queries look in.
  void index() const { standin::setIndexedFolders({path()}); }

 private:
  std::filesystem::path root_;
};
