// The colours of file names, as ls has them.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace shotlight {

enum class ColorUse { automatic, always, never };

// What --color says. Throws UsageError for what is none of the three.
ColorUse colorUseNamed(const std::string& name);

// Whether names are coloured: automatically, on a terminal that isn't dumb, unless NO_COLOR is set.
bool usesColor(ColorUse use);

class FileColors {
 public:
  // `definitions` as in LS_COLORS; they replace those that ls has by itself. What is in them but numbers for
  // the terminal's colours (SGR) is left out.
  explicit FileColors(std::string_view definitions);
  // Those of the environment.
  static FileColors ofEnvironment();

  // Of the file at that path as it is now. Empty: no colour.
  std::string colorOf(const std::string& path) const;

 private:
  const std::string& named(const char* what) const;
  bool has(const char* what) const;
  std::string byName(std::string_view path) const;

  std::map<std::string, std::string, std::less<>> byKind_;     // "di" and so on
  std::vector<std::pair<std::string, std::string>> bySuffix_;  // the last ones count first
};

// The text in the colour.
std::string painted(const std::string& text, const std::string& color);

}  // namespace shotlight
