#include "macho/loader/loader.h"

#include <cstring>
#include <optional>
#include <system_error>
#include <vector>

#include "macho/format/file_contents.h"
#include "macho/loader/binder.h"
#include "macho/loader/debugger.h"
#include "macho/loader/export_trie.h"
#include "macho/loader/file.h"
#include "macho/loader/fixups.h"
#include "macho/loader/frames.h"
#include "macho/loader/mapping.h"

namespace macho {
namespace {

// Read, not mapped: the file may be rebuilt while its image is in use.
std::vector<uint8_t> readFile(const std::string& path) {
  try {
    return fileContents(path);
  } catch (const std::system_error& error) {
    throw LoadError(path + ": can't be read: " + error.code().message() + "; name a Mach-O dylib for i386");
  }
}

// The image while it is put together: everything still writable.
class Assembly {
 public:
  Assembly(Bytes file, const DylibFile& dylib, Mapping& mapping)
      : file_(file), dylib_(dylib), mapping_(mapping) {}

  void copySegments() {
    for (const SegmentCommand& segment : dylib_.segments) {
      const Bytes contents = file_.slice(segment.fileOffset, segment.fileSize);
      if (contents.size()) std::memcpy(at(segment), contents.data(), contents.size());
    }
  }

  uint32_t slide() const { return reinterpret_cast<uintptr_t>(mapping_.base()) - dylib_.memory.address; }

  void rebaseAll() {
    readRebases(dylib_.rebases, mostFixups(), [&](FixupPlace place) {
      uint8_t* word = writableWord(place);
      uint32_t address;
      std::memcpy(&address, word, sizeof address);
      address += slide();
      std::memcpy(word, &address, sizeof address);
    });
  }

  void bindAll(const LoadOptions& options) {
    Binder binder(dylib_, mapping_.base(), options);
    bool canCatch = false;
    const auto visit = [&](const Bind& bind) {
      canCatch |= bind.symbol == "___gxx_personality_v0";
      uint8_t* word = writableWord(bind.place);
      const auto symbol = reinterpret_cast<uintptr_t>(binder.address(bind));
      uint32_t address = symbol ? symbol + bind.addend : 0;
      if (bind.place.kind == FixupKind::kTextRelative)
        address -= reinterpret_cast<uintptr_t>(word + sizeof address);
      std::memcpy(word, &address, sizeof address);
    };
    readBinds(dylib_.binds, BindStream::kOrdinary, mostFixups(), visit);
    readBinds(dylib_.lazyBinds, BindStream::kLazy, mostFixups(), visit);
    requireBoundStubs();
    // An exception that finds no frames ends the process.
    if (canCatch && !dylib_.frames) {
      throw FormatError("malformed: its functions catch exceptions, but it has no __eh_frame");
    }
  }

  void protect() {
    for (const SegmentCommand& segment : dylib_.segments) {
      if (segment.memorySize == 0) continue;
      const uint32_t pages = (segment.memorySize + kPageSize - 1) / kPageSize;
      mapping_.protect(segment.address - dylib_.memory.address, pages * kPageSize, segment.protection);
    }
  }

  Bytes frames() const {
    return mapping_.bytes().slice(dylib_.frames->address - dylib_.memory.address, dylib_.frames->size);
  }

 private:
  // Each has words of its own in the file. The memory can be a thousand times as large, and the same word
  // could be set over and over.
  uint32_t mostFixups() const { return static_cast<uint32_t>(file_.size()); }

  // Everything is bound now, so that what is missing is told before anything runs. A stub that still goes to
  // the helper would ask for the binder at its first call.
  void requireBoundStubs() const {
    if (!dylib_.stubHelper) return;
    const uint32_t helper = dylib_.stubHelper->address + slide();
    for (const DylibFile::Range& pointers : dylib_.lazyPointers) {
      for (uint32_t offset = 0; offset + 4 <= pointers.size; offset += 4) {
        const auto target =
            mapping_.bytes().read<uint32_t>(pointers.address - dylib_.memory.address + offset);
        if (target - helper < dylib_.stubHelper->size) {
          throw FormatError("malformed: it doesn't say what one of its stubs is to be bound to");
        }
      }
    }
  }

  uint8_t* at(const SegmentCommand& segment) const {
    return mapping_.base() + (segment.address - dylib_.memory.address);
  }

  uint8_t* writableWord(FixupPlace place) const {
    if (place.segment >= dylib_.segments.size()) {
      throw FormatError("malformed: an address is to be set in a segment that is not there");
    }
    const SegmentCommand& segment = dylib_.segments[place.segment];
    if (segment.memorySize < 4 || place.offset > segment.memorySize - 4) {
      throw FormatError("malformed: an address is to be set outside of its segment");
    }
    // Only what the image says of its text is done to it.
    const uint32_t protection =
        place.kind == FixupKind::kPointer ? segment.protection : segment.maximumProtection;
    if (!(protection & kWrite)) {
      throw FormatError("an address is to be set in " + fixedName(segment.name) + ", which is not writable");
    }
    return at(segment) + place.offset;
  }

  const Bytes file_;
  const DylibFile& dylib_;
  Mapping& mapping_;
};

}  // namespace

struct Image::Parts {
  explicit Parts(size_t size) : mapping(size) {}

  Mapping mapping;
  LoadOptions options;
  std::vector<uint8_t> exports;
  bool reexportsLibraries = false;
  std::optional<uint32_t> version;
  // After the mapping: gone before it.
  std::optional<Frames> frames;
  std::optional<DebuggerNotice> notice;
};

Image::Image(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}
Image::Image(Image&&) noexcept = default;
Image& Image::operator=(Image&&) noexcept = default;
Image::~Image() = default;

std::optional<std::string> Image::version() const {
  if (!parts_->version) return std::nullopt;
  const uint32_t version = *parts_->version;
  return std::to_string(version >> 16) + '.' + std::to_string(version >> 8 & 0xFF) + '.' +
         std::to_string(version & 0xFF);
}

const void* Image::base() const {
  return parts_->mapping.base();
}

size_t Image::size() const {
  return parts_->mapping.bytes().size();
}

void* Image::symbol(const char* exportedName) const {
  try {
    const auto found = findExport(Bytes(parts_->exports.data(), parts_->exports.size()), exportedName);
    if (!found) return parts_->reexportsLibraries ? findInProcess(exportedName, parts_->options) : nullptr;
    if (!found->reexported.empty()) return findInProcess(found->reexported, parts_->options);
    return found->address < size() ? parts_->mapping.base() + found->address : nullptr;
  } catch (const FormatError&) {
    return nullptr;  // whatever a malformed trie meant to say, it is not an address
  }
}

Image load(const std::string& path, const LoadOptions& options) {
  return loadContents(path, readFile(path), options);
}

Image loadContents(const std::string& path, std::span<const uint8_t> contents, const LoadOptions& options) {
  const Bytes file(contents.data(), contents.size());
  try {
    const DylibFile dylib = readDylib(file);
    auto parts = std::make_unique<Image::Parts>(dylib.memory.size);
    Assembly assembly(file, dylib, parts->mapping);
    assembly.copySegments();
    assembly.rebaseAll();
    assembly.bindAll(options);
    parts->exports.assign(dylib.exports.data(), dylib.exports.data() + dylib.exports.size());
    parts->options = options;
    parts->reexportsLibraries = dylib.reexportsLibraries;
    parts->version = dylib.version;
    if (dylib.frames) parts->frames.emplace(assembly.frames(), parts->mapping.bytes());
    assembly.protect();
    parts->notice.emplace(path, assembly.slide());
    return Image(std::move(parts));
  } catch (const FormatError& error) {
    throw LoadError(path + ": " + error.what() + "; build or copy the file again");
  } catch (const MissingImport& error) {
    throw LoadError(path + ": " + error.what() + "; link the library that has it into this program");
  } catch (const std::bad_alloc&) {
    throw LoadError(path + ": no room for it in memory; close other programs or images");
  } catch (const std::system_error& error) {
    throw LoadError(path + ": " + error.what());
  }
}

}  // namespace macho
