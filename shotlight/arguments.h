// Taking a command's options out of its arguments.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace shotlight {

using Arguments = std::vector<std::string>;

struct Option {
  std::string name;                                    // with its dashes
  std::function<void(const std::string& value)> take;  // may throw UsageError
  bool hasValue = true;                                // false: a switch, taken with an empty value
};

// Hands the options their values, and answers the operands: what is no option, in order. `command` is named
// by errors, unless it is empty. An option's value is joined to it by "=" or is the next argument; after "--"
// nothing is an option. Throws UsageError.
Arguments takeOptions(const std::string& command, const Arguments& arguments,
                      const std::vector<Option>& options);

// Whether --help or -h is among a command's arguments, before any "--".
bool askForHelp(const Arguments& arguments);

// Ready-made ways to take a value.
Option nameOption(const std::string& option, std::string& name);  // refuses the empty name
Option switchOption(const std::string& option, bool& on);
// KEY,KEY: adds to `keys`, refuses empty ones.
Option keysOption(const std::string& option, std::vector<std::string>& keys);

// The parts between commas; of an empty text, one empty part.
std::vector<std::string> splitAtCommas(const std::string& text);

}  // namespace shotlight
