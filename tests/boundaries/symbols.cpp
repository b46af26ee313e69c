#include "tests/boundaries/symbols.h"

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace {

std::string outputOf(const std::string& command) {
  std::FILE* const pipe = ::popen(command.c_str(), "r");
  if (!pipe) throw std::runtime_error(command + ": can't be started");
  std::string text;
  char buffer[4096];
  for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) text.append(buffer, n);
  const int status = ::pclose(pipe);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error(command + ": failed");
  return text;
}

}  // namespace

Names symbolsOf(const std::string& library, Symbols which) {
  const char* const options = which == Symbols::Exported    ? "-D --defined-only"
                              : which == Symbols::Undefined ? "-D --undefined-only"
                                                            : "--undefined-only";
  std::istringstream lines(outputOf(std::string(NM) + " -P " + options + " '" + library + "'"));
  Names names;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string name, kind;
    if (!(words >> name >> kind) || kind.size() != 1) continue;  // the headings of an archive's members
    if (which == Symbols::Exported && std::string("VWu").find(kind) != std::string::npos) continue;
    if (name.rfind("__odr_asan.", 0) == 0) continue;
    names.insert(name.substr(0, name.find('@')));
  }
  return names;
}

Names declaredIn(const std::string& header) {
  std::ifstream file(header);
  if (!file) throw std::runtime_error(header + ": can't be read");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  static const std::regex declaration(R"(\nCF_EXPORT\s[^;(]*?(\w+)\s*[;(])");
  Names names;
  for (std::sregex_iterator match(text.begin(), text.end(), declaration), end; match != end; ++match) {
    names.insert((*match)[1]);
  }
  return names;
}

Names declaredInFolder(const std::string& folder) {
  Names names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.merge(declaredIn(entry.path()));
  return names;
}
