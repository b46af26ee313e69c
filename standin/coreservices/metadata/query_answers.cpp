// The public functions that tell what a query found, and in which order.
#include "standin/coreservices/metadata/checks.h"
#include "standin/coreservices/metadata/item.h"
#include "standin/coreservices/metadata/planned_answers.h"
#include "standin/coreservices/metadata/query.h"
#include "standin/coreservices/metadata/undefined.h"

using standin::Gate;
using namespace standin::metadata;

namespace {

bool isIndex(const QueryState& state, CFIndex index) {
  return index >= 0 && static_cast<size_t>(index) < state.results.size();
}

std::string atIndex(const QueryState& state, CFIndex index) {
  return "what is at index " + std::to_string(index) + " of " + std::to_string(state.results.size()) +
         " results";
}

constexpr const char* kNotAskedFor = "the value of an attribute that the query wasn't made with";

}  // namespace

CFIndex MDQueryGetResultCount(MDQueryRef query) {
  const Gate gate(__func__);
  const QueryState& state = stateOf(__func__, query);
  return gate.fails() ? 0 : static_cast<CFIndex>(state.results.size());
}

const void* MDQueryGetResultAtIndex(MDQueryRef query, CFIndex idx) {
  const Gate gate(__func__);
  QueryState& state = stateOf(__func__, query);
  if (gate.fails()) return nullptr;
  if (!isIndex(state, idx)) return undefinedItem(__func__, atIndex(state, idx));
  return state.results.itemAt(static_cast<size_t>(idx));
}

CFIndex MDQueryGetIndexOfResult(MDQueryRef query, const void* result) {
  const Gate gate(__func__);
  const QueryState& state = stateOf(__func__, query);
  checkItem(__func__, result);
  if (gate.fails()) return kCFNotFound;
  const auto item = static_cast<MDItemRef>(const_cast<void*>(result));
  const size_t index = state.results.indexOf(pathOfItem(item));
  return index < state.results.size() ? static_cast<CFIndex>(index) : CFIndex{kCFNotFound};
}

void* MDQueryGetAttributeValueOfResultAtIndex(MDQueryRef query, CFStringRef name, CFIndex idx) {
  const Gate gate(__func__);
  QueryState& state = stateOf(__func__, query);
  checkString(__func__, name);
  if (const CFTypeRef planned = borrowPlannedAnswer(__func__)) return const_cast<void*>(planned);
  if (gate.fails()) return nullptr;
  CFTypeRef value = nullptr;
  if (!isIndex(state, idx)) {
    value = undefinedValue(__func__, atIndex(state, idx));
  } else if (!state.results.hasValuesOf(name)) {
    value = undefinedValue(__func__, kNotAskedFor);
  } else {
    value = state.results.valueAt(static_cast<size_t>(idx), name);
  }
  return const_cast<void*>(value);
}

CFArrayRef MDQueryCopyValuesOfAttribute(MDQueryRef query, CFStringRef name) {
  const Gate gate(__func__);
  QueryState& state = stateOf(__func__, query);
  checkString(__func__, name);
  if (const CFTypeRef planned = takePlannedAnswer(__func__)) return static_cast<CFArrayRef>(planned);
  if (gate.fails()) return nullptr;
  if (!state.results.listsValuesOf(name)) return copyUndefinedValues(__func__, kNotAskedFor);
  return state.results.copyValuesOf(name);
}

CFIndex MDQueryGetCountOfResultsWithAttributeValue(MDQueryRef query, CFStringRef name, CFTypeRef value) {
  const Gate gate(__func__);
  QueryState& state = stateOf(__func__, query);
  checkString(__func__, name);
  if (gate.fails()) return 0;
  if (!state.results.listsValuesOf(name)) return undefinedCount(__func__, kNotAskedFor);
  return state.results.countWithValue(name, value);
}

// Results that are there already are put into the new order. From then on the sorting attributes are those.
Boolean MDQuerySetSortOrder(MDQueryRef query, CFArrayRef sortingAttrs) {
  const Gate gate(__func__);
  QueryState& state = stateOf(__func__, query);
  checkStrings(__func__, sortingAttrs);
  if (gate.fails() || !sortingAttrs || !state.results.setSortOrder(sortingAttrs)) return false;
  state.setSortingAttributes(sortingAttrs);
  return true;
}

// 0 also for an attribute that isn't a sorting attribute.
uint32_t MDQueryGetSortOptionFlagsForAttribute(MDQueryRef query, CFStringRef fieldName) {
  const Gate gate(__func__);
  const QueryState& state = stateOf(__func__, query);
  checkString(__func__, fieldName);
  return gate.fails() ? 0 : state.results.sortFlags(fieldName);
}

Boolean MDQuerySetSortOptionFlagsForAttribute(MDQueryRef query, CFStringRef fieldName, uint32_t flags) {
  const Gate gate(__func__);
  QueryState& state = stateOf(__func__, query);
  checkString(__func__, fieldName);
  return !gate.fails() && state.results.setSortFlags(fieldName, flags);
}
