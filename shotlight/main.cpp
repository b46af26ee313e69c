#include <exception>
#include <new>

#include "shotlight/commands.h"
#include "shotlight/errors.h"
#include "shotlight/help.h"
#include "shotlight/memory.h"
#include "shotlight/output.h"
#include "shotlight/session.h"
#include "shotlight/version.h"

namespace {

using namespace shotlight;

struct Command {
  const char* name;
  const char* help;
  int (*run)(const Arguments& arguments);
};
constexpr Command commands[] = {
    {"find", findHelp, find},       {"attrs", attrsHelp, attrs},       {"schema", schemaHelp, schema},
    {"keys", keysHelp, keys},       {"program", programHelp, program}, {"store", storeHelp, store},
    {"window", windowHelp, window},
};

const Command& commandNamed(const std::string& name) {
  for (const Command& command : commands) {
    if (name == command.name) return command;
  }
  throw UsageError("unknown command '" + name + "'; see shotlight --help");
}

int printHelp(const char* text) {
  print(text);
  finishOutput();
  return kFound;
}

int printVersion(const Arguments& arguments) {
  std::string plugin;
  if (const Arguments rest = takeOptions("", arguments, {nameOption("--plugin", plugin)}); !rest.empty())
    throw UsageError("--version takes no '" + rest.front() + "'; leave it out");
  print(std::string("shotlight ") + programVersion + '\n');
  const Session session(plugin);
  print("SpotlightZNK " + session.pluginVersion().value_or("(its file tells no version)") + '\n');
  finishOutput();
  session.close();
  return kFound;
}

int run(const Arguments& arguments) {
  if (arguments.empty()) throw UsageError("a command is missing; see shotlight --help");
  const std::string& name = arguments.front();
  const Arguments rest(arguments.begin() + 1, arguments.end());
  if (name == "--help" || name == "-h") return printHelp(generalHelp);
  if (name == "--version") return printVersion(rest);
  if (name == "help") return printHelp(rest.empty() ? generalHelp : commandNamed(rest.front()).help);
  const Command& command = commandNamed(name);
  return askForHelp(rest) ? printHelp(command.help) : command.run(rest);
}

}  // namespace

int main(int count, char** words) {
  prepareOutput();
  try {
    return run({words + 1, words + count});
  } catch (const std::bad_alloc&) {
    endWithoutMemory();
  } catch (const std::exception& error) {
    reportError(error);
    return kError;
  }
}
