#include "tests/boundaries/symbols.h"

#include <sys/wait.h>

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
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

// Empty where the text ends with something else.
std::string lastWord(std::string text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.pop_back();
  size_t start = text.size();
  while (start > 0 && (std::isalnum(static_cast<unsigned char>(text[start - 1])) || text[start - 1] == '_'))
    --start;
  return text.substr(start);
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
  const std::string mark = "\nCF_EXPORT ";
  Names names;
  for (size_t start = text.find(mark); start != std::string::npos; start = text.find(mark, start + 1)) {
    const std::string name = lastWord(text.substr(start, text.find_first_of(";(", start) - start));
    if (!name.empty()) names.insert(name);
  }
  return names;
}

Names declaredInFolder(const std::string& folder) {
  Names names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.merge(declaredIn(entry.path()));
  return names;
}
