// Where a query searches.
#include "tests/plugin/array_access.h"
#include "tests/plugin/item/item_fixture.h"

namespace {

typedef std::vector<std::string> Places;

class SearchScope : public PluginTest {
 protected:
  SearchScope() {
    tree_.file("one/a");
    tree_.file("two/b");
  }

  static host::Value query() { return host::construct("MDQueryZNK", "kMDItemFSName == \"*\""); }
  host::Value folder(const std::string& name) const { return host::folderItem(tree_.at(name)); }
  std::string url(const std::string& name) const { return "file://" + tree_.at(name) + "/"; }

  // The scope that reached the service with these arguments.
  static standin::SearchScope set(const host::Value& paths, const host::Value& options) {
    const host::Value query = SearchScope::query();
    host::call(query, "SetSearchScope", paths, options);
    return standin::takeSearchScope();
  }

  ScratchFolder tree_;
};

class ScopeAccess : public WithArrayAccess<SearchScope> {};

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
  EXPECT_EQ(Texts(), scope.places);
}

TEST_P(ScopeAccess, OfEmptyArraysOrBadElementsAloneIsAnEmptyArray) {
  EXPECT_EQ(1, set(host::objectArray({}), host::stringArray({})).set);
  const auto scope =
      set(host::objectArray({host::Value()}), host::stringArrayOf({host::Value::nullString()}));
  EXPECT_EQ(1, scope.set);
  EXPECT_EQ(Texts(), scope.places);
}

TEST_P(ScopeAccess, PassesOptionsUnchanged) {
  EXPECT_EQ((Places{"kMDQueryScopeComputer", "/some/where", "Ünknown"}),
            set(nullptr, host::stringArray({"kMDQueryScopeComputer", "/some/where", "Ünknown"})).places);
}

INSTANTIATE_TEST_SUITE_P(Hosts, ScopeAccess, testing::ValuesIn(kArrayAccesses));

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
  EXPECT_EQ((Calls{"CFArrayCreateMutable", "RuntimeUBound", "REALLockObject"}), firstOf(calls, 3));
  EXPECT_EQ((Calls{"CFArrayAppendValue", "CFRelease", "REALUnlockObject", "RuntimeUBound", "REALLockString",
                   "REALGetStringCFString", "CFArrayAppendValue", "CFRelease", "REALUnlockString",
                   "MDQuerySetSearchScope", "CFRelease"}),
            fromFirst("CFArrayAppendValue", calls));
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
            firstOf(calls, 4));
  EXPECT_EQ(2, std::count(calls.begin(), calls.end(), "RuntimeArrayDirectGetGetProc"));
  EXPECT_EQ((Calls{"CFArrayAppendValue", "CFRelease", "REALUnlockObject", "RuntimeUBound",
                   "RuntimeDirectReadStringArray", "REALGetStringCFString", "CFArrayAppendValue", "CFRelease",
                   "REALUnlockString", "MDQuerySetSearchScope", "CFRelease"}),
            lastOf(calls, 11));
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
  standin::countCalls();
  host::call(query, "SetSearchScope", host::objectArray({folder("one")}), host::stringArray({"x"}));
  EXPECT_EQ(0, standin::callCount("RuntimeUBound"));
  EXPECT_EQ(0, standin::takeSearchScope().set);
}

TEST_F(SearchScope, DecidesWhatAQueryFinds) {
  standin::setIndexedFolders({tree_.path()});
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
  EXPECT_EQ(Texts{"b"}, found(host::objectArray({folder("two")}), nullptr));
  EXPECT_EQ(Texts(), found(nullptr, nullptr));
  EXPECT_EQ((Texts{"one", "a", "two", "b"}), found(nullptr, host::stringArray({"kMDQueryScopeComputer"})));
}

}  // namespace
