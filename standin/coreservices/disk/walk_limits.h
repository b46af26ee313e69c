// What a search leaves out of the folders that it looks in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace standin {

struct WalkLimits {
  // What isn't looked at, and if it is a folder, nothing in it. Each is a shell's pattern: of a name, or,
  // where it has a slash, of a path below the folder that is searched; one that begins with a slash, of an
  // absolute path. In paths `*` and `?` stand for no slash, and `**` stands for any number of folders. One
  // that ends with a slash is for folders only. What a character is depends on the program's locale.
  std::vector<std::string> excluded = {};
  size_t depth = SIZE_MAX;     // 1: what is in the folder itself; 2: and in the folders in it
  bool oneFileSystem = false;  // what is mounted in the folder is found, and nothing in it
  bool hidden = true;          // also what has a name that begins with a dot, and is in such folders
};

}  // namespace standin
