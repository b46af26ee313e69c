#include "macho/format/files.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <system_error>

#include "macho/format/file_contents.h"

namespace macho {
namespace {

std::string reason() {
  return errno ? std::strerror(errno) : "unknown error";
}

}  // namespace

std::vector<uint8_t> readWholeFile(const std::string& path) {
  try {
    return fileContents(path);
  } catch (const std::system_error& error) {
    throw FileError(path,
                    "can't be read: " + error.code().message() + "; check the name and the permissions");
  }
}

void writeWholeFile(const std::string& path, const std::vector<uint8_t>& contents) {
  const std::string fresh = path + "." + std::to_string(getpid());
  errno = 0;
  std::ofstream stream(fresh, std::ios::binary);
  stream.write(reinterpret_cast<const char*>(contents.data()), static_cast<std::streamsize>(contents.size()));
  stream.close();
  if (stream && std::rename(fresh.c_str(), path.c_str()) == 0) return;
  const std::string why = reason();
  std::remove(fresh.c_str());
  throw FileError(path, "can't be written: " + why + "; check that the folder exists and has room");
}

}  // namespace macho
