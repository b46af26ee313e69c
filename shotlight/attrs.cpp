// All that is known about files.
#include <algorithm>

#include "shotlight/commands.h"
#include "shotlight/errors.h"
#include "shotlight/incomplete.h"
#include "shotlight/interrupts.h"
#include "shotlight/items.h"
#include "shotlight/json.h"
#include "shotlight/keys.h"
#include "shotlight/names.h"
#include "shotlight/output.h"
#include "shotlight/property_list.h"
#include "shotlight/session.h"
#include "shotlight/store_options.h"
#include "shotlight/table.h"

namespace shotlight {
namespace {

namespace host = standin::host;
using Entries = std::vector<host::Entry>;

struct AttrsOptions {
  Arguments files;
  std::vector<std::string> keys;  // empty: all that a file has
  bool json = false;
  bool noStore = false;
  std::string plugin;
};

AttrsOptions parse(const Arguments& arguments) {
  AttrsOptions options;
  options.files =
      takeOptions("attrs", arguments,
                  {keysOption("--keys", options.keys), switchOption("--json", options.json),
                   switchOption("--no-store", options.noStore), nameOption("--plugin", options.plugin)});
  if (options.files.empty()) throw UsageError("attrs needs a file, such as NOTES.TXT");
  return options;
}

// In the order of `keys`, or sorted by key. Of what was asked for and isn't there, nil.
Entries attributesOf(const host::Value& item, std::vector<std::string> keys) {
  if (keys.empty()) {
    keys = host::texts(host::call(item, "AttributeNames"));
    std::sort(keys.begin(), keys.end());
  }
  const host::Value all = host::call(item, "GetAttributes", host::stringArray(keys));
  checkExceptions();
  Entries entries;
  for (const std::string& key : keys) {
    const auto value = all.isNil() ? std::nullopt : host::lookUp(all, key);
    const host::Value told = value.value_or(host::Value());
    entries.emplace_back(key, isFileName(key) ? exactName(item, key, told) : told);
  }
  return entries;
}

std::string asText(const Entries& entries) {
  size_t width = 0;
  for (const auto& [key, value] : entries) width = std::max(width, key.text().size());
  std::string text;
  for (const auto& [key, value] : entries) {
    const std::string name = key.text();
    text += name + std::string(width - name.size(), ' ') + " = " + propertyList(value, 0) + '\n';
  }
  return text;
}

std::string asJson(const std::string& path, const Entries& entries) {
  std::string object =
      "{" + jsonIndent(2) + "\"path\": " + jsonString(path) + "," + jsonIndent(2) + "\"attributes\": {";
  for (size_t i = 0; i < entries.size(); ++i) {
    const auto& [key, value] = entries[i];
    object += (i > 0 ? "," : "") + jsonIndent(3) + jsonString(key.text()) + ": " + json(value, 3);
  }
  return object + (entries.empty() ? "}" : jsonIndent(2) + "}") + jsonIndent(1) + "}";
}

// Prints the files one after the other, as they are read.
class Printer {
 public:
  explicit Printer(const AttrsOptions& options) : options_(options) {}

  void show(const std::string& path, const Entries& entries) {
    if (options_.json) {
      print((shown_ == 0 ? "[" : ",") + jsonIndent(1) + asJson(path, entries));
    } else {
      if (options_.files.size() > 1) print((shown_ == 0 ? "" : "\n") + printable(path) + ":\n");
      print(asText(entries));
    }
    ++shown_;
  }

  void finish() {
    if (options_.json) print(shown_ == 0 ? "[]\n" : "\n]\n");
    finishOutput();
  }

 private:
  const AttrsOptions& options_;
  size_t shown_ = 0;
};

// Answers the exit status.
int showAll(const AttrsOptions& options) {
  int status = kFound;
  Printer printer(options);
  Interrupts interrupts;
  for (const std::string& file : options.files) {
    try {
      const host::Value item = itemOf(file, interrupts);
      if (interrupts.signal() != 0) break;
      printer.show(itemPath(file), attributesOf(item, options.keys));
    } catch (const FileError& error) {
      reportError(error);
      status = kError;
    }
  }
  printer.finish();
  tellUnseen();
  if (interrupts.signal() == 0) return status;
  interrupts.tell();
  return kInterrupted + interrupts.signal();
}

}  // namespace

int attrs(const Arguments& arguments) {
  const AttrsOptions options = parse(arguments);
  useStore(!options.noStore);
  Session session(options.plugin);
  checkKeys("--keys", options.keys);
  const int status = showAll(options);
  session.close();
  return completeStatus(status);
}

}  // namespace shotlight
