// Queries: what to look for, and what was found. Results are made into items one by one, when they are asked
// for.
#include <algorithm>
#include <memory>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "checks.h"
#include "item.h"
#include "query_parser.h"
#include "result_store.h"
#include "search.h"
#include "services.h"
#include "settings.h"
#include "sorting.h"
#include "standin/corefoundation/CFRuntime.h"

namespace {

constexpr uint32_t kReverseSortOrder = 1;

struct SortAttribute {
  std::u16string name;
  uint32_t flags = 0;
};

struct QueryState {
  CFStringRef text = nullptr;
  CFArrayRef valueListAttributes = nullptr;
  CFArrayRef sortingAttributes = nullptr;
  std::vector<SortAttribute> sortable;  // the sorting attributes named at creation
  std::vector<size_t> sortOrder;        // which of them, the primary key first
  standin::metadata::ExpressionRef expression;
  standin::metadata::ResultStore results;
  std::vector<MDItemRef> items;  // of the results that were looked at; null for the others
  CFIndex maximum = 0;           // 0: no limit
  int updatesDisabled = 0;
  bool executed = false;
  bool gathered = false;
  bool stopped = false;
};

}  // namespace

struct __MDQuery {
  CFRuntimeBase base;
  QueryState* state;
};

namespace {

using standin::Gate;
using namespace standin::metadata;

MDQueryRef queryOf(CFTypeRef cf) {
  return const_cast<MDQueryRef>(static_cast<const __MDQuery*>(cf));
}

// Keeps an object alive for the time of a scope.
class Held {
 public:
  explicit Held(CFTypeRef cf) : cf_(CFRetain(cf)) {}
  ~Held() { CFRelease(cf_); }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

 private:
  const CFTypeRef cf_;
};

void releaseIfAny(CFTypeRef cf) {
  if (cf) CFRelease(cf);
}

void finalizeQuery(CFTypeRef cf) {
  QueryState* const state = std::exchange(queryOf(cf)->state, nullptr);
  if (!state) return;
  for (const MDItemRef item : state->items) releaseIfAny(item);
  releaseIfAny(state->text);
  releaseIfAny(state->valueListAttributes);
  releaseIfAny(state->sortingAttributes);
  delete state;
}

const CFRuntimeClass kQueryClass = {0,       "MDQuery", nullptr, nullptr, finalizeQuery, nullptr,
                                    nullptr, nullptr,   nullptr, nullptr, nullptr};

CFTypeID queryType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kQueryClass);
  return type;
}

QueryState& stateOf(const char* call, MDQueryRef query) {
  checkType(call, query, queryType(), "query");
  return *query->state;
}

std::u16string textOf(CFStringRef string) {
  std::u16string text(static_cast<size_t>(CFStringGetLength(string)), u'\0');
  CFStringGetCharacters(string, CFRangeMake(0, CFStringGetLength(string)),
                        reinterpret_cast<UniChar*>(text.data()));
  return text;
}

CFArrayRef copyOrNull(CFArrayRef array) {
  return array ? CFArrayCreateCopy(kCFAllocatorDefault, array) : nullptr;
}

// How many of the attributes named at creation there are when there is none of that name.
size_t findSortable(const QueryState& query, CFStringRef name) {
  const std::u16string text = textOf(name);
  const auto found = std::find_if(query.sortable.begin(), query.sortable.end(),
                                  [&](const SortAttribute& attribute) { return attribute.name == text; });
  return static_cast<size_t>(found - query.sortable.begin());
}

FileAttribute fileAttributeOf(const std::u16string& name) {
  std::string key;
  for (const char16_t unit : name) {
    if (unit >= 0x80) return FileAttribute::None;
    key += static_cast<char>(unit);
  }
  return fileAttributeNamed(key);
}

void sortResults(QueryState& query) {
  if (query.sortOrder.empty()) return;
  std::vector<SortKey> keys;
  for (const size_t index : query.sortOrder) {
    const SortAttribute& attribute = query.sortable[index];
    SortKey key;
    key.attribute.file = fileAttributeOf(attribute.name);
    key.reversed = (attribute.flags & kReverseSortOrder) != 0;
    keys.push_back(std::move(key));
  }
  const std::vector<uint32_t> order = sortedOrder(query.results, keys);
  query.results.reorder(order);
  if (query.items.empty()) return;
  std::vector<MDItemRef> items;
  for (const uint32_t index : order) items.push_back(query.items[index]);
  query.items.swap(items);
}

void setSortable(QueryState& query, CFArrayRef names) {
  for (CFIndex i = 0; names && i < CFArrayGetCount(names); ++i) {
    query.sortable.push_back({textOf(static_cast<CFStringRef>(CFArrayGetValueAtIndex(names, i))), 0});
  }
  query.sortOrder.resize(query.sortable.size());
  std::iota(query.sortOrder.begin(), query.sortOrder.end(), size_t{0});
}

MDQueryRef createQuery(CFAllocatorRef allocator, CFStringRef text, ExpressionRef expression,
                       CFArrayRef valueListAttributes, CFArrayRef sortingAttributes) {
  const CFIndex extraBytes = sizeof(__MDQuery) - sizeof(CFRuntimeBase);
  const MDQueryRef query = queryOf(_CFRuntimeCreateInstance(allocator, queryType(), extraBytes, nullptr));
  if (!query) return nullptr;
  query->state = new QueryState;
  query->state->text = CFStringCreateCopy(kCFAllocatorDefault, text);
  query->state->valueListAttributes = copyOrNull(valueListAttributes);
  query->state->sortingAttributes = copyOrNull(sortingAttributes);
  setSortable(*query->state, sortingAttributes);
  query->state->expression = std::move(expression);
  return query;
}

// Null when the string is no query.
ExpressionRef parse(CFStringRef text) {
  auto parsed = parseQuery(textOf(text));
  auto* const expression = std::get_if<ExpressionRef>(&parsed);
  return expression ? std::move(*expression) : nullptr;
}

void gather(QueryState& query) {
  const Settings& set = settings();
  SearchRequest request{query.expression, set.indexedFolders, set.excludedFolders};
  if (query.maximum > 0) request.maximum = static_cast<size_t>(query.maximum);
  const SearchReport report = search(request, query.results);
  settings().lastSearch = {report.foldersSearched, report.unreadableFolders, report.missingFolders};
  sortResults(query);
  query.gathered = true;
}

}  // namespace

CFTypeID MDQueryGetTypeID(void) {
  Gate gate{"MDQueryGetTypeID"};
  return queryType();
}

MDQueryRef MDQueryCreate(CFAllocatorRef allocator, CFStringRef queryString, CFArrayRef valueListAttrs,
                         CFArrayRef sortingAttrs) {
  constexpr const char* kCall = "MDQueryCreate";
  Gate gate{kCall};
  checkString(kCall, queryString);
  checkStrings(kCall, valueListAttrs);
  checkStrings(kCall, sortingAttrs);
  ExpressionRef expression = parse(queryString);
  if (gate.fails() || !expression) return nullptr;
  return createQuery(allocator, queryString, std::move(expression), valueListAttrs, sortingAttrs);
}

// A subset asks for what its parent asks for and more besides, whether or not the parent was ever executed.
MDQueryRef MDQueryCreateSubset(CFAllocatorRef allocator, MDQueryRef query, CFStringRef queryString,
                               CFArrayRef valueListAttrs, CFArrayRef sortingAttrs) {
  constexpr const char* kCall = "MDQueryCreateSubset";
  Gate gate{kCall};
  const QueryState& parent = stateOf(kCall, query);
  checkString(kCall, queryString);
  checkStrings(kCall, valueListAttrs);
  checkStrings(kCall, sortingAttrs);
  ExpressionRef own = parse(queryString);
  if (gate.fails() || !own) return nullptr;
  auto both = std::make_shared<Expression>(
      Expression{Expression::Kind::And, {}, {parent.expression, std::move(own)}});
  return createQuery(allocator, queryString, std::move(both), valueListAttrs, sortingAttrs);
}

CFStringRef MDQueryCopyQueryString(MDQueryRef query) {
  Gate gate{"MDQueryCopyQueryString"};
  const QueryState& state = stateOf("MDQueryCopyQueryString", query);
  return gate.fails() ? nullptr : CFStringCreateCopy(kCFAllocatorDefault, state.text);
}

CFArrayRef MDQueryCopyValueListAttributes(MDQueryRef query) {
  Gate gate{"MDQueryCopyValueListAttributes"};
  const QueryState& state = stateOf("MDQueryCopyValueListAttributes", query);
  return gate.fails() ? nullptr : copyOrNull(state.valueListAttributes);
}

CFArrayRef MDQueryCopySortingAttributes(MDQueryRef query) {
  Gate gate{"MDQueryCopySortingAttributes"};
  const QueryState& state = stateOf("MDQueryCopySortingAttributes", query);
  return gate.fails() ? nullptr : copyOrNull(state.sortingAttributes);
}

Boolean MDQueryExecute(MDQueryRef query, CFOptionFlags optionFlags) {
  Gate gate{"MDQueryExecute"};
  QueryState& state = stateOf("MDQueryExecute", query);
  if (gate.fails() || state.executed || state.stopped) return false;
  state.executed = true;
  if ((optionFlags & kMDQuerySynchronous) == 0) return true;
  gather(state);
  const Held held(query);  // an observer may release the last reference of its own, or throw
  CFNotificationCenterPostNotification(CFNotificationCenterGetLocalCenter(), kMDQueryDidFinishNotification,
                                       query, nullptr, true);
  return true;
}

// A query that was stopped never gathers anything any more; what it has gathered stays.
void MDQueryStop(MDQueryRef query) {
  Gate gate{"MDQueryStop"};
  QueryState& state = stateOf("MDQueryStop", query);
  if (!gate.fails()) state.stopped = true;
}

void MDQueryDisableUpdates(MDQueryRef query) {
  Gate gate{"MDQueryDisableUpdates"};
  QueryState& state = stateOf("MDQueryDisableUpdates", query);
  if (!gate.fails()) ++state.updatesDisabled;
}

void MDQueryEnableUpdates(MDQueryRef query) {
  Gate gate{"MDQueryEnableUpdates"};
  QueryState& state = stateOf("MDQueryEnableUpdates", query);
  if (!gate.fails() && state.updatesDisabled > 0) --state.updatesDisabled;
}

Boolean MDQueryIsGatheringComplete(MDQueryRef query) {
  Gate gate{"MDQueryIsGatheringComplete"};
  const QueryState& state = stateOf("MDQueryIsGatheringComplete", query);
  return !gate.fails() && state.gathered;
}

CFIndex MDQueryGetResultCount(MDQueryRef query) {
  Gate gate{"MDQueryGetResultCount"};
  const QueryState& state = stateOf("MDQueryGetResultCount", query);
  return gate.fails() ? 0 : static_cast<CFIndex>(state.results.size());
}

const void* MDQueryGetResultAtIndex(MDQueryRef query, CFIndex idx) {
  Gate gate{"MDQueryGetResultAtIndex"};
  QueryState& state = stateOf("MDQueryGetResultAtIndex", query);
  if (gate.fails() || idx < 0 || static_cast<size_t>(idx) >= state.results.size()) return nullptr;
  const auto index = static_cast<size_t>(idx);
  state.items.resize(state.results.size(), nullptr);
  if (!state.items[index]) {
    state.items[index] = createItem(kCFAllocatorDefault, state.results.path(index));
  }
  return state.items[index];
}

CFIndex MDQueryGetIndexOfResult(MDQueryRef query, const void* result) {
  Gate gate{"MDQueryGetIndexOfResult"};
  const QueryState& state = stateOf("MDQueryGetIndexOfResult", query);
  checkItem("MDQueryGetIndexOfResult", result);
  if (gate.fails()) return kCFNotFound;
  const size_t index = state.results.find(pathOfItem(static_cast<MDItemRef>(const_cast<void*>(result))));
  return index < state.results.size() ? static_cast<CFIndex>(index) : CFIndex{kCFNotFound};
}

void MDQuerySetMaxCount(MDQueryRef query, CFIndex size) {
  Gate gate{"MDQuerySetMaxCount"};
  QueryState& state = stateOf("MDQuerySetMaxCount", query);
  if (!gate.fails() && !state.executed) state.maximum = size;
}

// Results that are there already are put into the new order.
Boolean MDQuerySetSortOrder(MDQueryRef query, CFArrayRef sortingAttrs) {
  constexpr const char* kCall = "MDQuerySetSortOrder";
  Gate gate{kCall};
  QueryState& state = stateOf(kCall, query);
  checkStrings(kCall, sortingAttrs);
  if (gate.fails() || !sortingAttrs) return false;
  std::vector<size_t> order;
  for (CFIndex i = 0; i < CFArrayGetCount(sortingAttrs); ++i) {
    order.push_back(findSortable(state, static_cast<CFStringRef>(CFArrayGetValueAtIndex(sortingAttrs, i))));
    if (order.back() == state.sortable.size()) return false;
  }
  state.sortOrder = std::move(order);
  sortResults(state);
  return true;
}

// 0 also for an attribute that isn't a sorting attribute.
uint32_t MDQueryGetSortOptionFlagsForAttribute(MDQueryRef query, CFStringRef fieldName) {
  constexpr const char* kCall = "MDQueryGetSortOptionFlagsForAttribute";
  Gate gate{kCall};
  const QueryState& state = stateOf(kCall, query);
  checkString(kCall, fieldName);
  const size_t index = findSortable(state, fieldName);
  return gate.fails() || index == state.sortable.size() ? 0 : state.sortable[index].flags;
}

Boolean MDQuerySetSortOptionFlagsForAttribute(MDQueryRef query, CFStringRef fieldName, uint32_t flags) {
  constexpr const char* kCall = "MDQuerySetSortOptionFlagsForAttribute";
  Gate gate{kCall};
  QueryState& state = stateOf(kCall, query);
  checkString(kCall, fieldName);
  const size_t index = findSortable(state, fieldName);
  if (gate.fails() || index == state.sortable.size()) return false;
  state.sortable[index].flags = flags;
  sortResults(state);
  return true;
}
