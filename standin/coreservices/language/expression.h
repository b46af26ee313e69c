// A query string after parsing: a tree of comparisons whose keys and values are ready to be compared.
#pragma once

#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "standin/coreservices/attributes/attribute_source.h"
#include "standin/coreservices/attributes/schema.h"
#include "standin/coreservices/language/text_pattern.h"
#include "standin/coreservices/language/time_values.h"

namespace standin::metadata {

using Number = std::variant<int64_t, double>;

// What a value of a query means to each type of attribute; a part that it can't be is absent. A number,
// quoted or not, means seconds since 2001 to a date; a time, quoted or not, means such seconds to a number.
struct Literal {
  TextPattern text;              // as written
  std::optional<Number> number;  // of a time: its start
  std::optional<bool> truth;
  std::optional<Period> period;              // of a time: what it is equal to
  std::optional<RelativeTime> relativeTime;  // of a time that isn't known before the query starts
};

// Makes the literal mean this time.
void setPeriod(Literal& literal, Period period);

enum class Operator { Equal, NotEqual, Less, Greater, LessOrEqual, GreaterOrEqual, InRange };

struct Comparison {
  AttributeKey key;
  Operator op = Operator::Equal;
  Literal value;                    // the lower bound of InRange
  Literal highest;                  // the upper bound of InRange; both bounds belong to the range
  size_t position = 0, length = 0;  // of it in the query string, in UTF-16 units
};

struct Expression;
using ExpressionRef = std::shared_ptr<const Expression>;

struct Expression {
  enum class Kind { Comparison, And, Or, Not } kind;
  Comparison comparison;             // of a Comparison
  std::vector<ExpressionRef> parts;  // of And and Or: two or more, the cheapest first; of Not: one
  Cost cost = Cost::Name;            // of the attributes that it compares, the highest
};

ExpressionRef comparing(Comparison comparison);

// Of And, Or or Not. Parts of the same cost stay in their order.
ExpressionRef joined(Expression::Kind kind, std::vector<ExpressionRef> parts);

// The expression with its relative times fixed, as when a query starts at `now`. Before, a relative time
// is equal to no number and no date, and comes neither before nor after any.
ExpressionRef resolve(const ExpressionRef& expression, Date now);

}  // namespace standin::metadata
