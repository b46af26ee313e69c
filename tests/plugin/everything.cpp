#include "tests/plugin/everything.h"

#include <algorithm>
#include <functional>

#include "standin/carbon/control.h"

namespace {

const std::string kNeutral = "neutral";

std::string describe(const host::Value& value);

std::string describeEntries(const host::Value& dictionary) {
  std::string all;
  for (const auto& [key, value] : host::entries(dictionary)) {
    all += "[" + describe(key) + " = " + describe(value) + "]";
  }
  return all.empty() ? kNeutral : all;
}

std::string describe(const host::Value& value) {
  switch (value.kind()) {
    case host::Kind::boolean:
      return value.boolean() ? "true" : kNeutral;
    case host::Kind::int32:
    case host::Kind::int64:
    case host::Kind::uint32:
      return value.integer() != 0 ? std::to_string(value.integer()) : kNeutral;
    case host::Kind::array: {
      std::string all;
      for (const host::Value& element : host::elements(value)) all += "[" + describe(element) + "]";
      return all.empty() ? kNeutral : all;
    }
    case host::Kind::number:
      return value.number() != 0 ? std::to_string(value.number()) : kNeutral;
    case host::Kind::object:
      if (value.isNil()) return kNeutral;
      return host::isA(value, "Dictionary") ? describeEntries(value) : "an object";
    default:
      return value.isNil() || value.text().empty() ? kNeutral : value.text();
  }
}

bool hasElements(const host::Value& array) {
  return !array.isNil() && !host::elements(array).empty();
}

using Note = std::function<void(const std::string& what, const host::Value& value)>;

// An instance without an item would raise for each of these: then there is nothing to note.
void useItem(const host::Value& item, const Note& note) {
  const auto ask = [&](const char* method, const char* name) {
    note(method, item.isNil() ? host::Value() : host::call(item, method, name));
  };
  for (const char* name : {"DisplayName", "FSName", "Path", "FSSize"}) {
    note(name, item.isNil() ? host::Value() : host::get(item, name));
  }
  ask("GetAttribute", "kMDItemFSSize");
  ask("AttributeString", "kMDItemFSName");
  ask("AttributeBoolean", "kMDItemFSExists");
  ask("AttributeDouble", "kMDItemFSSize");
  ask("AttributeStringArray", "kMDItemContentTypeTree");
  note("GetAttributes", item.isNil()
                            ? host::Value()
                            : host::call(item, "GetAttributes", host::stringArray({"kMDItemFSName"})));
  note("AttributeNames", !item.isNil() && hasElements(host::call(item, "AttributeNames")));
}

void useSchema(const Note& note) {
  const auto ask = [&](const char* method) {
    note(method, host::callShared("MDItemZNK", method, "kMDItemFSName"));
  };
  for (const char* method : {"DisplayNameForAttribute", "DisplayDescriptionForAttribute", "AttributeType"}) {
    ask(method);
  }
  note("AttributeMultiValued", host::callShared("MDItemZNK", "AttributeMultiValued", "kMDItemAuthors"));
  note("AllAttributes", hasElements(host::callShared("MDItemZNK", "AllAttributes")));
  for (const char* key : {"kMDItemFSName", "kMDItemDateAdded"}) note(key, host::callShared("MDItemZNK", key));
}

// Before it is executed.
void prepare(const host::Value& query, const std::string& folder, const Note& note) {
  host::call(query, "SetMaxCount", 100);
  host::call(query, "SetSearchScope", host::objectArray({host::folderItem(folder)}),
             host::stringArray({"/none"}));
  const host::Value batching = host::get(query, "BatchingParameters");
  note("batching", batching);
  host::set(query, "BatchingParameters", batching);
  note("flags set", host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemFSName", 2u));
  note("flags", host::call(query, "GetSortOptionFlagsForAttribute", "kMDItemFSName"));
}

void useResults(const host::Value& query, const Note& note) {
  note("complete", host::call(query, "IsGatheringComplete"));
  note("string", host::call(query, "QueryString"));
  note("lists", host::call(query, "ValueListAttributes"));
  note("sorting", host::call(query, "SortingAttributes"));
  note("count", host::call(query, "ResultCount"));
  note("results", host::call(query, "Results"));
  const host::Value item = host::call(query, "ResultAtIndex", 1);
  note("item", item);
  note("index", item.isNil() ? host::Value(0) : host::call(query, "IndexOfResult", item));
  note("value", host::call(query, "AttributeValueOfResultAtIndex", "kMDItemFSName", 0u));
  note("values", host::call(query, "ValuesOfAttribute", "kMDItemFSSize"));
  note("counted", host::call(query, "CountOfResultsWithAttributeValue", "kMDItemFSSize", 3));
  note("order set", host::call(query, "SetSortOrder", host::stringArray({"kMDItemFSName"})));
  useItem(item, note);
}

}  // namespace

std::vector<std::string> useMethods(const std::string& folder) {
  std::vector<std::string> lines;
  const Note note = [&](const std::string& what, const host::Value& value) {
    lines.push_back(what + ": " + describe(value));
  };
  const host::Value query =
      host::construct("MDQueryZNK", "kMDItemFSName == \"f*\"", host::stringArray({"kMDItemFSSize"}),
                      host::stringArray({"kMDItemFSName"}));
  int finished = 0;
  host::setEventHandler(query, "Finish", [&](const std::vector<host::Value>&) { ++finished; });
  prepare(query, folder, note);
  note("executed", host::call(query, "Execute", 1));
  note("finished", finished);
  useResults(query, note);
  useSchema(note);
  const host::Value subset = host::construct("MDQueryZNK", query, "kMDItemFSName == \"f1\"");
  host::call(subset, "Execute", 1);
  note("subset", host::call(subset, "ResultCount"));
  for (const char* name : {"DisableUpdates", "EnableUpdates", "Stop"}) host::call(query, name);
  host::takeExceptions();  // of queries that could not be made
  host::call(host::newInstance("MDQueryZNK"), "Stop");
  for (const auto& raised : host::takeExceptions())
    lines.push_back("raised " + raised.className + " " + raised.message);
  standin::takeSearchWindow();
  note("window status", host::callGlobal("ShotlightZNK", "text"));
  lines.push_back("window: " + standin::takeSearchWindow().text.value_or(kNeutral));
  return lines;
}

std::vector<std::string> useEverything(const std::string& folder) {
  std::vector<std::string> lines = useMethods(folder);
  host::Value tagged = host::newInstance("MDItemZNK");
  host::set(tagged, "Tag", "tag");
  lines.push_back("tag: " + describe(host::get(tagged, "Tag")));
  return lines;
}

namespace {

std::string topicOf(const std::string& line) {
  return line.substr(0, line.find(": "));
}

// What stands in brackets.
std::vector<std::string> elementsOf(const std::string& line) {
  std::vector<std::string> elements;
  for (size_t start = line.find('['); start != std::string::npos; start = line.find('[', start + 1)) {
    elements.push_back(line.substr(start + 1, line.find(']', start) - start - 1));
  }
  return elements;
}

bool isNeutralElement(const std::string& element) {
  return element == kNeutral || element.ends_with(" = " + kNeutral) || element.starts_with(kNeutral + " = ");
}

bool isDegradedListOf(const std::string& line, const std::string& complete) {
  const auto whole = elementsOf(complete), left = elementsOf(line);
  return topicOf(line) == topicOf(complete) && !left.empty() && left.size() <= whole.size() &&
         std::all_of(left.begin(), left.end(), [&](const std::string& element) {
           return isNeutralElement(element) || std::find(whole.begin(), whole.end(), element) != whole.end();
         });
}

}  // namespace

bool isDegraded(const std::string& line, const std::vector<std::string>& complete) {
  if (line.ends_with(": " + kNeutral) || line.starts_with("raised ")) return true;
  return std::any_of(complete.begin(), complete.end(),
                     [&](const std::string& whole) { return isDegradedListOf(line, whole); });
}
