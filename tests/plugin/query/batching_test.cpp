// The batching parameters of a query.
#include <CoreServices/CoreServices.h>

#include "tests/plugin/fixture.h"

namespace {

const char* const kFields[] = {"firstMaxNum",   "firstMaxMS",   "progressMaxNum",
                               "progressMaxMS", "updateMaxNum", "updateMaxMS"};

typedef std::vector<size_t> Numbers;

class Batching : public PluginTest {
 protected:
  static host::Value query() { return host::construct("MDQueryZNK", "kMDItemFSName == \"*\""); }

  // What the service itself says.
  static Numbers serviceParameters(const host::Value& query) {
    const auto handle =
        reinterpret_cast<MDQueryRef>(static_cast<intptr_t>(host::get(query, "Handle").integer()));
    const MDQueryBatchingParams is = MDQueryGetBatchingParameters(handle);
    return {is.first_max_num,   is.first_max_ms,   is.progress_max_num,
            is.progress_max_ms, is.update_max_num, is.update_max_ms};
  }

  static host::Value parameters(const std::vector<int32_t>& numbers) {
    const host::Value made = host::newInstance("MDQueryBatchingParamsZNK");
    for (size_t i = 0; i < std::size(kFields); ++i) host::set(made, kFields[i], numbers[i]);
    return made;
  }

  static Numbers fieldsOf(const host::Value& parameters) {
    Numbers numbers;
    for (const char* field : kFields) {
      numbers.push_back(static_cast<uint32_t>(host::get(parameters, field).integer()));
    }
    return numbers;
  }
};

TEST_F(Batching, ReadsTheServicesSixNumbersInTheirOrder) {
  start();
  const host::Value query = this->query();
  const auto handle =
      reinterpret_cast<MDQueryRef>(static_cast<intptr_t>(host::get(query, "Handle").integer()));
  MDQuerySetBatchingParameters(handle, {1, 2, 3, 4, 5, 6});
  const host::Value parameters = host::get(query, "BatchingParameters");
  EXPECT_TRUE(host::isA(parameters, "MDQueryBatchingParamsZNK"));
  EXPECT_EQ((Numbers{1, 2, 3, 4, 5, 6}), fieldsOf(parameters));
}

TEST_F(Batching, WritesTheSixNumbersInTheirOrder) {
  start();
  const host::Value query = this->query();
  host::set(query, "BatchingParameters", parameters({6, 5, 4, 3, 2, 1}));
  EXPECT_EQ((Numbers{6, 5, 4, 3, 2, 1}), serviceParameters(query));
}

TEST_F(Batching, ChangingOneFieldAndAssigningBackChangesOnlyThatField) {
  start();
  const host::Value query = this->query();
  for (size_t i = 0; i < std::size(kFields); ++i) {
    Numbers expected = serviceParameters(query);
    const host::Value parameters = host::get(query, "BatchingParameters");
    host::set(parameters, kFields[i], static_cast<int32_t>(1000 + i));
    host::set(query, "BatchingParameters", parameters);
    expected[i] = 1000 + i;
    EXPECT_EQ(expected, serviceParameters(query)) << kFields[i];
  }
}

TEST_F(Batching, IsASnapshotThatChangesNothingUntilItIsAssigned) {
  start();
  const host::Value query = this->query();
  const Numbers before = serviceParameters(query);
  const host::Value parameters = host::get(query, "BatchingParameters");
  host::set(parameters, "progressMaxNum", 12345);
  EXPECT_EQ(before, serviceParameters(query));
  EXPECT_EQ(before, fieldsOf(host::get(query, "BatchingParameters")));
}

TEST_F(Batching, AssigningNilLeavesTheParameters) {
  start();
  const host::Value query = this->query();
  const Numbers before = serviceParameters(query);
  EXPECT_EQ(Calls(), callsOf([&] { host::set(query, "BatchingParameters", nullptr); }));
  EXPECT_EQ(before, serviceParameters(query));
}

TEST_F(Batching, AssigningANewInstanceSetsAllSixTo0) {
  start();
  const host::Value query = this->query();
  host::set(query, "BatchingParameters", parameters({1, 2, 3, 4, 5, 6}));
  host::set(query, "BatchingParameters", host::newInstance("MDQueryBatchingParamsZNK"));
  EXPECT_EQ((Numbers{0, 0, 0, 0, 0, 0}), serviceParameters(query));
}

TEST_F(Batching, PassesNumbersOutOfAnyRangeAsTheyAre) {
  start();
  const host::Value query = this->query();
  host::set(query, "BatchingParameters", parameters({-1, INT32_MIN, INT32_MAX, 0, -2, 1}));
  EXPECT_EQ((Numbers{0xFFFFFFFF, 0x80000000, 0x7FFFFFFF, 0, 0xFFFFFFFE, 1}), serviceParameters(query));
  EXPECT_EQ((Numbers{0xFFFFFFFF, 0x80000000, 0x7FFFFFFF, 0, 0xFFFFFFFE, 1}),
            fieldsOf(host::get(query, "BatchingParameters")));
}

TEST_F(Batching, OfAQueryWithoutAReferenceRaises) {
  start();
  const host::Value query = host::newInstance("MDQueryZNK");
  EXPECT_TRUE(host::get(query, "BatchingParameters").isNil());
  EXPECT_EQ(Exceptions{kNilQuery}, host::takeExceptions());
  for (const bool unwinding : {false, true}) {
    host::settings().raiseByUnwinding = unwinding;
    host::set(query, "BatchingParameters", parameters({1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(Exceptions{kNilQuery}, host::takeExceptions());
    host::set(query, "BatchingParameters", nullptr);
    EXPECT_EQ(Exceptions{kNilQuery}, host::takeExceptions()) << "the query is looked at first";
  }
}

TEST_F(Batching, IsNilWhereTheHostMakesNoInstance) {
  host::Settings settings;
  settings.unknownClasses = {"MDQueryBatchingParamsZNK"};
  start(settings);
  EXPECT_TRUE(host::get(query(), "BatchingParameters").isNil());
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(Batching, IsReadAndWrittenWithTheseCalls) {
  start();
  const host::Value query = this->query();
  host::Value parameters;
  EXPECT_EQ((Calls{"MDQueryGetBatchingParameters", "resolve PluginNewInstance", "PluginNewInstance"}),
            callsOf([&] { parameters = host::get(query, "BatchingParameters"); }));
  EXPECT_EQ(Calls{"MDQuerySetBatchingParameters"},
            callsOf([&] { host::set(query, "BatchingParameters", parameters); }));
}

}  // namespace
