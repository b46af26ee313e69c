// The public functions that tell what a query found, and in which order.
#include "standin/coreservices/metadata/checks.h"
#include "standin/coreservices/metadata/item.h"
#include "standin/coreservices/metadata/planned_answers.h"
#include "standin/coreservices/metadata/query.h"

using standin::Gate;
using namespace standin::metadata;

namespace {

bool isIndex(const QueryState& state, CFIndex index) {
  return index >= 0 && static_cast<size_t>(index) < state.results.size();
}

}  // namespace

CFIndex MDQueryGetResultCount(MDQueryRef query) {
  Gate gate{"MDQueryGetResultCount"};
  const QueryState& state = stateOf("MDQueryGetResultCount", query);
  return gate.fails() ? 0 : static_cast<CFIndex>(state.results.size());
}

const void* MDQueryGetResultAtIndex(MDQueryRef query, CFIndex idx) {
  Gate gate{"MDQueryGetResultAtIndex"};
  QueryState& state = stateOf("MDQueryGetResultAtIndex", query);
  if (gate.fails() || !isIndex(state, idx)) return nullptr;
  return state.results.itemAt(static_cast<size_t>(idx));
}

CFIndex MDQueryGetIndexOfResult(MDQueryRef query, const void* result) {
  Gate gate{"MDQueryGetIndexOfResult"};
  const QueryState& state = stateOf("MDQueryGetIndexOfResult", query);
  checkItem("MDQueryGetIndexOfResult", result);
  if (gate.fails()) return kCFNotFound;
  const auto item = static_cast<MDItemRef>(const_cast<void*>(result));
  const size_t index = state.results.indexOf(pathOfItem(item));
  return index < state.results.size() ? static_cast<CFIndex>(index) : CFIndex{kCFNotFound};
}

void* MDQueryGetAttributeValueOfResultAtIndex(MDQueryRef query, CFStringRef name, CFIndex idx) {
  constexpr const char* kCall = "MDQueryGetAttributeValueOfResultAtIndex";
  Gate gate{kCall};
  QueryState& state = stateOf(kCall, query);
  checkString(kCall, name);
  if (const CFTypeRef planned = borrowPlannedAnswer(kCall)) return const_cast<void*>(planned);
  if (gate.fails() || !isIndex(state, idx)) return nullptr;
  return const_cast<void*>(state.results.valueAt(static_cast<size_t>(idx), name));
}

CFArrayRef MDQueryCopyValuesOfAttribute(MDQueryRef query, CFStringRef name) {
  constexpr const char* kCall = "MDQueryCopyValuesOfAttribute";
  Gate gate{kCall};
  QueryState& state = stateOf(kCall, query);
  checkString(kCall, name);
  if (const CFTypeRef planned = takePlannedAnswer(kCall)) return static_cast<CFArrayRef>(planned);
  return gate.fails() ? nullptr : state.results.copyValuesOf(name);
}

CFIndex MDQueryGetCountOfResultsWithAttributeValue(MDQueryRef query, CFStringRef name, CFTypeRef value) {
  constexpr const char* kCall = "MDQueryGetCountOfResultsWithAttributeValue";
  Gate gate{kCall};
  QueryState& state = stateOf(kCall, query);
  checkString(kCall, name);
  if (!value) standin::die(kCall, "the value is null");
  return gate.fails() ? 0 : state.results.countWithValue(name, value);
}

// Results that are there already are put into the new order.
Boolean MDQuerySetSortOrder(MDQueryRef query, CFArrayRef sortingAttrs) {
  constexpr const char* kCall = "MDQuerySetSortOrder";
  Gate gate{kCall};
  QueryState& state = stateOf(kCall, query);
  checkStrings(kCall, sortingAttrs);
  return !gate.fails() && sortingAttrs && state.results.setSortOrder(sortingAttrs);
}

// 0 also for an attribute that isn't a sorting attribute.
uint32_t MDQueryGetSortOptionFlagsForAttribute(MDQueryRef query, CFStringRef fieldName) {
  constexpr const char* kCall = "MDQueryGetSortOptionFlagsForAttribute";
  Gate gate{kCall};
  const QueryState& state = stateOf(kCall, query);
  checkString(kCall, fieldName);
  return gate.fails() ? 0 : state.results.sortFlags(fieldName);
}

Boolean MDQuerySetSortOptionFlagsForAttribute(MDQueryRef query, CFStringRef fieldName, uint32_t flags) {
  constexpr const char* kCall = "MDQuerySetSortOptionFlagsForAttribute";
  Gate gate{kCall};
  QueryState& state = stateOf(kCall, query);
  checkString(kCall, fieldName);
  return !gate.fails() && state.results.setSortFlags(fieldName, flags);
}
