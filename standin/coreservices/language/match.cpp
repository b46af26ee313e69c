#include "standin/coreservices/language/match.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace standin::metadata {
namespace {

enum class Order { Less, Equal, Greater, None };

template <typename T>
Order orderOf(T left, T right) {
  if (left < right) return Order::Less;
  if (left > right) return Order::Greater;
  return left == right ? Order::Equal : Order::None;  // None: not a number
}

Order compareNumbers(const Number& left, const Number& right) {
  const auto* const leftInteger = std::get_if<int64_t>(&left);
  const auto* const rightInteger = std::get_if<int64_t>(&right);
  if (leftInteger && rightInteger) return orderOf(*leftInteger, *rightInteger);     // exact beyond 2^53
  const auto exactly = [](auto value) { return static_cast<long double>(value); };  // 64 bits and more here
  return orderOf(std::visit(exactly, left), std::visit(exactly, right));
}

std::optional<Number> numberOf(const Value& value) {
  if (const auto* const integer = std::get_if<int64_t>(&value)) return *integer;
  if (const auto* const real = std::get_if<double>(&value)) return *real;
  if (const auto* const date = std::get_if<Date>(&value)) return date->seconds;
  return {};
}

Order compareWithNumber(const Value& value, const Literal& literal) {
  const std::optional<Number> number = numberOf(value);
  return number && literal.number ? compareNumbers(*number, *literal.number) : Order::None;
}

bool isWithin(const Value& value, const Period& period) {
  const std::optional<Number> number = numberOf(value);
  return number && period.contains(std::visit([](auto n) { return static_cast<double>(n); }, *number));
}

bool equals(const Value& value, const Literal& literal, bool anyKey) {
  if (literal.text.matchesEverything()) return true;
  if (const auto* const text = std::get_if<std::string_view>(&value)) return literal.text.matches(*text);
  if (const auto* const truth = std::get_if<bool>(&value)) {
    if (literal.truth) return *truth == *literal.truth;
    // Under `*`, 1 means the number and not every flag that happens to be set.
    return !anyKey && literal.number && compareNumbers(int64_t{*truth}, *literal.number) == Order::Equal;
  }
  return literal.period ? isWithin(value, *literal.period)
                        : compareWithNumber(value, literal) == Order::Equal;
}

bool satisfies(const Value& value, const Comparison& comparison) {
  switch (comparison.op) {
    case Operator::Equal:
      return equals(value, comparison.value, comparison.key.any);
    case Operator::NotEqual:
      return !equals(value, comparison.value, comparison.key.any);
    case Operator::Less:
      return compareWithNumber(value, comparison.value) == Order::Less;
    case Operator::Greater:
      return compareWithNumber(value, comparison.value) == Order::Greater;
    case Operator::LessOrEqual: {
      const Order order = compareWithNumber(value, comparison.value);
      return order == Order::Less || order == Order::Equal;
    }
    case Operator::GreaterOrEqual: {
      const Order order = compareWithNumber(value, comparison.value);
      return order == Order::Greater || order == Order::Equal;
    }
    case Operator::InRange: {
      const Order low = compareWithNumber(value, comparison.value);
      const Order high = compareWithNumber(value, comparison.highest);
      return (low == Order::Greater || low == Order::Equal) && (high == Order::Less || high == Order::Equal);
    }
  }
  return false;
}

Match matchOf(bool matches) {
  return matches ? Match::Yes : Match::No;
}

// Of several values one is enough, also where not all are known; but text that is known in part may be
// unequal only as far as it is known.
Match matchComparison(const Comparison& comparison, AttributeSource& source, std::vector<Value>& values) {
  values.clear();
  const bool areAll = source.values(comparison.key, values);
  const bool satisfied = std::any_of(values.begin(), values.end(),
                                     [&](const Value& value) { return satisfies(value, comparison); });
  if (satisfied && (areAll || comparison.op != Operator::NotEqual)) return Match::Yes;
  if (!areAll) return Match::Unknown;
  return matchOf(values.empty() && comparison.op == Operator::NotEqual);
}

// What costs more than `most` isn't asked for, and counts as not known.
Match matchPart(const Expression& expression, Cost most, AttributeSource& source, std::vector<Value>& values);

// Looks at the parts in their order until one decides.
Match matchParts(const Expression& expression, Match deciding, Cost most, AttributeSource& source,
                 std::vector<Value>& values) {
  bool allKnown = true;
  for (const ExpressionRef& part : expression.parts) {
    const Match each = matchPart(*part, most, source, values);
    if (each == deciding) return deciding;
    allKnown = allKnown && each != Match::Unknown;
  }
  if (!allKnown) return Match::Unknown;
  return deciding == Match::Yes ? Match::No : Match::Yes;
}

Match matchPart(const Expression& expression, Cost most, AttributeSource& source,
                std::vector<Value>& values) {
  switch (expression.kind) {
    case Expression::Kind::Comparison:
      if (expression.cost > most) return Match::Unknown;
      return matchComparison(expression.comparison, source, values);
    case Expression::Kind::And:
      return matchParts(expression, Match::No, most, source, values);
    case Expression::Kind::Or:
      return matchParts(expression, Match::Yes, most, source, values);
    case Expression::Kind::Not: {
      const Match part = matchPart(*expression.parts.front(), most, source, values);
      return part == Match::Unknown ? part : matchOf(part == Match::No);
    }
  }
  return Match::No;
}

}  // namespace

Match match(const Expression& expression, AttributeSource& source) {
  std::vector<Value> values;
  return match(expression, source, values);
}

Match match(const Expression& expression, AttributeSource& source, std::vector<Value>& values) {
  // The parts' order alone isn't enough: a cheap part may stand within a dear one.
  if (expression.cost > Cost::Record) {
    const Match cheap = matchPart(expression, Cost::Record, source, values);
    if (cheap != Match::Unknown) return cheap;
  }
  return matchPart(expression, Cost::Content, source, values);
}

}  // namespace standin::metadata
