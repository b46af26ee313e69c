// Hosts that lack a service: every method survives with its neutral value, and a service that appears later
// is used from then on.
#include <gmock/gmock.h>

#include "standin/carbon/control.h"
#include "tests/plugin/fixture.h"

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

// One line for all that host code does with every class.
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

bool isNeutralForm(const std::string& line) {
  return line.ends_with(": " + kNeutral) || line.find("[" + kNeutral + "]") != std::string::npos ||
         line.starts_with("raised ");
}

struct MissingCase {
  std::string name;
  double version;
};
void PrintTo(const MissingCase& row, std::ostream* out) {
  *out << "host " << row.version << " without " << row.name;
}

host::Settings settingsOf(double version) {
  host::Settings settings = version < 2012.0 ? host::oldHost(version) : host::Settings();
  settings.version = version;
  return settings;
}

// A service that start-up alone asks for is not asked for again.
const std::set<std::string> kOfStartUp = {"REALGetRBVersion", "REALinRuntime", "PluginRegisterClass",
                                          "PluginRegisterMethod"};

std::vector<MissingCase> allCases() {
  std::vector<MissingCase> cases;
  for (const double version : {2009.05, 2012.0, 2013.9, 2014.1}) {
    for (const std::string& name : host::entryPointNames()) {
      if (name != "RegisterPluginVersion") cases.push_back({name, version});
    }
  }
  return cases;
}

class MissingService : public PluginTest, public testing::WithParamInterface<MissingCase> {
 protected:
  void SetUp() override {
    for (const char* name : {"f1", "f2"}) tree_.add(name, 3);
    tree_.index();
    start(settingsOf(GetParam().version));
    complete_ = useEverything();
    TearDown();
  }

  TempTree tree_;
  std::vector<std::string> complete_;  // what a host with all services sees
};

TEST_P(MissingService, IsSurvivedWithNeutralValuesAndUsedOnceItIsThere) {
  host::Settings settings = settingsOf(GetParam().version);
  settings.hidden.insert(GetParam().name);
  start(settings);
  if (GetParam().name == "PluginRegisterClass") {
    EXPECT_TRUE(host::registeredClasses().empty());
    return;
  }
  if (GetParam().name == "PluginRegisterMethod") {
    EXPECT_THROW(host::callGlobal("ShotlightZNK", "x"), host::CallError);
    return;
  }
  const auto without = useEverything();
  for (const std::string& line : without) {
    const bool same = std::find(complete_.begin(), complete_.end(), line) != complete_.end();
    EXPECT_TRUE(same || isNeutralForm(line)) << line;
  }
  if (!kOfStartUp.count(GetParam().name)) {
    host::settings().hidden = settingsOf(GetParam().version).hidden;
    EXPECT_EQ(complete_, useEverything());
  }
  host::stop();  // without its unlock services the plug-in can't give back what it holds
}

INSTANTIATE_TEST_SUITE_P(Names, MissingService, testing::ValuesIn(allCases()));

}  // namespace
