// Opening a plug-in as a host does: the Mach-O dylib through our loader, or its ELF twin through the
// system's.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

namespace standin {

// What was wrong with the file, and what to do.
struct PluginFileError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class PluginFile {
 public:
  typedef void* Resolver(const char* name);
  typedef void Main(Resolver* resolver);

  // Every opening gives a plug-in of its own, with its variables in their initial state, also when the file
  // is open already. `absent` names platform symbols, by their C names, that this plug-in is not to find
  // (dylib only). Throws PluginFileError.
  explicit PluginFile(const std::string& path, const std::set<std::string>& absent = {});
  ~PluginFile();
  PluginFile(PluginFile&&) noexcept;

  Main* main() const;                           // the exported REALPluginMain
  std::optional<std::string> version() const;   // as "1.2.3"; nothing where the file doesn't tell: ELF
  void* symbol(const std::string& name) const;  // another export, by its C name; null when there is none

 private:
  struct Opened;
  std::unique_ptr<Opened> opened_;
};

}  // namespace standin
