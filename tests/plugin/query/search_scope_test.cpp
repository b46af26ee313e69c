// Where a query searches.
#include <gmock/gmock.h>

#include "tests/plugin/item/item_fixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;

typedef std::vector<std::string> Places;

// On both sides of 2013.9, with and without storage that is read directly.
struct Access {
  double version;
  bool storage;
};
void PrintTo(const Access& row, std::ostream* out) {
  *out << "host " << row.version << (row.storage ? " with" : " without") << " storage";
}

class SearchScope : public PluginTest {
 protected:
  SearchScope() {
    tree_.add("one/a");
    tree_.add("two/b");
  }

  static host::Value query() { return host::construct("MDQueryZNK", "kMDItemFSName == \"*\""); }
  host::Value folder(const std::string& name) const { return host::folderItem(tree_.path(name)); }
  std::string url(const std::string& name) const { return "file://" + tree_.path(name) + "/"; }

  // The scope that reached the service with these arguments.
  static standin::SearchScope set(const host::Value& paths, const host::Value& options) {
    const host::Value query = SearchScope::query();
    host::call(query, "SetSearchScope", paths, options);
    return standin::takeSearchScope();
  }

  TempTree tree_;
};

class ScopeAccess : public SearchScope, public testing::WithParamInterface<Access> {
 protected:
  void SetUp() override {
    host::Settings settings;
    settings.version = GetParam().version;
    settings.directArrayStorage = GetParam().storage;
    start(settings);
  }
};

TEST_P(ScopeAccess, IsTheFoldersThenTheOptions) {
  const auto scope =
      set(host::objectArray({folder("one"), folder("two")}), host::stringArray({"kMDQueryScopeHome"}));
  EXPECT_EQ((Places{url("one"), url("two"), "kMDQueryScopeHome"}), scope.places);
  EXPECT_EQ((std::vector<bool>{true, true, false}), scope.urls);
  EXPECT_EQ(0u, scope.options);
}

TEST_P(ScopeAccess, LeavesOutNilEntriesAndKeepsTheOrder) {
  const auto scope =
      set(host::objectArray({host::Value(), folder("two"), host::Value(), folder("one")}),
          host::stringArrayOf({host::Value::nullString(), "b", host::Value::nullString(), "a"}));
  EXPECT_EQ((Places{url("two"), url("one"), "b", "a"}), scope.places);
}

TEST_P(ScopeAccess, LeavesOutWhatCantBeConverted) {
  const auto scope = set(host::objectArray({folder("no such folder/x"), folder("one")}),
                         host::stringArrayOf({unconvertible(), "option"}));
  EXPECT_EQ((Places{url("one"), "option"}), scope.places);
}

TEST_P(ScopeAccess, OfNilArraysIsAnEmptyArray) {
  const auto scope = set(nullptr, nullptr);
  EXPECT_EQ(1, scope.set);
  EXPECT_THAT(scope.places, IsEmpty());
}

TEST_P(ScopeAccess, OfEmptyArraysOrBadElementsAloneIsAnEmptyArray) {
  EXPECT_EQ(1, set(host::objectArray({}), host::stringArray({})).set);
  const auto scope =
      set(host::objectArray({host::Value()}), host::stringArrayOf({host::Value::nullString()}));
  EXPECT_EQ(1, scope.set);
  EXPECT_THAT(scope.places, IsEmpty());
}

TEST_P(ScopeAccess, PassesOptionsUnchanged) {
  EXPECT_EQ((Places{"kMDQueryScopeComputer", "/some/where", "Ünknown"}),
            set(nullptr, host::stringArray({"kMDQueryScopeComputer", "/some/where", "Ünknown"})).places);
}

INSTANTIATE_TEST_SUITE_P(Hosts, ScopeAccess,
                         testing::Values(Access{2013.9, true}, Access{2013.9, false}, Access{2012.0, true},
                                         Access{2013.91, true}, Access{2014.1, true}));

TEST_F(SearchScope, WithStorageIsReadWithTheseCalls) {
  host::Settings settings;
  settings.version = 2013.9;
  start(settings);
  const host::Value query = this->query();
  const host::Value paths = host::objectArray({folder("one")});
  const host::Value options = host::stringArray({"x"});
  const auto act = [&] { host::call(query, "SetSearchScope", paths, options); };
  act();
  const Calls calls = callsOf(act);
  EXPECT_EQ((Calls{"CFArrayCreateMutable", "RuntimeUBound", "REALLockObject"}),
            Calls(calls.begin(), calls.begin() + 3));
  const auto appended = std::find(calls.begin(), calls.end(), "CFArrayAppendValue");
  EXPECT_EQ((Calls{"CFArrayAppendValue", "CFRelease", "REALUnlockObject", "RuntimeUBound", "REALLockString",
                   "REALGetStringCFString", "CFArrayAppendValue", "CFRelease", "REALUnlockString",
                   "MDQuerySetSearchScope", "CFRelease"}),
            Calls(appended, calls.end()));
}

TEST_F(SearchScope, WithoutStorageAsksForEachElementsProcedureAnew) {
  start();
  const host::Value query = this->query();
  const host::Value paths = host::objectArray({folder("one"), folder("two")});
  const host::Value options = host::stringArray({"x"});
  const auto act = [&] { host::call(query, "SetSearchScope", paths, options); };
  act();
  const Calls calls = callsOf(act);
  EXPECT_EQ((Calls{"CFArrayCreateMutable", "RuntimeUBound", "RuntimeArrayDirectGetGetProc", "array get"}),
            Calls(calls.begin(), calls.begin() + 4));
  EXPECT_EQ(2, std::count(calls.begin(), calls.end(), "RuntimeArrayDirectGetGetProc"));
  EXPECT_EQ((Calls{"CFArrayAppendValue", "CFRelease", "REALUnlockObject", "RuntimeUBound",
                   "RuntimeDirectReadStringArray", "REALGetStringCFString", "CFArrayAppendValue", "CFRelease",
                   "REALUnlockString", "MDQuerySetSearchScope", "CFRelease"}),
            Calls(calls.end() - 11, calls.end()));
}

TEST_F(SearchScope, WithoutTheBoundServiceIsTheFirstElements) {
  host::Settings settings;
  settings.hidden = {"RuntimeUBound"};
  start(settings);
  EXPECT_EQ((Places{url("one"), "x"}),
            set(host::objectArray({folder("one"), folder("two")}), host::stringArray({"x", "y"})).places);
}

TEST_F(SearchScope, LeavesOutWhatTheHostHasNoServiceToRead) {
  for (const char* missing : {"RuntimeArrayDirectGetGetProc", "RuntimeDirectReadStringArray"}) {
    host::Settings settings;
    settings.hidden = {missing};
    start(settings);
    const bool folders = std::string(missing) == "RuntimeDirectReadStringArray";
    EXPECT_EQ(Places{folders ? url("one") : "x"},
              set(host::objectArray({folder("one")}), host::stringArray({"x"})).places)
        << missing;
    TearDown();
  }
  host::Settings settings;
  settings.getProcedures = false;
  start(settings);
  EXPECT_EQ(Places{"x"}, set(host::objectArray({folder("one")}), host::stringArray({"x"})).places);
}

TEST_F(SearchScope, MayHaveAnyNumberOfPlaces) {
  start();
  std::vector<std::string> options;
  for (int i = 0; i < 50; ++i) options.push_back(std::to_string(i));
  EXPECT_EQ(options, set(nullptr, host::stringArray(options)).places);
}

TEST_F(SearchScope, ThatCantBeMadeIsNotSet) {
  start();
  const host::Value query = this->query();
  standin::takeSearchScope();
  standin::failCall("CFArrayCreateMutable", 1);
  host::call(query, "SetSearchScope", nullptr, host::stringArray({"x"}));
  EXPECT_EQ(0, standin::takeSearchScope().set);
}

TEST_F(SearchScope, DecidesWhatAQueryFinds) {
  tree_.index();
  start();
  const auto found = [&](const host::Value& paths, const host::Value& options) {
    const host::Value query = this->query();
    host::call(query, "SetSearchScope", paths, options);
    host::call(query, "Execute", 1);
    std::vector<std::string> names;
    for (const host::Value& item : host::elements(host::call(query, "Results"))) {
      names.push_back(host::get(item, "FSName").text());
    }
    return names;
  };
  EXPECT_THAT(found(host::objectArray({folder("two")}), nullptr), ElementsAre("b"));
  EXPECT_THAT(found(nullptr, nullptr), IsEmpty());
  EXPECT_THAT(found(nullptr, host::stringArray({"kMDQueryScopeComputer"})),
              ElementsAre("one", "a", "two", "b"));
}

}  // namespace
