// A folder of a test's own, gone when the test is over, and what tests put into it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class ScratchFolder {
 public:
  ScratchFolder();                                    // in the temporary folder
  explicit ScratchFolder(const std::string& parent);  // in that one
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string at(std::string_view name) const { return path_ + '/' + std::string(name); }

  // Each makes what is named, with the folders above it, and answers its path.
  std::string file(std::string_view name, std::string_view content = "") const;
  std::string folder(std::string_view name) const;
  std::string link(std::string_view name, const std::string& target) const;

  // A folder whose path is longer than the system takes in one call (PATH_MAX), with empty files in it.
  std::string longFolder(const std::vector<std::string>& files) const;

  // Paths without the part that they share with this folder.
  std::vector<std::string> within(std::vector<std::string> paths) const;

 private:
  std::string path_;
};
