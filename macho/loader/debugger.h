// Where a debugger learns of images: the system's loader tells it of ELF libraries only.
#pragma once

#include <cstdint>
#include <string>

namespace macho {

// Says that an image is there for as long as the object lives. macho/debugger/images.py listens.
class DebuggerNotice {
 public:
  // `slide` is how far the image lies from where its file has it.
  DebuggerNotice(const std::string& path, uint32_t slide);
  ~DebuggerNotice();
  DebuggerNotice(const DebuggerNotice&) = delete;
  DebuggerNotice& operator=(const DebuggerNotice&) = delete;

 private:
  std::string path_;
  uint32_t slide_;
};

}  // namespace macho
