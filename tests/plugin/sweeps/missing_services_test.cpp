// Hosts that lack a service: every method survives with its neutral value, and a service that appears later
// is used from then on.
#include <map>
#include <optional>

#include "tests/plugin/sweeps/everything.h"

namespace {

struct MissingCase {
  std::string name;
  double version;
};
void PrintTo(const MissingCase& row, std::ostream* out) {
  *out << "host " << row.version << " without " << row.name;
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

const std::vector<double> kVersions = {2009.05, 2012.0, 2013.9, 2014.1};

std::vector<MissingCase> allCases() {
  std::vector<MissingCase> cases;
  for (const double version : sweptVersions(kVersions)) {
    for (const std::string& name : host::entryPointNames()) {
      if (name != "RegisterPluginVersion") cases.push_back({name, version});
    }
  }
  return cases;
}

// The folder is that of all tests here, so that their answers can be compared.
class Services : public PluginTest {
 protected:
  static void SetUpTestSuite() {
    tree_.emplace();
    for (const char* name : {"f1", "f2"}) tree_->file(name, "xxx");
  }
  static void TearDownTestSuite() {
    complete_.clear();
    tree_.reset();
  }

  Services() {
    standin::setIndexedFolders({tree_->path()});
    standin::setUndefined(standin::Undefined::Nothing);  // for queries that lack attributes or results
  }

  static std::vector<Answer> answers() { return useEverything(tree_->path()).all(); }

  // What a host of this version with all services sees.
  const std::vector<Answer>& complete(double version) {
    const auto [known, isNew] = complete_.try_emplace(version);
    if (isNew) {
      start(settingsOf(version));
      known->second = answers();
      TearDown();
    }
    return known->second;
  }

  static std::optional<ScratchFolder> tree_;

 private:
  static std::map<double, std::vector<Answer>> complete_;
};
std::optional<ScratchFolder> Services::tree_;
std::map<double, std::vector<Answer>> Services::complete_;

class AllServices : public Services, public testing::WithParamInterface<double> {};

TEST_P(AllServices, AreSeenByEverything) {
  const std::vector<std::string> expected = {
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
      "Path: " + tree_->at("f2"),
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
      "tag: tag"};
  EXPECT_EQ(expected, textsOf(complete(GetParam())));
}

INSTANTIATE_TEST_SUITE_P(Versions, AllServices, testing::ValuesIn(swept(sweptVersions(kVersions))));
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(AllServices);

class MissingService : public Services, public testing::WithParamInterface<MissingCase> {};

TEST_P(MissingService, IsSurvivedWithNeutralValuesAndUsedOnceItIsThere) {
  const std::vector<Answer>& complete = this->complete(GetParam().version);
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
  const std::vector<Answer> without = answers();
  ASSERT_EQ(complete.size(), without.size());
  for (size_t i = 0; i < without.size(); ++i) {
    const bool same = without[i].text() == complete[i].text();
    EXPECT_TRUE(same || (lacks(without[i], GetParam().name) && isDegraded(without[i], complete[i])))
        << without[i].text();
  }
  if (!kOfStartUp.count(GetParam().name)) {
    host::settings().hidden = settingsOf(GetParam().version).hidden;
    EXPECT_EQ(textsOf(complete), textsOf(answers()));
  }
  // Without its unlock services the plug-in can't give back what it holds.
  if (GetParam().name.starts_with("REALUnlock")) host::stop();
  allowLeftBehind("host array of 0");  // of the methods that make their array before they find no query
}

INSTANTIATE_TEST_SUITE_P(Names, MissingService, testing::ValuesIn(swept(allCases())));
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(MissingService);

}  // namespace
