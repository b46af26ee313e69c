// Whole commands of shotlight, each with the command that people would type instead: bench-command measures
// them, and tests hold what they cost beside each other.
#pragma once

#include <string>
#include <vector>

namespace bench {

using Command = std::vector<std::string>;

struct Row {
  const char* what;
  Command shotlight;      // its arguments, without the folder
  const char* other;      // of the shell; $1 is the folder
  const char* otherName;  // for people
};

const std::vector<Row>& rows();

Command shotlightIn(const std::string& shotlight, const Row& row, const std::string& folder);
Command otherIn(const Row& row, const std::string& folder);

}  // namespace bench
