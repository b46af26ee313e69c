// disk/: folders and files as they lie on the disk: how paths relate, where a file is, the walk through
// folders, and the watch over them. Of the attributes of files it knows nothing, and it includes no other
// room, only paths.h and long_paths.h of standin/system.
//
// Here: how paths relate to one another, and to what is on the disk. Paths are absolute, in bytes, without a
// slash at the end (except "/"), unless said otherwise.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace standin::metadata {

// The path of an entry of the folder.
std::string pathIn(const std::string& folder, std::string_view name);

// Whether it is the folder, or below it.
bool liesIn(std::string_view path, std::string_view folder);

// The real path of what is there; of what isn't, that of its folder with the name. A relative path is
// answered as it is.
std::string intendedPath(const std::string& path);

// The real paths of the folders, each once. Those that aren't there, or are relative, are left out and
// counted.
std::vector<std::string> realFolders(const std::vector<std::string>& folders, size_t& missing);

// Those of the folders that lie in others of them.
std::vector<std::string> foldersInOthers(const std::vector<std::string>& folders);

}  // namespace standin::metadata
