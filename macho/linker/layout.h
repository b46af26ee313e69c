// Where everything lies in the dylib: sections of the objects, stubs, pointers.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "macho/linker/object.h"
#include "macho/linker/symbols.h"

namespace macho {

inline constexpr uint32_t kStubSize = 12;

struct OutputSection {
  std::string segment, name;
  uint32_t flags = 0, alignment = 1;
  uint32_t address = 0, size = 0;
  uint32_t reserved1 = 0, reserved2 = 0;
  struct Piece {
    uint32_t object, section;  // of the input
    uint32_t offset;           // in this section
  };
  std::vector<Piece> pieces;
  std::vector<uint8_t> bytes;  // empty for a zero-fill section

  bool zeroFill() const;
};

struct OutputSegment {
  uint32_t address = 0, memorySize = 0, fileSize = 0;  // the file offset equals the address
  std::vector<OutputSection> sections;
};

// The pointers that code goes through, one for each thing pointed to, and the stubs through which calls to
// imports go.
class Layout {
 public:
  // `headerSize(n)` is how many bytes precede the first section when there are n of them. Throws LinkError.
  template <typename HeaderSize>
  Layout(const std::vector<Object>& objects, const Symbols& symbols, HeaderSize headerSize)
      : objects_(objects), symbols_(symbols) {
    collectPointers();
    collectStubs();
    sortPointers();
    makeSections();
    assignAddresses(headerSize(text.sections.size() + data.sections.size()));
  }

  OutputSegment text, data;
  std::vector<Symbols::Target> pointers;  // what each word of __nl_symbol_ptr points to
  std::vector<uint32_t> stubs;            // the import of each stub

  uint32_t addressOf(const Location& location) const;
  uint32_t pointerAddress(const Symbols::Target& target) const;
  uint32_t stubAddress(uint32_t import) const;
  const OutputSection* find(const std::string& segment, const std::string& name) const;

 private:
  void collectPointers();
  void collectStubs();
  void sortPointers();
  void makeSections();
  void assignAddresses(uint32_t headerSize);
  OutputSection gather(const std::string& segment, const std::string& name, uint32_t flags);
  uint32_t addPointer(const Symbols::Target& target);

  const std::vector<Object>& objects_;
  const Symbols& symbols_;
  std::map<Symbols::Target, uint32_t> pointerIndex_;
  std::map<uint32_t, uint32_t> stubIndex_;
  std::map<std::pair<uint32_t, uint32_t>, uint32_t> addresses_;  // of each input section
};

inline uint32_t roundUp(uint32_t value, uint32_t alignment) {
  return (value + alignment - 1) / alignment * alignment;
}

}  // namespace macho
