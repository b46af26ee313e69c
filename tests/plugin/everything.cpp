#include "tests/plugin/everything.h"

#include "standin/carbon/control.h"

namespace {

const std::string kNeutral = "neutral";

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
    case host::Kind::object:
      return value.isNil() ? kNeutral : "an object";
    default:
      return value.isNil() || value.text().empty() ? kNeutral : value.text();
  }
}

}  // namespace

std::vector<std::string> useEverything() {
  std::vector<std::string> lines;
  const auto note = [&](const std::string& what, const host::Value& value) {
    lines.push_back(what + ": " + describe(value));
  };
  const host::Value query =
      host::construct("MDQueryZNK", "kMDItemFSName == \"f*\"", host::stringArray({"kMDItemFSName"}),
                      host::stringArray({"kMDItemFSName"}));
  int finished = 0;
  host::setEventHandler(query, "Finish", [&](const std::vector<host::Value>&) { ++finished; });
  host::call(query, "SetMaxCount", 100);
  note("executed", host::call(query, "Execute", 1));
  note("finished", finished);
  note("complete", host::call(query, "IsGatheringComplete"));
  note("string", host::call(query, "QueryString"));
  note("lists", host::call(query, "ValueListAttributes"));
  note("sorting", host::call(query, "SortingAttributes"));
  note("count", host::call(query, "ResultCount"));
  note("results", host::call(query, "Results"));
  const host::Value item = host::call(query, "ResultAtIndex", 1);
  note("item", item);
  note("index", item.isNil() ? host::Value(0) : host::call(query, "IndexOfResult", item));
  for (const char* name : {"DisplayName", "FSName", "Path", "FSSize"}) {
    note(name, item.isNil() ? host::Value() : host::get(item, name));
  }
  const host::Value subset = host::construct("MDQueryZNK", query, "kMDItemFSName == \"f1\"");
  host::call(subset, "Execute", 1);
  note("subset", host::call(subset, "ResultCount"));
  for (const char* name : {"DisableUpdates", "EnableUpdates", "Stop"}) host::call(query, name);
  host::takeExceptions();  // of queries that could not be made
  host::call(host::newInstance("MDQueryZNK"), "Stop");
  for (const auto& raised : host::takeExceptions())
    lines.push_back("raised " + raised.className + " " + raised.message);
  host::Value tagged = host::newInstance("MDItemZNK");
  host::set(tagged, "Tag", "tag");
  note("tag", host::get(tagged, "Tag"));
  standin::takeSearchWindow();
  note("window status", host::callGlobal("ShotlightZNK", "text"));
  lines.push_back("window: " + standin::takeSearchWindow().text.value_or(kNeutral));
  return lines;
}

bool isNeutral(const std::string& line) {
  return line.ends_with(": " + kNeutral) || line.find("[" + kNeutral + "]") != std::string::npos ||
         line.starts_with("raised ");
}
