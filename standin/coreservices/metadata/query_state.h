// What a query was made with, what it was told since, and what it has found.
#pragma once

#include <optional>
#include <vector>

#include "standin/coreservices/language/expression.h"
#include "standin/coreservices/metadata/query_results.h"
#include "standin/coreservices/metadata/scope.h"
#include "standin/coreservices/services.h"

namespace standin::metadata {

inline constexpr MDQueryBatchingParams kUsualBatches = {100, 50, 5000, 250, 1000, 250};

struct QueryState {
  // Copies the text and the arrays, which may be null.
  QueryState(CFStringRef text, CFArrayRef valueListAttributes, CFArrayRef sortingAttributes,
             ExpressionRef expression);
  ~QueryState();
  QueryState(const QueryState&) = delete;
  QueryState& operator=(const QueryState&) = delete;

  void setSortingAttributes(CFArrayRef attributes);  // copies them

  const CFStringRef text;
  const CFArrayRef valueListAttributes;  // null where none were given
  CFArrayRef sortingAttributes;          // those in use; the same
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
};

}  // namespace standin::metadata
