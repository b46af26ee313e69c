#include "tests/boundaries/includes.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

namespace {

namespace fs = std::filesystem;

bool isSource(const fs::path& file) {
  return file.extension() == ".h" || file.extension() == ".cpp";
}

// An included name is relative to the project or to the file that includes it.
std::string resolved(const fs::path& project, const fs::path& file, const std::string& name) {
  for (const fs::path& folder : {project, file.parent_path()}) {
    if (fs::exists(folder / name)) return fs::canonical(folder / name).lexically_relative(project);
  }
  return {};
}

void addIncludes(const fs::path& project, const fs::path& file, const std::string& folder,
                 std::vector<Include>& includes) {
  static const std::regex directive(R"((?:^|\n)\s*#\s*include\s*["<]([^">]+)[">])");
  std::ifstream stream(file);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  for (std::sregex_iterator match(text.begin(), text.end(), directive), end; match != end; ++match) {
    const std::string included = resolved(project, file, (*match)[1]);
    if (included.rfind(folder + "/", 0) == 0)
      includes.push_back({file.lexically_relative(project), included});
  }
}

// Neither what is built nor what is hidden.
bool isOfProject(const fs::path& folder) {
  const std::string name = folder.filename();
  return name != "build" && name.rfind('.', 0) != 0;
}

}  // namespace

std::vector<Include> includesFromOutside(const std::string& project, const std::string& folder) {
  std::vector<Include> includes;
  const fs::path root = fs::canonical(project);
  for (fs::recursive_directory_iterator entry(root), end; entry != end; ++entry) {
    const bool inside = entry->path() == root / folder;
    if (entry->is_directory() && (inside || !isOfProject(entry->path()))) entry.disable_recursion_pending();
    if (entry->is_regular_file() && isSource(entry->path()))
      addIncludes(root, entry->path(), folder, includes);
  }
  return includes;
}
