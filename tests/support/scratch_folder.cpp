#include "tests/support/scratch_folder.h"

#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

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

std::string ScratchFolder::longFolder(const std::vector<std::string>& files) const {
  const std::string name(200, 'd');
  std::string path = path_;
  int folder = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  while (folder >= 0 && path.size() <= PATH_MAX) {
    ::mkdirat(folder, name.c_str(), 0700);
    const int next = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ::close(folder);
    folder = next;
    path += '/' + name;
  }
  for (const std::string& file : files)
    ::close(::openat(folder, file.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
  if (folder < 0) throw std::runtime_error("can't make " + path);
  ::close(folder);
  return path;
}

std::vector<std::string> ScratchFolder::within(std::vector<std::string> paths) const {
  for (std::string& path : paths) {
    if (path.starts_with(path_ + '/')) path.erase(0, path_.size() + 1);
  }
  return paths;
}
