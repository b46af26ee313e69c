// Hosts that lack a service: every method survives with its neutral value, and a service that appears later
// is used from then on.
#include <gmock/gmock.h>

#include <map>

#include "tests/plugin/sweeps/everything.h"
#include "tests/support/tier.h"

namespace {

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

// Services that start-up alone asks for, and the topics that change without them.
const std::map<std::string, std::set<std::string>> kOfStartUp = {
    {"REALGetRBVersion", {}},
    {"REALinRuntime", {"flags set", "flags", "order set"}},
    {"PluginRegisterClass", {}},
    {"PluginRegisterMethod", {}}};

// Whether the service was asked for in vain where this answer comes from.
bool lacks(const Answer& answer, const std::string& service) {
  const auto ofStartUp = kOfStartUp.find(service);
  return ofStartUp != kOfStartUp.end() ? ofStartUp->second.count(answer.topic) != 0
                                       : answer.calls.count("resolve " + service) != 0;
}

std::vector<MissingCase> allCases() {
  std::vector<MissingCase> cases;
  const std::vector<double> versions =
      sweepsFewerHosts() ? std::vector{2009.05, 2014.1} : std::vector{2009.05, 2012.0, 2013.9, 2014.1};
  for (const double version : versions) {
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
    complete_ = useEverything(tree_.path());
    ASSERT_EQ((std::vector<std::string>{
                  "query: true",
                  "limit: neutral",
                  "scope: neutral",
                  "batching: an object",
                  "batching set: neutral",
                  "flags set: true",
                  "flags: 2",
                  "executed: true",
                  "finished: 1",
                  "complete: true",
                  "string: kMDItemFSName == \"f*\"",
                  "lists: [kMDItemFSSize]",
                  "sorting: [kMDItemFSName]",
                  "count: 2",
                  "results: [an object][an object]",
                  "value: f1",
                  "values: [3]",
                  "counted: 2",
                  "counted as int64: 2",
                  "counted as single: 2",
                  "counted as double: 2",
                  "counted as others: neutral",
                  "updated: [heard][added an object][added an object][changed an object]",
                  "order set: true",
                  "item: an object",
                  "index: 1",
                  "DisplayName: f2",
                  "FSName: f2",
                  "Path: " + tree_.path("f2"),
                  "FSSize: 3",
                  "GetAttribute: 3",
                  "AttributeString: f2",
                  "AttributeBoolean: true",
                  "AttributeDouble: 3.000000",
                  "AttributeStringArray: "
                  "[public.plain-text][public.text][public.data][public.item][public.content]",
                  "GetAttributes: [kMDItemFSName = f2]",
                  "AttributeNames: true",
                  "values of all types: [0.500000][1099511627776][true][an object][bytes][an object]",
                  "Constructor: f1",
                  "subset: true",
                  "subset executed: true",
                  "subset count: 1",
                  "DisableUpdates: neutral",
                  "EnableUpdates: neutral",
                  "Stop: neutral",
                  "DisplayNameForAttribute: File name",
                  "DisplayDescriptionForAttribute: Name of the file on the disk",
                  "AttributeType: String",
                  "AttributeMultiValued: true",
                  "AllAttributes: true",
                  "kMDItemFSName: kMDItemFSName",
                  "kMDItemDateAdded: kMDItemDateAdded",
                  "without a query: neutral, raised NilObjectException \"MDQuery Reference is nil\" 0",
                  "window status: neutral",
                  "window: text",
                  "tag: tag"}),
              textsOf(complete_));
    TearDown();
  }

  TempTree tree_;
  std::vector<Answer> complete_;  // what a host with all services sees
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
  const auto without = useEverything(tree_.path());
  ASSERT_EQ(complete_.size(), without.size());
  for (size_t i = 0; i < without.size(); ++i) {
    const bool same = without[i].text() == complete_[i].text();
    EXPECT_TRUE(same || (lacks(without[i], GetParam().name) && isDegraded(without[i], complete_[i])))
        << without[i].text();
  }
  if (!kOfStartUp.count(GetParam().name)) {
    host::settings().hidden = settingsOf(GetParam().version).hidden;
    EXPECT_EQ(textsOf(complete_), textsOf(useEverything(tree_.path())));
  }
  // Without its unlock services the plug-in can't give back what it holds.
  if (GetParam().name.starts_with("REALUnlock")) host::stop();
  allowLeftBehind("host array of 0");  // of the methods that make their array before they find no query
}

INSTANTIATE_TEST_SUITE_P(Names, MissingService, testing::ValuesIn(allCases()));

}  // namespace
