// The folders of the project, and which includes which: an arrow from the one folder to the other.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/boundaries/includes.h"

// From the folder whose file includes to the folder of the file that is included. `platform/` with all that
// is in it is one folder.
using Arrow = std::pair<std::string, std::string>;

// Every arrow between two folders, with one of the includes that make it.
std::map<Arrow, Include> arrowsOf(const std::vector<Include>& includes);

// The rows of a table: "FROM -> TO" a line; lines that are empty or begin with # don't count. Throws
// std::runtime_error for a file that can't be read, for any other line, and for a row that stands there
// twice.
std::set<Arrow> readArrows(const std::string& file);

// The folders of a circle of arrows, the first one again as the last; empty when there is none.
std::vector<std::string> circleIn(const std::set<Arrow>& arrows);
