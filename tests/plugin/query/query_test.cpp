// The query object: construction, plain operations, the nil-reference guard, destruction.
#include <CoreServices/CoreServices.h>

#include <cmath>
#include <functional>
#include <map>

#include "tests/plugin/guard.h"
#include "tests/plugin/item/item_fixture.h"

namespace {

const char kAnything[] = "kMDItemFSName == \"*\"";

class Query : public PluginTest {};

int64_t handleOf(const host::Value& query) {
  return host::get(query, "Handle").integer();
}

MDQueryRef serviceQuery(const host::Value& query) {
  return reinterpret_cast<MDQueryRef>(static_cast<intptr_t>(handleOf(query)));
}

// The calls of `act` once every host service has been found, so that only the calls themselves are listed.
Calls warmCallsOf(const std::function<void()>& act) {
  act();
  return callsOf(act);
}

typedef std::vector<host::Value> Arguments;

struct ConstructorCase {
  const char* what;
  Arguments (*arguments)(const host::Value& parent, const host::Value& text);
  Calls calls;

  host::Value construct(const host::Value& parent, const host::Value& text = kAnything) const {
    return host::constructWith("MDQueryZNK", arguments(parent, text));
  }
  bool isSubset() const { return std::string(what).starts_with("(query,"); }
};
void PrintTo(const ConstructorCase& row, std::ostream* out) {
  *out << row.what;
}

host::Value lists() {
  return host::stringArray({"kMDItemFSSize"});
}
host::Value sorting() {
  return host::stringArray({"kMDItemFSName", "kMDItemFSSize"});
}

const Calls kQueryString = {"REALGetStringCFString"};
const Calls kListOfOne = {"RuntimeUBound",         "CFArrayCreateMutable", "RuntimeDirectReadStringArray",
                          "REALGetStringCFString", "CFArrayAppendValue",   "CFRelease",
                          "REALUnlockString"};
const Calls kListOfTwo = {"RuntimeUBound",
                          "CFArrayCreateMutable",
                          "RuntimeDirectReadStringArray",
                          "REALGetStringCFString",
                          "CFArrayAppendValue",
                          "CFRelease",
                          "REALUnlockString",
                          "RuntimeDirectReadStringArray",
                          "REALGetStringCFString",
                          "CFArrayAppendValue",
                          "CFRelease",
                          "REALUnlockString"};
const Calls kObserve = {"CFNotificationCenterGetLocalCenter", "CFNotificationCenterAddObserver",
                        "CFNotificationCenterAddObserver", "CFNotificationCenterAddObserver"};
const Calls kDestroy = {"CFNotificationCenterGetLocalCenter", "CFNotificationCenterRemoveEveryObserver",
                        "CFRelease"};

Calls join(const std::vector<Calls>& parts) {
  Calls all;
  for (const Calls& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

const ConstructorCase kConstructors[] = {
    {"(queryString)", [](const host::Value&, const host::Value& text) { return Arguments{text}; },
     join({kQueryString, {"MDQueryCreate"}, kObserve, {"CFRelease"}})},
    {"(queryString, valueLists)",
     [](const host::Value&, const host::Value& text) {
       return Arguments{text, lists()};
     },
     join({kQueryString, kListOfOne, {"MDQueryCreate"}, kObserve, {"CFRelease", "CFRelease"}})},
    {"(queryString, valueLists, sorting)",
     [](const host::Value&, const host::Value& text) {
       return Arguments{text, lists(), sorting()};
     },
     join({kQueryString,
           kListOfOne,
           kListOfTwo,
           {"MDQueryCreate"},
           kObserve,
           {"CFRelease", "CFRelease", "CFRelease"}})},
    {"(query, queryString)",
     [](const host::Value& parent, const host::Value& text) {
       return Arguments{parent, text};
     },
     join({kQueryString, {"MDQueryCreateSubset"}, kObserve, {"CFRelease"}})},
    {"(query, queryString, valueLists)",
     [](const host::Value& parent, const host::Value& text) {
       return Arguments{parent, text, lists()};
     },
     join({kQueryString, kListOfOne, {"MDQueryCreateSubset"}, kObserve, {"CFRelease", "CFRelease"}})},
    {"(query, queryString, valueLists, sorting)",
     [](const host::Value& parent, const host::Value& text) {
       return Arguments{parent, text, lists(), sorting()};
     },
     join({kQueryString,
           kListOfOne,
           kListOfTwo,
           {"MDQueryCreateSubset"},
           kObserve,
           {"CFRelease", "CFRelease", "CFRelease"}})},
};

class QueryConstructor : public Query, public testing::WithParamInterface<ConstructorCase> {};

TEST_P(QueryConstructor, MakesTheseCallsInThisOrderAndTheDestructorItsOwn) {
  start();
  const host::Value parent = host::construct("MDQueryZNK", kAnything);
  EXPECT_EQ(join({GetParam().calls, kDestroy}), warmCallsOf([&] { GetParam().construct(parent); }));
}

// The same with the arrays' storage read directly, and with the strings' own buffers.

Calls replaceEach(const Calls& calls, const std::map<std::string, Calls>& replacements) {
  Calls result;
  for (const std::string& call : calls) {
    const auto found = replacements.find(call);
    const Calls with = found == replacements.end() ? Calls{call} : found->second;
    result.insert(result.end(), with.begin(), with.end());
  }
  return result;
}

TEST_P(QueryConstructor, ReadsArraysDirectlyUpTo2013_9) {
  host::Settings settings;
  settings.version = 2013.9;
  start(settings);
  const host::Value parent = host::construct("MDQueryZNK", kAnything);
  const Calls expected =
      replaceEach(GetParam().calls, {{"RuntimeDirectReadStringArray", {"REALLockString"}}});
  EXPECT_EQ(join({expected, kDestroy}), warmCallsOf([&] { GetParam().construct(parent); }));
}

TEST_P(QueryConstructor, FetchesTheElementsOfArraysOnAHostWhoseVersionIsNoNumber) {
  start(settingsOf(std::nan("")));
  const host::Value parent = host::construct("MDQueryZNK", kAnything);
  EXPECT_EQ(join({GetParam().calls, kDestroy}), warmCallsOf([&] { GetParam().construct(parent); }));
}

TEST_P(QueryConstructor, ReadsStringsFromTheirLockedBuffersBefore2012) {
  start(host::oldHost(2011.04));
  const host::Value parent = host::construct("MDQueryZNK", kAnything);
  const Calls bytes = {"resolve REALGetStringCFString", "REALGetStringEncoding", "REALLockString",
                       "CFStringCreateWithCString", "REALUnlockString"};
  const Calls expected = replaceEach(GetParam().calls, {{"RuntimeDirectReadStringArray", {"REALLockString"}},
                                                        {"REALGetStringCFString", bytes}});
  EXPECT_EQ(join({expected, kDestroy}), warmCallsOf([&] { GetParam().construct(parent); }));
}

TEST_P(QueryConstructor, LeavesTheInstanceWithoutAQueryWhenTheServiceMakesNone) {
  start();
  const host::Value parent = host::construct("MDQueryZNK", kAnything);
  standin::failCall(GetParam().isSubset() ? "MDQueryCreateSubset" : "MDQueryCreate", 1);
  const host::Value query = GetParam().construct(parent);
  EXPECT_EQ(1, standin::failuresFired());
  EXPECT_EQ(0, handleOf(query));
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_P(QueryConstructor, LeavesNoQueryEitherWhereThereWasOneWhenTheServiceMakesNone) {
  start();
  const host::Value parent = host::construct("MDQueryZNK", kAnything);
  const host::Value query = GetParam().construct(parent);
  const int64_t first = handleOf(query);
  ASSERT_NE(0, first);
  host::callWith(query, "Constructor", GetParam().arguments(parent, "&&"));
  EXPECT_EQ(0, handleOf(query));
  EXPECT_EQ(Exceptions(), host::takeExceptions());
  // The instance has forgotten its first query: it is put back, so that the destructor ends it.
  host::set(query, "Handle", static_cast<int32_t>(first));
}

TEST_F(Query, ConstructorReleasesItsArraysBeforeTheQueryString) {
  start();
  const host::Value first = lists(), second = sorting();
  host::Value query;
  EXPECT_EQ(
      (Calls{"CFRelease CFArray", "CFRelease CFArray", "CFRelease CFString"}),
      lastOf(detailedCallsOf([&] { query = host::construct("MDQueryZNK", kAnything, first, second); }), 3));
}

TEST_P(QueryConstructor, StopsAtAQueryStringThatIsNullOrCantBeConverted) {
  start();
  const host::Value parent = host::construct("MDQueryZNK", kAnything);
  const auto callsWith = [&](const host::Value& text) {
    return warmCallsOf([&] { EXPECT_EQ(0, handleOf(GetParam().construct(parent, text))); });
  };
  EXPECT_EQ(Calls(), callsWith(host::Value::nullString()));
  EXPECT_EQ((Calls{"REALGetStringCFString", "REALGetStringCFString", "REALGetStringEncoding",
                   "PluginGetStringData", "CFStringCreateWithCString", "PluginDisposeStringData"}),
            callsWith(unconvertible()));
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_P(QueryConstructor, GivesEverythingBackWhenNoArrayCanBeMade) {
  start();
  const host::Value parent = host::construct("MDQueryZNK", kAnything);
  standin::failCall("CFArrayCreateMutable", 1);
  EXPECT_NE(0, handleOf(GetParam().construct(parent)));
}

INSTANTIATE_TEST_SUITE_P(All, QueryConstructor, testing::ValuesIn(kConstructors));

TEST_F(Query, MadeOfAStringThatCantBeUnderstoodHasNoReferenceAndSaysSoAtItsFirstUse) {
  start();
  for (const char* bad : {"", "&&", "kMDItemFSName ==", "kMDItemFSName == \"open"}) {
    SCOPED_TRACE(bad);
    const host::Value query = host::construct("MDQueryZNK", bad);
    EXPECT_EQ(0, handleOf(query));
    EXPECT_EQ(Exceptions(), host::takeExceptions());
    EXPECT_EQ(0, host::call(query, "ResultCount").integer());
    EXPECT_EQ(Exceptions{kNilQuery}, host::takeExceptions());
  }
}

TEST_F(Query, SubsetOfANilQueryOrOneWithoutAReferenceHasNoneAndMakesNoCall) {
  start();
  const host::Value none = host::construct("MDQueryZNK", "&&");
  int forms = 0;
  for (const ConstructorCase& row : kConstructors) {
    if (!row.isSubset()) continue;
    ++forms;
    for (const host::Value& parent : {host::Value(nullptr), none}) {
      EXPECT_EQ(Calls(), callsOf([&] { EXPECT_EQ(0, handleOf(row.construct(parent))) << row.what; }));
      EXPECT_EQ(Exceptions(), host::takeExceptions());
    }
  }
  EXPECT_EQ(3, forms);
}

TEST_F(Query, SubsetOfNoQueryOrOfNoStringLeavesTheInstanceTheQueryThatItHas) {
  start();
  const host::Value parent = host::construct("MDQueryZNK", kAnything);
  const host::Value none = host::construct("MDQueryZNK", "&&");
  const host::Value query = host::construct("MDQueryZNK", kAnything);
  const int64_t handle = handleOf(query);
  ASSERT_NE(0, handle);
  for (const ConstructorCase& row : kConstructors) {
    if (!row.isSubset()) continue;
    for (const Arguments& arguments :
         {row.arguments(nullptr, kAnything), row.arguments(none, kAnything),
          row.arguments(parent, host::Value::nullString()), row.arguments(parent, unconvertible())}) {
      host::callWith(query, "Constructor", arguments);
      EXPECT_EQ(handle, handleOf(query)) << row.what;
    }
  }
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(Query, SubsetTakesNoLockOnItsParent) {
  ScratchFolder tree;
  tree.file("a.txt");
  tree.file("b.md");
  standin::setIndexedFolders({tree.path()});
  start();
  host::Value parent = host::construct("MDQueryZNK", "kMDItemFSName == \"*.txt\"");
  host::call(parent, "Execute", 1);
  const host::Value subset = host::construct("MDQueryZNK", parent, kAnything);
  parent = {};
  host::call(subset, "Execute", 1);
  EXPECT_EQ(1, host::call(subset, "ResultCount").integer());
}

using Guard = GuardTest;

TEST_P(Guard, RaisesAndAnswersTheNeutralValueWithoutCallingTheService) {
  expectGuarded("MDQueryZNK", kNilQuery, {"MDQuery", "CFString", "CFArray", "VarType", "FolderItem"});
}

std::vector<host::Value> none() {
  return {};
}
std::vector<host::Value> number() {
  return {host::Value(1)};
}
std::vector<host::Value> nil() {
  return {host::Value()};
}
std::vector<host::Value> twoNils() {
  return {host::Value(), host::Value()};
}
std::vector<host::Value> name() {
  return {host::Value("kMDItemFSName")};
}
std::vector<host::Value> names() {
  return {host::stringArray({"kMDItemFSName"})};
}
std::vector<host::Value> nameAndNumber() {
  return {host::Value("kMDItemFSName"), host::Value(1u)};
}

INSTANTIATE_TEST_SUITE_P(
    Operations, Guard,
    testing::Combine(
        testing::Values(GuardCase{"CountOfResultsWithAttributeValue", nameAndNumber, GuardCase::kZero},
                        GuardCase{"AttributeValueOfResultAtIndex", nameAndNumber, GuardCase::kNil},
                        GuardCase{"ValuesOfAttribute", name, GuardCase::kNil, true},
                        GuardCase{"IndexOfResult", nil, GuardCase::kZero},
                        GuardCase{"ResultAtIndex", number, GuardCase::kNil},
                        GuardCase{"Results", none, GuardCase::kNil, true},
                        GuardCase{"BatchingParameters", none, GuardCase::kNil},
                        GuardCase{"Execute", number, GuardCase::kFalse},
                        GuardCase{"IsGatheringComplete", none, GuardCase::kFalse},
                        GuardCase{"ResultCount", none, GuardCase::kZero},
                        GuardCase{"ValueListAttributes", none, GuardCase::kNil, true},
                        GuardCase{"SortingAttributes", none, GuardCase::kNil, true},
                        GuardCase{"QueryString", none, GuardCase::kNil},
                        GuardCase{"Stop", none, GuardCase::kNone},
                        GuardCase{"DisableUpdates", none, GuardCase::kNone},
                        GuardCase{"EnableUpdates", none, GuardCase::kNone},
                        GuardCase{"SetMaxCount", number, GuardCase::kNone},
                        GuardCase{"SetSearchScope", twoNils, GuardCase::kNone},
                        GuardCase{"GetSortOptionFlagsForAttribute", name, GuardCase::kZero},
                        GuardCase{"SetSortOptionFlagsForAttribute", nameAndNumber, GuardCase::kFalse},
                        GuardCase{"SetSortOrder", names, GuardCase::kFalse}),
        testing::Bool()));

// Every plain operation is one call to the service.
struct OperationCase {
  const char* name;
  std::vector<host::Value> (*arguments)();
  Calls calls;
};
void PrintTo(const OperationCase& row, std::ostream* out) {
  *out << row.name;
}

class Operation : public Query, public testing::WithParamInterface<OperationCase> {};

TEST_P(Operation, MakesTheseCalls) {
  start();
  const host::Value query = host::construct("MDQueryZNK", kAnything, lists(), sorting());
  const auto arguments = GetParam().arguments();
  EXPECT_EQ(GetParam().calls, warmCallsOf([&] { host::callWith(query, GetParam().name, arguments); }));
}

const Calls kAddOne = {"CFArrayGetValueAtIndex", "CFStringGetLength",     "CFStringGetCString",
                       "REALBuildString",        "REALSetStringEncoding", "RuntimeArrayDirectGetInsertProc",
                       "array insert",           "REALUnlockString"};

INSTANTIATE_TEST_SUITE_P(
    Plain, Operation,
    testing::Values(OperationCase{"Execute", number, {"MDQueryExecute"}},
                    OperationCase{"IsGatheringComplete", none, {"MDQueryIsGatheringComplete"}},
                    OperationCase{"ResultCount", none, {"MDQueryGetResultCount"}},
                    OperationCase{"Stop", none, {"MDQueryStop"}},
                    OperationCase{"DisableUpdates", none, {"MDQueryDisableUpdates"}},
                    OperationCase{"EnableUpdates", none, {"MDQueryEnableUpdates"}},
                    OperationCase{"SetMaxCount", number, {"MDQuerySetMaxCount"}},
                    OperationCase{"QueryString",
                                  none,
                                  {"MDQueryCopyQueryString", "CFStringGetLength", "CFStringGetCString",
                                   "REALBuildString", "REALSetStringEncoding", "CFRelease"}},
                    OperationCase{"ValueListAttributes", none,
                                  join({{"RuntimeArrayCreateSingleDimBoundedArray",
                                         "MDQueryCopyValueListAttributes", "CFArrayGetCount"},
                                        kAddOne,
                                        {"CFRelease"}})},
                    OperationCase{"SortingAttributes", none,
                                  join({{"RuntimeArrayCreateSingleDimBoundedArray",
                                         "MDQueryCopySortingAttributes", "CFArrayGetCount"},
                                        kAddOne,
                                        kAddOne,
                                        {"CFRelease"}})}));

TEST_F(Query, KnowsItsStringAndAttributes) {
  start();
  const host::Value query = host::construct("MDQueryZNK", kAnything, lists(), sorting());
  EXPECT_EQ(kAnything, host::call(query, "QueryString").text());
  EXPECT_EQ(host::kEncodingUtf8, host::call(query, "QueryString").encoding());
  EXPECT_EQ(Texts{"kMDItemFSSize"}, host::texts(host::call(query, "ValueListAttributes")));
  EXPECT_EQ((Texts{"kMDItemFSName", "kMDItemFSSize"}), host::texts(host::call(query, "SortingAttributes")));
}

TEST_F(Query, WithoutAttributesHasEmptyListsNotNil) {
  start();
  const host::Value query = host::construct("MDQueryZNK", kAnything);
  EXPECT_FALSE(host::call(query, "ValueListAttributes").isNil());
  EXPECT_EQ(0u, host::elements(host::call(query, "ValueListAttributes")).size());
  EXPECT_EQ(0u, host::elements(host::call(query, "SortingAttributes")).size());
}

TEST_F(Query, WithNilArraysIsMadeWithoutAttributes) {
  start();
  const host::Value query = host::construct("MDQueryZNK", kAnything, nullptr, nullptr);
  EXPECT_NE(0, handleOf(query));
  EXPECT_EQ(0u, host::elements(host::call(query, "ValueListAttributes")).size());
}

TEST_F(Query, StringIsNilWhenTheServiceHasNoCopy) {
  start();
  const host::Value query = host::construct("MDQueryZNK", kAnything);
  standin::failCall("MDQueryCopyQueryString", 1);
  EXPECT_TRUE(host::call(query, "QueryString").isNil());
}

TEST_F(Query, SetMaxCountLimitsTheResults) {
  ScratchFolder tree;
  for (const char* name : {"1", "2", "3", "4"}) tree.file(name);
  standin::setIndexedFolders({tree.path()});
  start();
  const host::Value query = host::construct("MDQueryZNK", kAnything);
  host::call(query, "SetMaxCount", 3);
  host::call(query, "Execute", 1);
  EXPECT_EQ(3, host::call(query, "ResultCount").integer());
}

TEST_F(Query, ExecutesOnce) {
  ScratchFolder tree;
  standin::setIndexedFolders({tree.path()});
  start();
  const host::Value query = host::construct("MDQueryZNK", kAnything);
  EXPECT_FALSE(host::call(query, "IsGatheringComplete").boolean());
  EXPECT_TRUE(host::call(query, "Execute", host::constant("MDQueryZNK", "kMDQuerySynchronous")).boolean());
  EXPECT_TRUE(host::call(query, "IsGatheringComplete").boolean());
  EXPECT_FALSE(host::call(query, "Execute", 1).boolean());
}

TEST_F(Query, TagIsUnlockedExactlyOnceByTheDestructor) {
  start();
  host::Value query = host::construct("MDQueryZNK", kAnything);
  host::set(query, "Tag", "mine");
  EXPECT_EQ("mine", host::get(query, "Tag").text());
  const Calls calls = callsOf([&] { query = {}; });
  EXPECT_EQ(join({kDestroy, {"resolve REALUnlockObject", "REALUnlockObject"}}), calls);
}

TEST_F(Query, WithoutAReferenceTheDestructorCallsNothing) {
  start();
  host::Value query = host::newInstance("MDQueryZNK");
  EXPECT_EQ(Calls(), callsOf([&] { query = {}; }));
}

TEST_F(Query, HandleIsTheServicesReferenceAndIsWrittenAsItIs) {
  start();
  const host::Value query = host::construct("MDQueryZNK", kAnything);
  const MDQueryRef reference = serviceQuery(query);
  EXPECT_EQ(MDQueryGetTypeID(), CFGetTypeID(reference));
  EXPECT_EQ(1, CFGetRetainCount(reference));
  host::set(query, "Handle", 0);
  EXPECT_EQ(1, CFGetRetainCount(reference));
  host::call(query, "ResultCount");
  EXPECT_EQ(Exceptions{kNilQuery}, host::takeExceptions());
  host::set(query, "Handle", static_cast<int32_t>(reinterpret_cast<intptr_t>(reference)));
  EXPECT_EQ(0, host::call(query, "ResultCount").integer());
}

// Events: what the registration leads to.

TEST_F(Query, RaisesFinishWhenGatheringIsCompleteAndNotAfterItsEnd) {
  ScratchFolder tree;
  standin::setIndexedFolders({tree.path()});
  start();
  int finished = 0;
  host::Value query = host::construct("MDQueryZNK", kAnything);
  host::setEventHandler(query, "Finish", [&](const std::vector<host::Value>& arguments) {
    EXPECT_EQ(0u, arguments.size());
    ++finished;
  });
  host::call(query, "Execute", 1);
  EXPECT_EQ(1, finished);
  const MDQueryRef reference = serviceQuery(query);
  CFRetain(reference);
  query = {};
  CFNotificationCenterPostNotification(CFNotificationCenterGetLocalCenter(), kMDQueryDidFinishNotification,
                                       reference, nullptr, true);
  EXPECT_EQ(1, finished);
  CFRelease(reference);
}

}  // namespace
