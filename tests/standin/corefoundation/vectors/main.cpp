// cf-vectors FOLDER: does again what the files of observed results in FOLDER say, and compares.
//
// It calls public functions only, so that it judges whichever Core Foundation the loader finds.
// Ends with 0 when every row of every file agrees, 1 when a row differs, 2 when a file is missing or
// malformed.
#include <cstdio>
#include <filesystem>

#include "tests/standin/corefoundation/vectors/checks.h"

namespace {

struct Outcome {
  int differing = 0;
  bool broken = false;
};

Outcome runCheck(const std::string& folder, const Check& check) {
  const std::string path = folder + "/" + check.file;
  Outcome outcome;
  int line = 0;
  try {
    const std::vector<Row> rows = readTable(path, check.columns);
    for (const Row& row : rows) {
      line = row.line;
      const std::string differences = check.run(row);
      if (differences.empty()) continue;
      ++outcome.differing;
      std::printf("%s:%d: %s\n", check.file, line, differences.c_str());
      for (size_t i = 0; i < row.cells.size(); ++i) {
        std::printf("    %s = %s\n", check.columns[i].c_str(), row.cells[i].c_str());
      }
    }
    std::printf("%-24s %5zu rows, %d differ\n", check.file, rows.size(), outcome.differing);
  } catch (const BadTable& error) {
    const std::string where = line > 0 ? " line " + std::to_string(line) + ":" : "";
    std::fflush(stdout);
    std::fprintf(stderr, "cf-vectors: %s:%s %s\n", path.c_str(), where.c_str(), error.what());
    outcome.broken = true;
  }
  return outcome;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: cf-vectors FOLDER (the folder of the *.tsv files, tests/vectors)\n");
    return 2;
  }
  // A row may change the current directory.
  const std::string folder = std::filesystem::absolute(argv[1]).string();
  int differing = 0;
  bool broken = false;
  for (const std::vector<Check>& checks : {stringChecks(), numberChecks(), dateChecks(), urlChecks()}) {
    for (const Check& check : checks) {
      const Outcome outcome = runCheck(folder, check);
      differing += outcome.differing;
      broken = broken || outcome.broken;
    }
  }
  if (broken) return 2;
  return differing == 0 ? 0 : 1;
}
