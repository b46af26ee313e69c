// A query as the files that make up its public functions know it.
#pragma once

#include <memory>
#include <optional>

#include "standin/corefoundation/CFRuntime.h"
#include "standin/coreservices/language/expression.h"
#include "standin/coreservices/metadata/query_results.h"
#include "standin/coreservices/metadata/query_run.h"
#include "standin/coreservices/metadata/scope.h"
#include "standin/coreservices/services.h"

namespace standin::metadata {

inline constexpr MDQueryBatchingParams kUsualBatches = {100, 50, 5000, 250, 1000, 250};

struct QueryState {
  QueryState(CFStringRef text, CFArrayRef valueListAttributes, CFArrayRef sortingAttributes,
             ExpressionRef expression);
  ~QueryState();

  const CFStringRef text;
  const CFArrayRef valueListAttributes;  // null where none were given
  const CFArrayRef sortingAttributes;    // the same
  ExpressionRef expression;              // from MDQueryExecute on with the times that were fixed then
  QueryResults results;
  std::optional<Scope> scope;
  std::vector<Scope> outerScopes;  // of the queries that this one is a subset of
  CFIndex maximum = 0;             // 0 or less: no limit
  MDQueryBatchingParams batches = kUsualBatches;
  int updatesDisabled = 0;
  bool executed = false;
  bool gathered = false;
  bool stopped = false;
  std::unique_ptr<QueryRun> run;  // from MDQueryExecute on, unless it was stopped
};

// The state of what must be a query: anything else ends the process in the name of `call`.
QueryState& stateOf(const char* call, MDQueryRef query);

}  // namespace standin::metadata

struct __MDQuery {
  CFRuntimeBase base;
  standin::metadata::QueryState* state;
};
