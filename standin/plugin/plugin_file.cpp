#include "standin/plugin/plugin_file.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "macho/loader/loader.h"

namespace standin {
namespace {

const char kMain[] = "REALPluginMain";

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw PluginFileError(path + ": " + what);
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return number_; }

 private:
  const int number_;
};

int openForReading(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0)
    fail(path, std::string("can't be read: ") + std::strerror(errno) + "; name the plug-in's file");
  return descriptor;
}

bool isELF(const std::string& path) {
  const Descriptor file(openForReading(path));
  char magic[4] = {};
  return read(file.get(), magic, sizeof magic) == sizeof magic &&
         std::memcmp(magic, "\177ELF", sizeof magic) == 0;
}

std::string temporaryFolder() {
  const char* const named = std::getenv("TMPDIR");
  return named && *named ? named : "/tmp";
}

// A copy in the temporary folder. (The C++ library's own way to copy knows no file of before 1901 or after
// 2038 here.)
class Copy {
 public:
  explicit Copy(const std::string& original) : path_(temporaryFolder() + "/plugin-XXXXXX") {
    const Descriptor file(openForReading(original));
    const Descriptor copy(mkostemp(path_.data(), O_CLOEXEC));
    if (copy.get() < 0) failToCopy("can't be made");
    constexpr size_t kAtOnce = 1 << 20;
    ssize_t copied;
    while ((copied = sendfile(copy.get(), file.get(), nullptr, kAtOnce)) > 0) {
    }
    if (copied == 0) return;
    const int error = errno;
    unlink(path_.c_str());
    errno = error;
    failToCopy("can't be written");
  }
  ~Copy() { unlink(path_.c_str()); }
  Copy(const Copy&) = delete;
  Copy& operator=(const Copy&) = delete;

  const std::string& path() const { return path_; }

 private:
  [[noreturn]] void failToCopy(const std::string& what) const {
    fail(path_, what + ": " + std::strerror(errno) + "; make room there, or set TMPDIR to another folder");
  }

  std::string path_;
};

// The dynamic linker opens a file once; a plug-in with fresh variables takes a file of its own.
class ELFPlugin {
 public:
  explicit ELFPlugin(const std::string& path) {
    const Copy copy(path);
    handle_ = dlopen(copy.path().c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle_) fail(path, std::string("can't be loaded: ") + dlerror());
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

std::optional<std::string> PluginFile::version() const {
  return opened_->machO ? opened_->machO->version() : std::nullopt;
}

void* PluginFile::symbol(const std::string& name) const {
  if (opened_->elf) return opened_->elf->symbol(name.c_str());
  return opened_->machO->symbol(("_" + name).c_str());
}

}  // namespace standin
