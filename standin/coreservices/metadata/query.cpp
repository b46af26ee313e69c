// Queries: what they are made of. What they do is in query_run.cpp, what they found in query_results.cpp.
#include "standin/coreservices/metadata/query.h"

#include <string>
#include <utility>
#include <variant>

#include "standin/coreservices/language/parser.h"
#include "standin/coreservices/metadata/cf_text.h"
#include "standin/coreservices/metadata/checks.h"

namespace standin::metadata {
namespace {

MDQueryRef queryOf(CFTypeRef cf) {
  return const_cast<MDQueryRef>(static_cast<const __MDQuery*>(cf));
}

void finalizeQuery(CFTypeRef cf) {
  delete queryOf(cf)->state;
}

const CFRuntimeClass kQueryClass = {0,       "MDQuery", nullptr, nullptr, finalizeQuery, nullptr,
                                    nullptr, nullptr,   nullptr, nullptr, nullptr};

CFTypeID queryType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kQueryClass);
  return type;
}

CFArrayRef copyOrNull(CFArrayRef array) {
  return array ? CFArrayCreateCopy(kCFAllocatorDefault, array) : nullptr;
}

MDQueryRef createQuery(CFAllocatorRef allocator, CFStringRef text, ExpressionRef expression,
                       CFArrayRef valueListAttributes, CFArrayRef sortingAttributes) {
  const CFIndex extraBytes = sizeof(__MDQuery) - sizeof(CFRuntimeBase);
  const MDQueryRef query = queryOf(_CFRuntimeCreateInstance(allocator, queryType(), extraBytes, nullptr));
  if (!query) return nullptr;
  query->state = new QueryState(text, valueListAttributes, sortingAttributes, std::move(expression));
  return query;
}

// Null when the string is no query.
ExpressionRef parse(CFStringRef text) {
  auto parsed = parseQuery(textOf(text));
  auto* const expression = std::get_if<ExpressionRef>(&parsed);
  return expression ? std::move(*expression) : nullptr;
}

}  // namespace

QueryState::QueryState(CFStringRef text, CFArrayRef valueListAttributes, CFArrayRef sortingAttributes,
                       ExpressionRef expression)
    : text(CFStringCreateCopy(kCFAllocatorDefault, text)),
      valueListAttributes(copyOrNull(valueListAttributes)),
      sortingAttributes(copyOrNull(sortingAttributes)),
      expression(std::move(expression)),
      results(valueListAttributes, sortingAttributes) {}

QueryState::~QueryState() {
  run.reset();  // it uses the rest
  for (const CFTypeRef cf : {CFTypeRef{text}, CFTypeRef{valueListAttributes}, CFTypeRef{sortingAttributes}}) {
    if (cf) CFRelease(cf);
  }
}

QueryState& stateOf(const char* call, MDQueryRef query) {
  checkType(call, query, queryType(), "query");
  return *query->state;
}

}  // namespace standin::metadata

using standin::Gate;
using namespace standin::metadata;

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

// A subset asks for what its parent asks for and more besides, and looks nowhere else, whether or not the
// parent was ever executed. A scope that the parent is given later is its own.
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
  const MDQueryRef subset =
      createQuery(allocator, queryString, std::move(both), valueListAttrs, sortingAttrs);
  if (!subset) return nullptr;
  subset->state->outerScopes = parent.outerScopes;
  const Scope everywhere{{ScopeElement::Place::Indexed, {}}};
  subset->state->outerScopes.push_back(parent.scope.value_or(everywhere));
  return subset;
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
