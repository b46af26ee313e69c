// A query as the files that make up its public functions know it.
#pragma once

#include <memory>

#include "standin/corefoundation/CFRuntime.h"
#include "standin/coreservices/metadata/query_run.h"
#include "standin/coreservices/metadata/query_state.h"
#include "standin/coreservices/services.h"

namespace standin::metadata {

struct Query {
  QueryState state;
  std::unique_ptr<QueryRun> run;  // from MDQueryExecute on, unless it was stopped; it uses the state
};

// What must be a query: anything else ends the process in the name of `call`.
Query& queryOf(const char* call, MDQueryRef query);
QueryState& stateOf(const char* call, MDQueryRef query);

}  // namespace standin::metadata

struct __MDQuery {
  CFRuntimeBase base;
  standin::metadata::Query* query;
};
