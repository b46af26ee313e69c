#include "shotlight/arguments.h"

#include <algorithm>

#include "shotlight/errors.h"

namespace shotlight {
namespace {

class Parser {
 public:
  Parser(const std::string& command, const Arguments& arguments, const std::vector<Option>& options)
      : seeHelp_("; see shotlight " + (command.empty() ? "" : command + ' ') + "--help"),
        arguments_(arguments),
        options_(options) {}

  Arguments parse() {
    Arguments operands;
    bool optionsEnded = false;
    for (; at_ < arguments_.size(); ++at_) {
      const std::string& argument = arguments_[at_];
      if (optionsEnded || !argument.starts_with('-')) {
        operands.push_back(argument);
      } else if (argument == "--") {
        optionsEnded = true;
      } else {
        takeOption(argument);
      }
    }
    return operands;
  }

 private:
  void takeOption(const std::string& argument) {
    const size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const auto option =
        std::find_if(options_.begin(), options_.end(), [&](const Option& each) { return each.name == name; });
    if (option == options_.end()) throw UsageError("unknown option '" + name + "'" + seeHelp_);
    if (!option->hasValue) {
      if (equals != std::string::npos) throw UsageError(name + " takes no value" + seeHelp_);
      option->take("");
    } else if (equals != std::string::npos) {
      option->take(argument.substr(equals + 1));
    } else if (++at_ < arguments_.size()) {
      option->take(arguments_[at_]);
    } else {
      throw UsageError(name + " needs a value" + seeHelp_);
    }
  }

  const std::string seeHelp_;
  const Arguments& arguments_;
  const std::vector<Option>& options_;
  size_t at_ = 0;
};

}  // namespace

Arguments takeOptions(const std::string& command, const Arguments& arguments,
                      const std::vector<Option>& options) {
  return Parser(command, arguments, options).parse();
}

bool askForHelp(const Arguments& arguments) {
  const auto end = std::find(arguments.begin(), arguments.end(), "--");
  return std::any_of(arguments.begin(), end,
                     [](const std::string& argument) { return argument == "--help" || argument == "-h"; });
}

Option nameOption(const std::string& option, std::string& name) {
  return {option, [option, &name](const std::string& value) {
            if (value.empty()) throw UsageError(option + " '': the name is empty; give one");
            name = value;
          }};
}

Option switchOption(const std::string& option, bool& on) {
  return {option, [&on](const std::string&) { on = true; }, false};
}

Option keysOption(const std::string& option, std::vector<std::string>& keys) {
  return {option, [option, &keys](const std::string& value) {
            for (const std::string& key : splitAtCommas(value)) {
              if (key.empty())
                throw UsageError(option + " '" + value + "': a key is empty; write " + option + " KEY,KEY");
              keys.push_back(key);
            }
          }};
}

std::vector<std::string> splitAtCommas(const std::string& text) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == ',') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

}  // namespace shotlight
