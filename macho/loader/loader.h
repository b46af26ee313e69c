// loader/: from a dylib's file to functions that this process can call. Programs include this header,
// tests those of single tables, too (export_trie.h, fixups.h). Of the project it includes format/ alone.
//
// Loads an i386 Mach-O dylib into this (ELF) process: at an address of the kernel's choosing, bound by name
// to the process's own symbols, with exceptions able to pass through its functions.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>

namespace macho {

// "FILE: what is wrong; what to do".
struct LoadError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct LoadOptions {
  // Asked first, when set, with the C name (no leading underscore). Null means: not here; the process is
  // asked next.
  std::function<void*(const std::string& symbol)> lookup;
  // C names that are treated as absent, whoever has them.
  std::set<std::string> hidden;
};

// A loaded dylib. Gone from memory when this object goes, so nothing of it may be in use then.
class Image {
 public:
  Image(Image&&) noexcept;
  Image& operator=(Image&&) noexcept;
  ~Image();

  // The address of an export, by its name in the file ("_REALPluginMain"); null when it is not exported. What
  // the dylib re-exports of other libraries is found as imports are; of a library that is re-exported whole
  // that is anything that the process has.
  void* symbol(const char* exportedName) const;
  // The dylib's own version, as "1.2.3"; nothing where it doesn't tell.
  std::optional<std::string> version() const;
  const void* base() const;
  size_t size() const;

 private:
  struct Parts;
  explicit Image(std::unique_ptr<Parts> parts);
  friend Image loadContents(const std::string& path, std::span<const uint8_t> contents,
                            const LoadOptions& options);

  std::unique_ptr<Parts> parts_;
};

// Each call makes an image of its own, with its variables in their initial state, also for a file that is
// loaded already. An absent weak import is null; an absent strong one throws. Throws LoadError, whatever the
// file holds.
Image load(const std::string& path, const LoadOptions& options = {});
// The same for a file that was read already. `path` is what messages and a debugger call it; it isn't opened.
// A fuzzer calls this.
Image loadContents(const std::string& path, std::span<const uint8_t> contents,
                   const LoadOptions& options = {});

}  // namespace macho
