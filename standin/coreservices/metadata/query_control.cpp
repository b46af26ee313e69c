// The public functions that say how a query runs.
#include <utility>

#include "standin/coreservices/metadata/checks.h"
#include "standin/coreservices/metadata/held.h"
#include "standin/coreservices/metadata/query.h"
#include "standin/coreservices/metadata/undefined.h"

using standin::Gate;
using namespace standin::metadata;

namespace {

// A caller holds a reference for the time of its call. Where an observer has released it all the same, nobody
// is left to see what else is gathered.
bool isWanted(MDQueryRef query) {
  return CFGetRetainCount(query) > 1;
}

// Results that are held back stay so when the caller goes on.
void gatherNow(MDQueryRef query, const Query& implementation) {
  constexpr double kForever = 1e9;
  const auto gathers = [&run = implementation.run] { return run && run->isGathering() && !run->isHeldUp(); };
  while (gathers() && isWanted(query)) {
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, kForever, true);
  }
}

}  // namespace

Boolean MDQueryExecute(MDQueryRef query, CFOptionFlags optionFlags) {
  const Gate gate(__func__);
  Query& implementation = queryOf(__func__, query);
  QueryState& state = implementation.state;
  if (gate.fails() || state.executed || state.stopped) return false;
  const Held held(query);
  const bool synchronous = (optionFlags & kMDQuerySynchronous) != 0;
  state.executed = true;
  const ExpressionRef asked = std::exchange(state.expression, resolve(state.expression, currentTime()));
  const bool wantsUpdates = !synchronous && (optionFlags & kMDQueryWantsUpdates);
  implementation.run = std::make_unique<QueryRun>(query, state, asked, wantsUpdates);
  if (synchronous) gatherNow(query, implementation);
  return true;
}

// What a query has gathered stays; it gathers nothing any more, and can't be executed any more either. It has
// no run any more when observers are told of the last results: they may stop it again.
void MDQueryStop(MDQueryRef query) {
  const Gate gate(__func__);
  Query& implementation = queryOf(__func__, query);
  if (gate.fails()) return;
  implementation.state.stopped = true;
  const Held held(query);
  if (implementation.run) stop(std::move(implementation.run));
}

void MDQueryDisableUpdates(MDQueryRef query) {
  const Gate gate(__func__);
  QueryState& state = stateOf(__func__, query);
  if (!gate.fails()) ++state.updatesDisabled;
}

void MDQueryEnableUpdates(MDQueryRef query) {
  const Gate gate(__func__);
  Query& implementation = queryOf(__func__, query);
  int& disabled = implementation.state.updatesDisabled;
  if (gate.fails() || disabled == 0) return;
  if (--disabled == 0 && implementation.run) implementation.run->updatesEnabled();
}

Boolean MDQueryIsGatheringComplete(MDQueryRef query) {
  const Gate gate(__func__);
  const QueryState& state = stateOf(__func__, query);
  return !gate.fails() && state.gathered;
}

MDQueryBatchingParams MDQueryGetBatchingParameters(MDQueryRef query) {
  const Gate gate(__func__);
  const QueryState& state = stateOf(__func__, query);
  return gate.fails() ? MDQueryBatchingParams{} : state.batches;
}

// They hold from the next batch on.
void MDQuerySetBatchingParameters(MDQueryRef query, MDQueryBatchingParams params) {
  const Gate gate(__func__);
  QueryState& state = stateOf(__func__, query);
  if (!gate.fails()) state.batches = params;
}

void MDQuerySetMaxCount(MDQueryRef query, CFIndex size) {
  const Gate gate(__func__);
  QueryState& state = stateOf(__func__, query);
  if (gate.fails()) return;
  if (!state.executed || undefinedEffect(__func__, "a maximum count after MDQueryExecute")) {
    state.maximum = size;
  }
}

void MDQuerySetSearchScope(MDQueryRef query, CFArrayRef scopeDirectories, OptionBits scopeOptions) {
  const Gate gate(__func__);
  QueryState& state = stateOf(__func__, query);
  Scope scope = scopeOf(__func__, scopeDirectories);
  if (scopeOptions != 0) standin::die(__func__, "there are no options for scopes");
  noteScope(scopeDirectories, scopeOptions);
  if (!gate.fails() && !state.executed) state.scope = std::move(scope);
}
