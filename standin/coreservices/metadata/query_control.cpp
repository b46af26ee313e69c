// The public functions that say how a query runs.
#include <utility>

#include "standin/coreservices/metadata/checks.h"
#include "standin/coreservices/metadata/held.h"
#include "standin/coreservices/metadata/query.h"

using standin::Gate;
using namespace standin::metadata;

namespace {

// A caller holds a reference for the time of its call. Where an observer has released it all the same, nobody
// is left to see what else is gathered.
bool isWanted(MDQueryRef query) {
  return CFGetRetainCount(query) > 1;
}

void gatherNow(MDQueryRef query, const QueryState& state) {
  constexpr double kForever = 1e9;
  while (state.run && state.run->isGathering() && isWanted(query)) {
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, kForever, true);
  }
}

}  // namespace

Boolean MDQueryExecute(MDQueryRef query, CFOptionFlags optionFlags) {
  Gate gate{"MDQueryExecute"};
  QueryState& state = stateOf("MDQueryExecute", query);
  if (gate.fails() || state.executed || state.stopped) return false;
  const Held held(query);
  const bool synchronous = (optionFlags & kMDQuerySynchronous) != 0;
  state.executed = true;
  state.expression = resolve(state.expression, Date{CFAbsoluteTimeGetCurrent()});
  state.run = std::make_unique<QueryRun>(query, state, !synchronous && (optionFlags & kMDQueryWantsUpdates));
  if (synchronous) gatherNow(query, state);
  return true;
}

// What a query has gathered stays; it gathers nothing any more, and can't be executed any more either.
void MDQueryStop(MDQueryRef query) {
  Gate gate{"MDQueryStop"};
  QueryState& state = stateOf("MDQueryStop", query);
  if (gate.fails()) return;
  state.stopped = true;
  state.run.reset();
}

void MDQueryDisableUpdates(MDQueryRef query) {
  Gate gate{"MDQueryDisableUpdates"};
  QueryState& state = stateOf("MDQueryDisableUpdates", query);
  if (!gate.fails()) ++state.updatesDisabled;
}

void MDQueryEnableUpdates(MDQueryRef query) {
  Gate gate{"MDQueryEnableUpdates"};
  QueryState& state = stateOf("MDQueryEnableUpdates", query);
  if (gate.fails() || state.updatesDisabled == 0) return;
  if (--state.updatesDisabled == 0 && state.run) state.run->updatesEnabled();
}

Boolean MDQueryIsGatheringComplete(MDQueryRef query) {
  Gate gate{"MDQueryIsGatheringComplete"};
  const QueryState& state = stateOf("MDQueryIsGatheringComplete", query);
  return !gate.fails() && state.gathered;
}

MDQueryBatchingParams MDQueryGetBatchingParameters(MDQueryRef query) {
  Gate gate{"MDQueryGetBatchingParameters"};
  const QueryState& state = stateOf("MDQueryGetBatchingParameters", query);
  return gate.fails() ? MDQueryBatchingParams{} : state.batches;
}

// They hold from the next batch on.
void MDQuerySetBatchingParameters(MDQueryRef query, MDQueryBatchingParams params) {
  Gate gate{"MDQuerySetBatchingParameters"};
  QueryState& state = stateOf("MDQuerySetBatchingParameters", query);
  if (!gate.fails()) state.batches = params;
}

void MDQuerySetMaxCount(MDQueryRef query, CFIndex size) {
  Gate gate{"MDQuerySetMaxCount"};
  QueryState& state = stateOf("MDQuerySetMaxCount", query);
  if (!gate.fails() && !state.executed) state.maximum = size;
}

void MDQuerySetSearchScope(MDQueryRef query, CFArrayRef scopeDirectories, OptionBits scopeOptions) {
  constexpr const char* kCall = "MDQuerySetSearchScope";
  Gate gate{kCall};
  QueryState& state = stateOf(kCall, query);
  Scope scope = scopeOf(kCall, scopeDirectories);
  if (scopeOptions != 0) standin::die(kCall, "there are no options for scopes");
  noteScope(scopeDirectories, scopeOptions);
  if (!gate.fails() && !state.executed) state.scope = std::move(scope);
}
