#include "tests/boundaries/includes.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace {

namespace fs = std::filesystem;

bool isSource(const fs::path& file) {
  return file.extension() == ".h" || file.extension() == ".cpp" || file.extension() == ".inc";
}

// Neither what is built nor what is hidden.
bool isOfProject(const fs::path& folder) {
  const std::string name = folder.filename();
  return name != "build" && !name.starts_with('.');
}

bool take(std::string_view& rest, std::string_view word) {
  rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
  if (!rest.starts_with(word)) return false;
  rest.remove_prefix(word.size());
  return true;
}

// Empty for a line that is no directive to include.
std::string includedName(std::string_view line) {
  if (!take(line, "#") || !take(line, "include")) return {};
  if (!take(line, "\"") && !take(line, "<")) return {};
  return std::string(line.substr(0, line.find_first_of("\">")));
}

// A name is relative to the file that includes it, to the project, or to the folder of the system's headers.
// Empty for a file that isn't the project's.
std::string resolved(const fs::path& project, const fs::path& file, const std::string& name) {
  for (const fs::path& folder : {file.parent_path(), project, project / "platform"}) {
    if (fs::exists(folder / name)) return fs::canonical(folder / name).lexically_relative(project);
  }
  return {};
}

void addIncludes(const fs::path& project, const fs::path& file, std::vector<Include>& includes) {
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    const std::string name = includedName(line);
    if (name.empty()) continue;
    const std::string included = resolved(project, file, name);
    if (!included.empty()) includes.push_back({file.lexically_relative(project), included});
  }
}

}  // namespace

std::vector<Include> includesOf(const std::string& project) {
  std::vector<Include> includes;
  const fs::path root = fs::canonical(project);
  for (fs::recursive_directory_iterator entry(root), end; entry != end; ++entry) {
    if (entry->is_directory() && !isOfProject(entry->path())) entry.disable_recursion_pending();
    if (entry->is_regular_file() && isSource(entry->path())) addIncludes(root, entry->path(), includes);
  }
  return includes;
}
