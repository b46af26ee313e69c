#include "macho/linker/files.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>

#include "macho/linker/error.h"

namespace macho {
namespace {

std::string reason() {
  return errno ? std::strerror(errno) : "unknown error";
}

}  // namespace

std::vector<uint8_t> readWholeFile(const std::string& path) {
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  std::vector<uint8_t> contents;
  if (stream) contents.assign(std::istreambuf_iterator<char>(stream), {});
  // A folder opens well and reads badly.
  if (!stream || errno == EISDIR) {
    throw LinkError(path, "can't be read: " + reason() + "; check the name and the permissions");
  }
  return contents;
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
  throw LinkError(path, "can't be written: " + why + "; check that the folder exists and has room");
}

}  // namespace macho
