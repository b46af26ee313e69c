// Compiling, linking and loading small dylibs from inside a test.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "macho/loader/loader.h"
#include "tests/support/scratch_folder.h"

namespace toolbox {

struct Outcome {
  int status;          // exit status; -1 when a signal ended the program
  std::string output;  // both streams
};
Outcome run(const std::vector<std::string>& command);

// The linker that was built with this test.
std::string linker();

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& contents);

// A folder for one test's files, and what is done in it.
class Workshop : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return folder_.at(name); }
  std::string write(const std::string& name, const std::string& contents) const;

  // An object of this C++ source; fails the test when it does not compile.
  std::string compile(const std::string& name, const std::string& source,
                      const std::vector<std::string>& flags = {}) const;
  std::string assemble(const std::string& name, const std::string& source) const;

  // An import list: all of these from one library, "/usr/lib/libtest.dylib" 1.2.3/1.
  std::string importList(const std::vector<std::string>& symbols) const;

  // Links to "test.dylib".
  Outcome link(const std::vector<std::string>& objects, const std::vector<std::string>& imports,
               const std::vector<std::string>& exported = {"_entry"}) const;
  // The same from one source; fails the test when it does not link. The result is the dylib's path.
  std::string build(const std::string& source, const std::vector<std::string>& imports = {},
                    const std::vector<std::string>& exported = {"_entry"}) const;

 private:
  ScratchFolder folder_;
};

template <typename Function>
Function* function(const macho::Image& image, const char* name = "_entry") {
  void* address = image.symbol(name);
  EXPECT_NE(nullptr, address) << name;
  return reinterpret_cast<Function*>(address);
}

// The message of the LoadError that loading throws; "(loaded)" when it doesn't.
std::string loadError(const std::string& path, const macho::LoadOptions& options = {});

// The same for a file's contents, under the name of "damaged.dylib". Fails the test when the message doesn't
// name it.
std::string loadContentsError(std::string_view contents, const macho::LoadOptions& options = {});

// What a test's sources begin with.
inline const std::string kEntry = "#define EXPORT extern \"C\" __attribute__((visibility(\"default\")))\n";

}  // namespace toolbox
