// Programs of the host language, as people and other programs write them: the input is the text. What is
// accepted is run with the plug-in, in a folder with a few files, up to a number of steps.
//
// Left out are programs with AttributeStringArray: of an attribute that isn't a list of strings, the plug-in
// ends the process, as it must.
#include <CoreFoundation/CoreFoundation.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "fuzz/input.h"
#include "standin/coreservices/metadata/control.h"
#include "standin/gate/gate.h"
#include "standin/host/host.h"
#include "standin/host/interpreter/program.h"

extern "C" void REALPluginMain(void* (*resolver)(const char* name));

namespace {

namespace host = standin::host;

constexpr size_t kFreedBytesKept = 256 * 1024;  // or they would be a leak over so many runs
constexpr int kMostQuestions = 3;               // of a thousand steps each, and before events are waited for

void writeFile(const std::string& path, const char* content) {
  std::FILE* const file = std::fopen(path.c_str(), "w");
  fuzz::require(file && std::fputs(content, file) >= 0 && std::fclose(file) == 0, "no file can be written");
}

// The one folder that queries look in. It stays: libFuzzer ends the process in more than one way.
constexpr char kFolder[] = "/tmp/fuzz-programs";

// Programs run in the folder; libFuzzer's own files are where the process began.
class InFolder {
 public:
  InFolder() : before_(::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    fuzz::require(before_ >= 0 && ::chdir(kFolder) == 0, "no folder to run programs in");
  }
  ~InFolder() {
    fuzz::require(::fchdir(before_) == 0, "no way back to the first folder");
    ::close(before_);
  }
  InFolder(const InFolder&) = delete;
  InFolder& operator=(const InFolder&) = delete;

 private:
  const int before_;
};

void fillFolder() {
  ::mkdir(kFolder, 0700);
  const InFolder here;
  writeFile("a.txt", "some text");
  writeFile("b.html", "<p>more</p>");
  ::setenv("HOME", kFolder, 1);
  standin::setIndexedFolders({kFolder});
  standin::WalkLimits limits;
  limits.depth = 1;
  standin::setWalkLimits(limits);
}

bool contains(std::string_view text, std::string_view name) {
  for (size_t i = 0; i + name.size() <= text.size(); ++i) {
    if (::strncasecmp(text.data() + i, name.data(), name.size()) == 0) return true;
  }
  return false;
}

void run(host::Program& program) {
  const InFolder here;
  int questions = 0;
  host::Surroundings surroundings;
  surroundings.arguments = {"a.txt", "two"};
  surroundings.mayGoOn = [&questions] { return ++questions < kMostQuestions; };
  surroundings.waitForEvents = [](double) { CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, false); };
  const host::Outcome outcome = program.run(surroundings);
  fuzz::require((outcome.kind == host::Outcome::Kind::failed) == !outcome.className.empty(),
                "a failure without an exception");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fillFolder();
  standin::setFreedBytesKept(kFreedBytesKept);
  host::start();
  REALPluginMain(host::resolve);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (contains(text, "AttributeStringArray")) return 0;
  try {
    host::Program program(text);
    run(program);
  } catch (const host::SourceError& error) {
    fuzz::require(error.place.line > 0 && error.place.column > 0 && *error.what() != '\0',
                  "a mistake without a place or reason");
  }
  fuzz::require(standin::ledgerLine("host object") == 0 && standin::ledgerLine("host string") == 0,
                "a program left something alive");
  return 0;
}
