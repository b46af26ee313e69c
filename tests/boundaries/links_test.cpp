// Links of the documents lead somewhere: the file is there, and in it the heading.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// As viewers of Markdown name the place of a heading.
std::string anchorOf(const std::string& heading) {
  std::string anchor;
  for (const unsigned char c : heading) {
    if (isalnum(c) || c == '-' || c == '_' || c >= 0x80) anchor += static_cast<char>(tolower(c));
    if (c == ' ') anchor += '-';
  }
  return anchor;
}

// Lines that are text: no blocks of code.
std::vector<std::string> textOf(const fs::path& document) {
  std::vector<std::string> lines;
  std::ifstream stream(document);
  bool inBlock = false;
  for (std::string line; std::getline(stream, line);) {
    const bool isFence = line.starts_with("```");
    if (isFence) inBlock = !inBlock;
    if (!isFence && !inBlock && !line.starts_with("    ")) lines.push_back(line);
  }
  return lines;
}

std::set<std::string> anchorsOf(const std::vector<std::string>& lines) {
  std::set<std::string> anchors;
  std::map<std::string, int> seen;
  for (const std::string& line : lines) {
    if (!line.starts_with('#')) continue;
    const std::string anchor = anchorOf(line.substr(line.find(' ') + 1));
    const int before = seen[anchor]++;
    anchors.insert(before == 0 ? anchor : anchor + '-' + std::to_string(before));
  }
  return anchors;
}

std::vector<std::string> targetsIn(const std::vector<std::string>& lines) {
  std::vector<std::string> targets;
  for (const std::string& line : lines) {
    for (size_t at = 0; (at = line.find("](", at)) != std::string::npos; at += 2) {
      targets.push_back(line.substr(at + 2, line.find(')', at) - at - 2));
    }
  }
  return targets;
}

bool leadsSomewhere(const fs::path& document, const std::string& target) {
  const size_t mark = std::min(target.find('#'), target.size());
  const fs::path file = mark == 0 ? document : document.parent_path() / target.substr(0, mark);
  if (!fs::exists(file)) return false;
  return mark == target.size() || anchorsOf(textOf(file)).contains(target.substr(mark + 1));
}

TEST(Links, OfDocumentsLeadSomewhere) {
  std::vector<fs::path> documents;
  for (const char* name : {"README.md", "CHANGELOG.md", "CONTRIBUTING.md"})
    documents.push_back(fs::path(SOURCES) / name);
  for (const auto& entry : fs::directory_iterator(fs::path(SOURCES) / "docs")) {
    if (entry.path().extension() == ".md") documents.push_back(entry.path());
  }
  size_t links = 0;
  for (const fs::path& document : documents) {
    for (const std::string& target : targetsIn(textOf(document))) {
      if (target.starts_with("https://")) continue;
      ++links;
      EXPECT_TRUE(leadsSomewhere(document, target)) << document << ": " << target;
    }
  }
  EXPECT_GT(links, 50U);
}

TEST(LinksCheck, FindsWhatLeadsNowhere) {
  const fs::path readme = fs::path(SOURCES) / "README.md";
  EXPECT_TRUE(leadsSomewhere(readme, "docs/guide.md#the-life-of-a-query"));
  EXPECT_TRUE(leadsSomewhere(readme, "#where-things-are"));
  EXPECT_FALSE(leadsSomewhere(readme, "docs/none.md"));
  EXPECT_FALSE(leadsSomewhere(readme, "docs/guide.md#the-life-of-a"));
  EXPECT_FALSE(leadsSomewhere(readme, "#none"));
  EXPECT_EQ(targetsIn({"a [b](c.md) and [d](#e)"}), (std::vector<std::string>{"c.md", "#e"}));
  EXPECT_EQ(anchorsOf({"# A b", "## `X.Y(z, w)`", "## A b"}),
            (std::set<std::string>{"a-b", "xyz-w", "a-b-1"}));
}

}  // namespace
