#include "standin/coreservices/content/text_reader.h"

#include <dlfcn.h>

namespace standin::metadata {
namespace {

// In libexec/, beside the folder of the library or program that this is in.
std::string programPath() {
  static const char here = 0;
  Dl_info info;
  const std::string file = ::dladdr(&here, &info) != 0 ? info.dli_fname : "";
  const size_t slash = file.rfind('/');
  return (slash == std::string::npos ? "." : file.substr(0, slash)) + "/../libexec/document-text";
}

}  // namespace

ReaderPool::Options textReader(size_t processes) {
  ReaderPool::Options options;
  options.name = "document-text";
  options.program = programPath();
  options.processes = processes;
  options.timeToAnswer = std::chrono::seconds(10);
  return options;
}

}  // namespace standin::metadata
