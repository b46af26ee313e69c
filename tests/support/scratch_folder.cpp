#include "tests/support/scratch_folder.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() : ScratchFolder(fs::temp_directory_path()) {}

ScratchFolder::ScratchFolder(const std::string& parent) {
  std::string path = (fs::canonical(parent) / "scratch-XXXXXX").string();
  if (!::mkdtemp(path.data())) throw std::runtime_error(path + ": can't be made; check the temporary folder");
  path_ = path;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string ScratchFolder::file(std::string_view name, std::string_view content) const {
  fs::create_directories(fs::path(at(name)).parent_path());
  std::ofstream stream(at(name), std::ios::binary);
  if (!(stream << content).flush()) throw std::runtime_error("can't write " + at(name));
  return at(name);
}

std::string ScratchFolder::folder(std::string_view name) const {
  fs::create_directories(at(name));
  return at(name);
}

std::string ScratchFolder::link(std::string_view name, const std::string& target) const {
  fs::create_symlink(target, at(name));
  return at(name);
}

std::vector<std::string> ScratchFolder::within(std::vector<std::string> paths) const {
  for (std::string& path : paths) {
    if (path.starts_with(path_ + '/')) path.erase(0, path_.size() + 1);
  }
  return paths;
}
