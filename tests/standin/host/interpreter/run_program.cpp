#include "tests/standin/host/interpreter/run_program.h"

#include <fstream>

using namespace standin::host;

std::string outputOf(const std::string& program, Surroundings surroundings) {
  std::string output;
  surroundings.print = [&output](const std::string& line) { output += line + '\n'; };
  try {
    const Outcome outcome = Program(program).run(surroundings);
    if (outcome.kind == Outcome::Kind::interrupted) output += "interrupted\n";
    if (outcome.kind == Outcome::Kind::ended && outcome.status != 0)
      output += "status " + std::to_string(outcome.status) + '\n';
    if (outcome.kind != Outcome::Kind::failed) return output;
    output += outcome.className + ": " + outcome.message + '\n';
    for (const StackLine& each : outcome.stack)
      output += "  " + each.method + ':' + std::to_string(each.line) + '\n';
  } catch (const SourceError& error) {
    output += std::to_string(error.place.line) + ':' + std::to_string(error.place.column) + ": " +
              error.what() + '\n';
  }
  return output;
}

std::vector<Case> casesIn(const std::string& file) {
  std::vector<Case> cases;
  std::ifstream stream(std::string(PROGRAMS) + '/' + file + ".txt");
  bool isOutput = false;
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with("=== ")) {
      // The empty line above belongs to nobody.
      if (!cases.empty()) cases.back().output.pop_back();
      cases.push_back({line.substr(4), {}, {}});
      isOutput = false;
    } else if (line == "--- prints") {
      isOutput = true;
    } else {
      (isOutput ? cases.back().output : cases.back().program) += line + '\n';
    }
  }
  return cases;
}
