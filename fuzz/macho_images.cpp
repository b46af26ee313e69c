// Dylibs: read, checked, mapped and bound, up to where something of them would run.
//
// The input is a file from which the zeros that fill up pages were taken: fuzz/pages.h puts them back.
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "fuzz/pages.h"
#include "macho/loader/loader.h"

namespace {

// All that an image imports is taken to be here, but for names of one letter.
void anything() {}

macho::LoadOptions makeOptions() {
  macho::LoadOptions options;
  options.lookup = [](const std::string& name) {
    return name.size() > 1 ? reinterpret_cast<void*>(&anything) : nullptr;
  };
  return options;
}

// An exception looks through the frames of all images.
void throwPast() {
  try {
    throw 1;
  } catch (int) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const macho::LoadOptions kOptions = makeOptions();
  const std::vector<uint8_t> file = fuzz::withPages({data, size});
  try {
    const macho::Image image = macho::loadContents("fuzzed.dylib", file, kOptions);
    for (const char* const name : {"_entry", "_a", ""}) image.symbol(name);
    image.version();
    throwPast();
  } catch (const macho::LoadError&) {
  }
  return 0;
}
