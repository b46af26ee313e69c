#include "standin/coreservices/language/expression.h"

#include <algorithm>
#include <utility>

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

ExpressionRef comparing(Comparison comparison) {
  const Cost cost = comparison.key.any ? Cost::Content : costOf(comparison.key.file);
  return std::make_shared<Expression>(
      Expression{Expression::Kind::Comparison, std::move(comparison), {}, cost});
}

ExpressionRef joined(Expression::Kind kind, std::vector<ExpressionRef> parts) {
  const auto costOfPart = [](const ExpressionRef& part) { return part->cost; };
  std::ranges::stable_sort(parts, {}, costOfPart);
  const Cost cost = parts.back()->cost;
  return std::make_shared<Expression>(Expression{kind, {}, std::move(parts), cost});
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
  return joined(expression->kind, std::move(parts));
}

}  // namespace standin::metadata
