#include "standin/plugin/plugin_file.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>

#include "macho/loader/loader.h"

namespace standin {
namespace {

const char kMain[] = "REALPluginMain";

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw PluginFileError(path + ": " + what);
}

bool isELF(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  char magic[4] = {};
  if (!file) fail(path, std::string("can't be read: ") + std::strerror(errno) + "; name the plug-in's file");
  file.read(magic, sizeof magic);
  return std::memcmp(magic, "\177ELF", sizeof magic) == 0;
}

// The dynamic linker opens a file once; a plug-in with fresh variables takes a file of its own.
class ELFPlugin {
 public:
  explicit ELFPlugin(const std::string& path) {
    std::string copy = (std::filesystem::temp_directory_path() / "plugin-XXXXXX").string();
    const int descriptor = mkstemp(copy.data());
    if (descriptor < 0) fail(copy, std::string("can't be made: ") + std::strerror(errno));
    close(descriptor);
    std::error_code error;
    std::filesystem::copy_file(path, copy, std::filesystem::copy_options::overwrite_existing, error);
    if (!error) handle_ = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    const std::string why = error ? error.message() : handle_ ? "" : dlerror();
    unlink(copy.c_str());
    if (!handle_) fail(path, "can't be loaded: " + why);
  }
  ~ELFPlugin() { dlclose(handle_); }
  ELFPlugin(const ELFPlugin&) = delete;
  ELFPlugin& operator=(const ELFPlugin&) = delete;

  void* symbol(const char* name) const { return dlsym(handle_, name); }

 private:
  void* handle_ = nullptr;
};

macho::Image loadMachO(const std::string& path, const std::set<std::string>& absent) {
  macho::LoadOptions options;
  options.hidden = absent;
  try {
    return macho::load(path, options);
  } catch (const macho::LoadError& error) {
    throw PluginFileError(error.what());
  }
}

}  // namespace

struct PluginFile::Opened {
  std::optional<ELFPlugin> elf;
  std::optional<macho::Image> machO;
};

PluginFile::PluginFile(const std::string& path, const std::set<std::string>& absent)
    : opened_(std::make_unique<Opened>()) {
  if (isELF(path)) {
    opened_->elf.emplace(path);
  } else {
    opened_->machO.emplace(loadMachO(path, absent));
  }
  if (!symbol(kMain)) fail(path, std::string("exports no ") + kMain + ", so it is not a plug-in");
}

PluginFile::~PluginFile() = default;
PluginFile::PluginFile(PluginFile&&) noexcept = default;

PluginFile::Main* PluginFile::main() const {
  return reinterpret_cast<Main*>(symbol(kMain));
}

void* PluginFile::symbol(const std::string& name) const {
  if (opened_->elf) return opened_->elf->symbol(name.c_str());
  return opened_->machO->symbol(("_" + name).c_str());
}

}  // namespace standin
