#include "standin/coreservices/language/expression.h"

#include <algorithm>

namespace standin::metadata {
namespace {

void resolveLiteral(Literal& literal, Date now) {
  if (!literal.relativeTime) return;
  setPeriod(literal, resolve(*literal.relativeTime, now));
  literal.relativeTime.reset();
}

}  // namespace

void setPeriod(Literal& literal, Period period) {
  literal.number = period.start;
  literal.period = period;
}

ExpressionRef resolve(const ExpressionRef& expression, Date now) {
  if (expression->kind == Expression::Kind::Comparison) {
    const Comparison& comparison = expression->comparison;
    if (!comparison.value.relativeTime && !comparison.highest.relativeTime) return expression;
    auto resolved = std::make_shared<Expression>(*expression);
    resolveLiteral(resolved->comparison.value, now);
    resolveLiteral(resolved->comparison.highest, now);
    return resolved;
  }
  std::vector<ExpressionRef> parts;
  for (const ExpressionRef& part : expression->parts) parts.push_back(resolve(part, now));
  if (parts == expression->parts) return expression;
  return std::make_shared<Expression>(Expression{expression->kind, {}, std::move(parts)});
}

}  // namespace standin::metadata
