// The classes as a host sees them, member by member and in order, for every control version.
#include "tests/plugin/fixture.h"

namespace {

const char* const kDeclaredKeys[] = {
#include "tests/plugin/tables/declared_keys.inc"
};

class Tables : public PluginTest, public testing::WithParamInterface<double> {
 protected:
  void SetUp() override { start(settingsOf(GetParam())); }

  static std::vector<std::string> texts(const char* className, host::MemberKind kind) {
    std::vector<std::string> texts;
    for (const auto& member : host::members(className)) {
      if (member.kind == kind) texts.push_back(member.text);
    }
    return texts;
  }

  // Which of a class's properties host code can assign.
  static std::vector<std::string> assignable(const char* className) {
    std::vector<std::string> names;
    for (const auto& member : host::members(className)) {
      if (member.assignable) names.push_back(member.name);
    }
    return names;
  }
};

TEST_P(Tables, AreTheItems) {
  EXPECT_EQ((Texts{"Handle As Integer", "Tag As Variant", "DisplayName As String", "FSName As String",
                   "Path As String", "FSSize As Int64"}),
            texts("MDItemZNK", host::MemberKind::property));
  EXPECT_EQ((Texts{"Handle", "Tag"}), assignable("MDItemZNK"));
  EXPECT_EQ((Texts{"GetAttributes(names() as string) as dictionary",
                   "GetAttribute(name as string) as variant", "Constructor(path as folderitem)",
                   "AttributeNames as string()", "AttributeString(name as string) as string",
                   "AttributeBoolean(name as string) as boolean", "AttributeDouble(name as string) as double",
                   "AttributeStringArray(name as string) as string()"}),
            texts("MDItemZNK", host::MemberKind::method));
  std::vector<std::string> shared = {"DisplayNameForAttribute(name as string) as string",
                                     "DisplayDescriptionForAttribute(name as string) as string",
                                     "AllAttributes as string()", "AttributeType(name as string) as string",
                                     "AttributeMultiValued(name as string) as boolean"};
  for (const char* key : kDeclaredKeys) shared.push_back(key + std::string(" as string"));
  EXPECT_EQ(174u, shared.size());
  EXPECT_EQ(shared, texts("MDItemZNK", host::MemberKind::sharedMethod));
  EXPECT_EQ(6u + 8u + 174u, host::members("MDItemZNK").size());
}

TEST_P(Tables, AreTheQuerys) {
  EXPECT_EQ((Texts{"Handle As Integer", "Tag As Variant"}), texts("MDQueryZNK", host::MemberKind::property));
  EXPECT_EQ((Texts{"Handle", "Tag", "BatchingParameters"}), assignable("MDQueryZNK"));
  EXPECT_EQ((Texts{"CountOfResultsWithAttributeValue(name as string, Value as variant) as UInt32",
                   "AttributeValueOfResultAtIndex(name as string, index as UInt32) as variant",
                   "ValuesOfAttribute(name as string) as variant()",
                   "IndexOfResult(it as MDItemZNK) as integer",
                   "Constructor(queryString as string)",
                   "Constructor(queryString as string, valueListAttributes() as string)",
                   "Constructor(queryString as string, valueListAttributes() as string, sortingAttributes() "
                   "as string)",
                   "Constructor(query as MDQueryZNK, queryString as string)",
                   "Constructor(query as MDQueryZNK, queryString as string, valueListAttributes() as string)",
                   "Constructor(query as MDQueryZNK, queryString as string, valueListAttributes() as string, "
                   "sortingAttributes() as string)",
                   "ResultAtIndex(index as integer) as MDItemZNK",
                   "Results(limit as integer = -1) as MDItemZNK()",
                   "BatchingParameters as MDQueryBatchingParamsZNK",
                   "Execute(flags as integer) as boolean",
                   "IsGatheringComplete as boolean",
                   "ResultCount as integer",
                   "ValueListAttributes as string()",
                   "SortingAttributes as string()",
                   "QueryString as string",
                   "Stop",
                   "DisableUpdates",
                   "EnableUpdates",
                   "SetMaxCount(size as integer)",
                   "SetSearchScope(paths() as folderitem, options() as string)",
                   "GetSortOptionFlagsForAttribute(fieldName as string) as integer",
                   "SetSortOptionFlagsForAttribute(fieldName as string, flags as UInt32) as Boolean",
                   "SetSortOrder(sortingAttrs() as string) as Boolean"}),
            texts("MDQueryZNK", host::MemberKind::method));
  EXPECT_EQ(
      (Texts{"Progress(AddedItems() as MDItemZNK, ChangedItems() as MDItemZNK, RemovedItems() as MDItemZNK)",
             "Finish()",
             "Update(AddedItems() as MDItemZNK, ChangedItems() as MDItemZNK, RemovedItems() as MDItemZNK)"}),
      texts("MDQueryZNK", host::MemberKind::event));
  EXPECT_EQ(
      (Texts{"kMDQueryReverseSortOrderFlag=1", "kMDQuerySynchronous=1", "kMDQueryWantsUpdates=4",
             "kMDQueryScopeHome=\"kMDQueryScopeHome\"", "kMDQueryScopeComputer=\"kMDQueryScopeComputer\"",
             "kMDQueryScopeNetwork=\"kMDQueryScopeNetwork\"",
             "kMDQueryScopeAllIndexed=\"kMDQueryScopeAllIndexed\"",
             "kMDQueryScopeComputerIndexed=\"kMDQueryScopeComputerIndexed\"",
             "kMDQueryScopeNetworkIndexed=\"kMDQueryScopeNetworkIndexed\""}),
      texts("MDQueryZNK", host::MemberKind::constant));
  EXPECT_EQ(2u + 27u + 3u + 9u, host::members("MDQueryZNK").size());
}

TEST_P(Tables, AreTheBatchingParameters) {
  EXPECT_EQ((Texts{"firstMaxNum As Integer", "firstMaxMS As Integer", "progressMaxNum As Integer",
                   "progressMaxMS As Integer", "updateMaxNum As Integer", "updateMaxMS As Integer"}),
            texts("MDQueryBatchingParamsZNK", host::MemberKind::property));
  EXPECT_EQ(6u, host::members("MDQueryBatchingParamsZNK").size());
}

// For people: what a host of this version sees. The other tests compare it.
TEST_P(Tables, AreListed) {
  size_t rows = 0;
  for (const auto& name : host::registeredClasses()) {
    std::cout << "host " << GetParam() << ", class " << name << "\n";
    for (const auto& member : host::members(name)) std::cout << "  " << ++rows << ". " << member.text << "\n";
  }
  EXPECT_EQ(188u + 41u + 6u, rows);
}

TEST_P(Tables, GiveConstantsTheirValues) {
  EXPECT_EQ(1, host::constant("MDQueryZNK", "kMDQueryReverseSortOrderFlag").integer());
  EXPECT_EQ(1, host::constant("MDQueryZNK", "kMDQuerySynchronous").integer());
  EXPECT_EQ(4, host::constant("MDQueryZNK", "kMDQueryWantsUpdates").integer());
  for (const char* name :
       {"kMDQueryScopeHome", "kMDQueryScopeComputer", "kMDQueryScopeNetwork", "kMDQueryScopeAllIndexed",
        "kMDQueryScopeComputerIndexed", "kMDQueryScopeNetworkIndexed"}) {
    EXPECT_EQ(name, host::constant("MDQueryZNK", name).text());
  }
}

TEST_P(Tables, GiveNewBatchingParametersSixFieldsOfTheirOwnThatStartAt0) {
  const host::Value parameters = host::newInstance("MDQueryBatchingParamsZNK");
  const char* const names[] = {"firstMaxNum",   "firstMaxMS",   "progressMaxNum",
                               "progressMaxMS", "updateMaxNum", "updateMaxMS"};
  for (const char* name : names) EXPECT_EQ(0, host::get(parameters, name).integer()) << name;
  for (int32_t i = 0; i < 6; ++i) host::set(parameters, names[i], i + 1);
  const auto fields = static_cast<const int32_t*>(host::instanceData(parameters));
  for (int32_t i = 0; i < 6; ++i) {
    EXPECT_EQ(i + 1, host::get(parameters, names[i]).integer()) << names[i];
    EXPECT_EQ(i + 1, fields[i]) << names[i];
  }
}

INSTANTIATE_TEST_SUITE_P(ControlVersions9To12, Tables, testing::Values(2011.04, 2012.0, 2013.0, 2014.1));

}  // namespace
