// Lets exceptions pass through the functions of a loaded image.
#pragma once

#include <cstdint>
#include <memory>

#include "macho/format/bytes.h"

namespace macho {

// A translated copy of an image's __eh_frame, known to this process's unwinder for as long as the object
// lives.
class Frames {
 public:
  // `frames` is the section where the image lies in memory; `image` is that whole memory, in which every
  // address must stay. Throws FormatError.
  Frames(Bytes frames, Bytes image);
  ~Frames();
  Frames(const Frames&) = delete;
  Frames& operator=(const Frames&) = delete;

 private:
  std::unique_ptr<uint32_t[]> copy_;
};

}  // namespace macho
