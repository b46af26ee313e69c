#include "standin/coreservices/metadata/query_state.h"

#include <utility>

#include "standin/coreservices/metadata/cf_values.h"

namespace standin::metadata {

QueryState::QueryState(CFStringRef text, CFArrayRef valueListAttributes, CFArrayRef sortingAttributes,
                       ExpressionRef expression)
    : text(CFStringCreateCopy(kCFAllocatorDefault, text)),
      valueListAttributes(copyOf(valueListAttributes)),
      sortingAttributes(copyOf(sortingAttributes)),
      expression(std::move(expression)),
      results(valueListAttributes, sortingAttributes) {}

QueryState::~QueryState() {
  for (const CFTypeRef cf : {CFTypeRef{text}, CFTypeRef{valueListAttributes}, CFTypeRef{sortingAttributes}}) {
    if (cf) CFRelease(cf);
  }
}

void QueryState::setSortingAttributes(CFArrayRef attributes) {
  const CFArrayRef before = std::exchange(sortingAttributes, copyOf(attributes));
  if (before) CFRelease(before);
}

}  // namespace standin::metadata
