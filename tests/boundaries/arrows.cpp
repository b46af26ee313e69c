#include "tests/boundaries/arrows.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

std::string folderOf(const std::string& file) {
  const std::string folder = file.substr(0, file.rfind('/'));
  return folder.starts_with("platform/") ? "platform" : folder;
}

// Follows arrows from one folder, depth first.
class CircleSearch {
 public:
  explicit CircleSearch(const std::set<Arrow>& arrows) : arrows_(arrows) {}

  std::vector<std::string> from(const std::string& folder) {
    if (done_.count(folder)) return {};
    for (size_t i = 0; i < path_.size(); ++i) {
      if (path_[i] != folder) continue;
      std::vector<std::string> circle(path_.begin() + static_cast<ptrdiff_t>(i), path_.end());
      circle.push_back(folder);
      return circle;
    }
    path_.push_back(folder);
    for (auto arrow = arrows_.lower_bound({folder, ""}); arrow != arrows_.end() && arrow->first == folder;
         ++arrow) {
      if (auto circle = from(arrow->second); !circle.empty()) return circle;
    }
    path_.pop_back();
    done_.insert(folder);
    return {};
  }

 private:
  const std::set<Arrow>& arrows_;
  std::vector<std::string> path_;
  std::set<std::string> done_;  // no path from here leads into a circle
};

}  // namespace

std::map<Arrow, Include> arrowsOf(const std::vector<Include>& includes) {
  std::map<Arrow, Include> arrows;
  for (const Include& include : includes) {
    const Arrow arrow(folderOf(include.file), folderOf(include.included));
    if (arrow.first != arrow.second) arrows.emplace(arrow, include);
  }
  return arrows;
}

std::set<Arrow> readArrows(const std::string& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error(file + ": can't be read");
  std::set<Arrow> arrows;
  for (std::string line; std::getline(stream, line);) {
    if (line.empty() || line.starts_with('#')) continue;
    std::istringstream words(line);
    std::string from, sign, to, rest;
    if (!(words >> from >> sign >> to) || sign != "->" || words >> rest) {
      throw std::runtime_error(file + ": not of the form \"FROM -> TO\": " + line);
    }
    if (!arrows.emplace(from, to).second) throw std::runtime_error(file + ": listed twice: " + line);
  }
  return arrows;
}

std::vector<std::string> circleIn(const std::set<Arrow>& arrows) {
  CircleSearch search(arrows);
  for (const Arrow& arrow : arrows) {
    if (auto circle = search.from(arrow.first); !circle.empty()) return circle;
  }
  return {};
}
