#include "tests/standin/coreservices/media/exiftool_command.h"

#include <sys/wait.h>

#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace {

std::string quoted(const std::string& argument) {
  std::string result = "'";
  for (const char c : argument) {
    if (c == '\'') {
      result += "'\\''";
    } else {
      result += c;
    }
  }
  return result + '\'';
}

std::string run(const std::vector<std::string>& arguments) {
  std::string command = "LC_ALL=C.UTF-8 exiftool -config ''";  // perl complains of locales that aren't there
  for (const std::string& argument : arguments) command += ' ' + quoted(argument);
  FILE* const pipe = ::popen((command + " 2>&1").c_str(), "re");
  if (!pipe) throw std::runtime_error("can't run " + command);
  std::string output;
  char buffer[4096];
  while (const size_t size = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, size);
  if (::pclose(pipe) != 0) throw std::runtime_error(command + ":\n" + output);
  return output;
}

}  // namespace

void writeTags(const std::string& path, const std::vector<std::string>& assignments) {
  std::vector<std::string> arguments{"-q", "-overwrite_original"};
  arguments.insert(arguments.end(), assignments.begin(), assignments.end());
  arguments.push_back(path);
  const std::string complaints = run(arguments);
  if (!complaints.empty()) throw std::runtime_error(complaints);
}

std::vector<std::string> printedTags(const std::string& path, const std::vector<std::string>& tags) {
  std::vector<std::string> arguments{"-s3", "-f"};
  for (const std::string& tag : tags) arguments.push_back('-' + tag);
  arguments.push_back(path);
  std::istringstream output(run(arguments));
  std::vector<std::string> values;
  for (std::string line; std::getline(output, line);) values.push_back(line);
  return values;
}

std::set<std::string> knownTags() {
  std::istringstream output(run({"-list"}));
  std::set<std::string> names;
  for (std::string name; output >> name;) names.insert(name);
  return names;
}
