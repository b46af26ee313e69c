// Queries: how they are made, and what they were made of. What they do is in query_run.cpp, what they found
// in query_results.cpp.
#include "standin/coreservices/metadata/query.h"

#include <utility>
#include <variant>
#include <vector>

#include "standin/coreservices/language/doubts.h"
#include "standin/coreservices/language/parser.h"
#include "standin/coreservices/metadata/cf_text.h"
#include "standin/coreservices/metadata/cf_values.h"
#include "standin/coreservices/metadata/checks.h"
#include "standin/coreservices/metadata/control.h"

namespace standin::metadata {
namespace {

MDQueryRef refOf(CFTypeRef cf) {
  return const_cast<MDQueryRef>(static_cast<const __MDQuery*>(cf));
}

void finalizeQuery(CFTypeRef cf) {
  delete refOf(cf)->query;
}

const CFRuntimeClass kQueryClass = {0,       "MDQuery", nullptr, nullptr, finalizeQuery, nullptr,
                                    nullptr, nullptr,   nullptr, nullptr, nullptr};

CFTypeID queryType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kQueryClass);
  return type;
}

MDQueryRef createQuery(CFAllocatorRef allocator, CFStringRef text, ExpressionRef expression,
                       CFArrayRef valueListAttributes, CFArrayRef sortingAttributes) {
  const CFIndex extraBytes = sizeof(__MDQuery) - sizeof(CFRuntimeBase);
  const MDQueryRef query = refOf(_CFRuntimeCreateInstance(allocator, queryType(), extraBytes, nullptr));
  if (!query) return nullptr;
  query->query = new Query{{text, valueListAttributes, sortingAttributes, std::move(expression)}, nullptr};
  return query;
}

// Null when the string is no query.
ExpressionRef parse(CFStringRef text) {
  auto parsed = parseQuery(textOf(text));
  auto* const expression = std::get_if<ExpressionRef>(&parsed);
  return expression ? std::move(*expression) : nullptr;
}

}  // namespace

Query& queryOf(const char* call, MDQueryRef query) {
  checkType(call, query, queryType(), "query");
  return *query->query;
}

QueryState& stateOf(const char* call, MDQueryRef query) {
  return queryOf(call, query).state;
}

}  // namespace standin::metadata

std::optional<standin::QueryError> standin::checkQuery(std::u16string_view queryString) {
  const auto parsed = metadata::parseQuery(queryString);
  const auto* const error = std::get_if<metadata::ParseError>(&parsed);
  if (!error) return {};
  return QueryError{error->position, error->reason};
}

std::vector<standin::QueryDoubt> standin::queryDoubts(std::u16string_view queryString) {
  const auto parsed = metadata::parseQuery(queryString);
  std::vector<QueryDoubt> doubts;
  if (!std::holds_alternative<metadata::ExpressionRef>(parsed)) return doubts;
  for (const metadata::Doubt& doubt : metadata::doubtsOf(*std::get<metadata::ExpressionRef>(parsed))) {
    doubts.push_back({doubt.position, doubt.length, doubt.key, doubt.reason});
  }
  return doubts;
}

using standin::Gate;
using namespace standin::metadata;

CFTypeID MDQueryGetTypeID(void) {
  const Gate gate(__func__);
  return queryType();
}

MDQueryRef MDQueryCreate(CFAllocatorRef allocator, CFStringRef queryString, CFArrayRef valueListAttrs,
                         CFArrayRef sortingAttrs) {
  const Gate gate(__func__);
  checkString(__func__, queryString);
  checkStrings(__func__, valueListAttrs);
  checkStrings(__func__, sortingAttrs);
  ExpressionRef expression = parse(queryString);
  if (gate.fails() || !expression) return nullptr;
  return createQuery(allocator, queryString, std::move(expression), valueListAttrs, sortingAttrs);
}

// A subset asks for what its parent asks for and more besides, and looks nowhere else, whether or not the
// parent was ever executed. A scope that the parent is given later is its own.
MDQueryRef MDQueryCreateSubset(CFAllocatorRef allocator, MDQueryRef query, CFStringRef queryString,
                               CFArrayRef valueListAttrs, CFArrayRef sortingAttrs) {
  const Gate gate(__func__);
  const QueryState& parent = stateOf(__func__, query);
  checkString(__func__, queryString);
  checkStrings(__func__, valueListAttrs);
  checkStrings(__func__, sortingAttrs);
  ExpressionRef own = parse(queryString);
  if (gate.fails() || !own) return nullptr;
  ExpressionRef both = joined(Expression::Kind::And, {parent.expression, std::move(own)});
  const MDQueryRef subset =
      createQuery(allocator, queryString, std::move(both), valueListAttrs, sortingAttrs);
  if (!subset) return nullptr;
  std::vector<Scope>& outerScopes = subset->query->state.outerScopes;
  const Scope everywhere{{ScopeElement::Place::Indexed, {}}};
  outerScopes = parent.outerScopes;
  outerScopes.push_back(parent.scope.value_or(everywhere));
  return subset;
}

CFStringRef MDQueryCopyQueryString(MDQueryRef query) {
  const Gate gate(__func__);
  const QueryState& state = stateOf(__func__, query);
  return gate.fails() ? nullptr : CFStringCreateCopy(kCFAllocatorDefault, state.text);
}

CFArrayRef MDQueryCopyValueListAttributes(MDQueryRef query) {
  const Gate gate(__func__);
  const QueryState& state = stateOf(__func__, query);
  return gate.fails() ? nullptr : copyOf(state.valueListAttributes);
}

CFArrayRef MDQueryCopySortingAttributes(MDQueryRef query) {
  const Gate gate(__func__);
  const QueryState& state = stateOf(__func__, query);
  return gate.fails() ? nullptr : copyOf(state.sortingAttributes);
}
