#include "standin/coreservices/language/doubts.h"

#include <algorithm>

namespace standin::metadata {
namespace {

bool isOrder(Operator op) {
  return op != Operator::Equal && op != Operator::NotEqual;
}

bool isTime(const Literal& literal) {
  return literal.period || literal.relativeTime;
}

bool isTruth(const Literal& literal) {
  const auto isFlag = [](auto number) { return number == 0 || number == 1; };
  return literal.truth || (literal.number && std::visit(isFlag, *literal.number));
}

// Empty where there is none. Values of other types than these, no file has.
std::string reasonAgainst(const Comparison& comparison) {
  const Literal& value = comparison.value;
  const bool isOrdered = isOrder(comparison.op);
  if (!isOrdered && value.text.matchesEverything()) return {};
  switch (infoOf(comparison.key.file).type) {
    case ValueType::Number:
      if (value.number && !isTime(value)) return {};
      return "is a number, which this isn't; write one, such as 1000";
    case ValueType::Date:
    case ValueType::Dates:
      if (value.number || isTime(value)) return {};
      return "is a date, which this isn't; write one, such as $time.today or 2011-03-05";
    case ValueType::Boolean:
      if (isTruth(value) && !isOrdered) return {};
      return "is true or false; write == true or == false";
    case ValueType::String:
    case ValueType::Strings:
      if (!isOrdered) return {};
      return "is text, which is neither less nor more than anything; write == or !=";
    default:
      return {};
  }
}

void addDoubts(const Expression& expression, std::vector<Doubt>& doubts) {
  for (const ExpressionRef& part : expression.parts) addDoubts(*part, doubts);
  if (expression.kind != Expression::Kind::Comparison || expression.comparison.key.any) return;
  const Comparison& comparison = expression.comparison;
  const bool isKnown = comparison.key.file != FileAttribute::None;
  std::string reason = isKnown ? reasonAgainst(comparison) : "";
  if (isKnown && reason.empty()) return;
  doubts.push_back({comparison.position, comparison.length, comparison.key.name, std::move(reason)});
}

}  // namespace

std::vector<Doubt> doubtsOf(const Expression& expression) {
  std::vector<Doubt> doubts;
  addDoubts(expression, doubts);
  std::ranges::sort(doubts, {}, &Doubt::position);
  return doubts;
}

}  // namespace standin::metadata
