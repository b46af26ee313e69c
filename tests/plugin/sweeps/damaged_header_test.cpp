// A dylib of which a byte of the header or of a load command is damaged: it is refused when it is opened, or
// works. What is opened must not crash later, not even when an exception passes through it.
#include <sys/mman.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "macho/format/bytes.h"
#include "macho/format/format.h"
#include "tests/plugin/sweeps/everything.h"

namespace {

// A file without a folder.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& contents) : descriptor_(memfd_create("damaged", MFD_CLOEXEC)) {
    EXPECT_EQ(static_cast<ssize_t>(contents.size()), ::write(descriptor_, contents.data(), contents.size()));
  }
  ~MemoryFile() { ::close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }
  void put(size_t offset, char byte) const {
    ASSERT_EQ(1, ::pwrite(descriptor_, &byte, 1, static_cast<off_t>(offset)));
  }

 private:
  int descriptor_;
};

std::string contentsOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

// In the long tier some bits by themselves, too.
std::vector<int> flippedBits() {
  if (!isLongTier()) return {0xFF};
  return {0xFF, 1, 4, 128};
}

class DamagedHeader : public PluginTest {
 protected:
  void SetUp() override {
    if (!isMachO()) GTEST_SKIP() << "the system's own loader reads the ELF library";
    if (underAddressSanitizer()) GTEST_SKIP() << "the build without sanitizers sweeps the dylib";
    standin::setIndexedFolders({tree_.path()});
  }

  // Whether the plug-in could be opened.
  bool canBeUsed(const std::string& path) {
    try {
      pluginPath = path;
      start();
    } catch (const standin::PluginFileError&) {
      host::stop();
      return false;
    }
    play(scenarios().front(), tree_.path());
    standin::throwFromCall("REALBuildString", 1);
    EXPECT_THROW(host::call(host::newInstance("MDQueryZNK"), "Stop"), standin::PlannedException);
    standin::clearFailures();
    host::takeExceptions();
    host::stop();
    return true;
  }

  void TearDown() override { pluginPath = whole_; }

  const std::string whole_ = pluginPath;
  ScratchFolder tree_;
};

TEST_F(DamagedHeader, IsRefusedOrDoesNoHarm) {
  const std::string contents = contentsOf(whole_);
  const macho::Bytes bytes(reinterpret_cast<const uint8_t*>(contents.data()), contents.size());
  const size_t end = sizeof(macho::Header) + bytes.read<macho::Header>(0).commandSize;
  ASSERT_LE(end, contents.size());
  const MemoryFile file(contents);
  ASSERT_TRUE(canBeUsed(file.path()));
  size_t refused = 0;
  for (size_t i = 0; i < end; ++i) {
    for (const int flipped : flippedBits()) {
      SCOPED_TRACE("byte " + std::to_string(i) + ", bits " + std::to_string(flipped));
      file.put(i, static_cast<char>(contents[i] ^ flipped));
      refused += !canBeUsed(file.path());
    }
    file.put(i, contents[i]);
    if (HasFailure()) break;
  }
  EXPECT_LT(0u, refused);
}

}  // namespace
