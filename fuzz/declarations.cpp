// What plug-ins register: declarations of methods, events, properties and constants, in records that are
// otherwise as they should be, and in some that aren't.
//
// The input: a byte for the control version, a word for the size of the instance data, the class's name, and
// then members, each ended by a line feed. The first letter says which kind: "m" is a method, "a" one with a
// setter, "s" a shared method, "e" an event, "p" a property (its type, a blank, its name), "c" a constant,
// "g" a global method. A capital stands for a record with a word in it that belongs to nothing, which is the
// second letter.
#include <array>
#include <cctype>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/input.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/language/declarations.h"
#include "standin/host/machine/machine_call.h"
#include "standin/host/state/runtime.h"

namespace {

namespace host = standin::host;

constexpr uint32_t kAnyFunction = 0x1000;  // which nobody calls

// A table of rows with so many words each, as a class record names it.
struct Table {
  size_t rowWords;
  std::vector<uint32_t> words;

  void add(std::vector<uint32_t> row) {
    row.resize(rowWords);
    words.insert(words.end(), row.begin(), row.end());
  }
  void placeIn(uint32_t* record) {
    record[0] = host::wordOf(words.data());
    record[1] = static_cast<uint32_t>(words.size() / rowWords);
  }
};

class Plugin {
 public:
  explicit Plugin(fuzz::Input& input) {
    const uint32_t version = 8 + input.byte() % 6;
    const bool isOld = version <= 9;
    record_[0] = version;
    record_[3] = input.number<uint16_t>();
    record_[20] = 4;
    name_ = input.text('\n');
    record_[1] = host::wordOf(name_.c_str());
    properties_.rowWords = isOld ? 10 : 12;
    methods_.rowWords = shared_.rowWords = isOld ? 4 : 6;
    events_.rowWords = isOld ? 2 : 4;
    constants_.rowWords = isOld ? 3 : 5;
    while (!input.atEnd()) lines_.emplace_back(input.text('\n'));
  }

  void registerAll() {
    for (const std::string& line : lines_) addMember(line);
    properties_.placeIn(&record_[7]);
    methods_.placeIn(&record_[9]);
    events_.placeIn(&record_[11]);
    constants_.placeIn(&record_[18]);
    shared_.placeIn(&record_[23]);
    host::entry::PluginRegisterClass(record_.data());
  }

 private:
  void addMember(const std::string& line) {
    if (line.empty()) return;
    const bool isWrong = std::isupper(static_cast<unsigned char>(line[0])) != 0 && line.size() > 1;
    const uint32_t wrong = isWrong ? static_cast<unsigned char>(line[1]) : 0;
    const uint32_t text = host::wordOf(line.c_str() + (isWrong ? 2 : 1));
    switch (std::tolower(static_cast<unsigned char>(line[0]))) {
      case 'm':
        return methods_.add({kAnyFunction, 0, text, 4 + wrong});
      case 'a':
        return methods_.add({kAnyFunction, kAnyFunction, text, 4, wrong});
      case 's':
        return shared_.add({kAnyFunction, wrong, text, 4});
      case 'e':
        return events_.add({text, 0, wrong});
      case 'c':
        return constants_.add({text, wrong});
      case 'p':
        return addProperty(line, wrong);
      case 'g': {
        std::array<uint32_t, 6> row = {kAnyFunction, 0, text, 4, wrong};
        host::entry::PluginRegisterMethod(row.data());
      }
    }
  }

  // A field, or with a wrong word at an odd place, or by functions.
  void addProperty(const std::string& line, uint32_t wrong) {
    const size_t blank = line.find(' ');
    if (blank == std::string::npos) return;
    names_.push_back(line.substr(blank + 1));
    types_.push_back(line.substr(1, blank - 1));
    constexpr uint32_t kField = 0xFFFFFFFF, kFlags = 6;
    const uint32_t access = wrong % 2 != 0 ? kAnyFunction : kField;
    properties_.add({0, host::wordOf(names_.back().c_str()), host::wordOf(types_.back().c_str()), kFlags,
                     access, access, wrong});
  }

  std::array<uint32_t, 29> record_{};
  std::string name_;
  std::vector<std::string> lines_;
  Table properties_{}, methods_{}, events_{}, constants_{}, shared_{};
  std::list<std::string> names_, types_;
};

// Each registration is the first of its host.
void forgetAll() {
  host::Runtime& runtime = host::runtime();
  runtime.registrationErrors.clear();
  runtime.globals.clear();
  runtime.classes = {};
}

// What was taken can be described, and is the same as itself.
void checkTaken(const host::Declaration& declaration) {
  fuzz::require(host::sameSignature(declaration, declaration), "a declaration that differs from itself");
  for (const host::Parameter& parameter : declaration.parameters) {
    fuzz::require(host::parseType(host::describe(parameter.type)) == parameter.type,
                  "a type that is described otherwise");
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  host::beginRuntime({});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  Plugin plugin(input);
  plugin.registerAll();
  const host::Runtime& runtime = host::runtime();
  for (const host::Class* const cls : runtime.classes.registered()) {
    for (const host::Method& method : cls->methods) checkTaken(method.declaration);
    for (const host::Event& event : cls->events) checkTaken(event.declaration);
  }
  for (const host::Method& method : runtime.globals) checkTaken(method.declaration);
  forgetAll();
  return 0;
}
