// A query string after parsing: a tree of comparisons whose keys and values are ready to be compared.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "attributes.h"
#include "text_pattern.h"

namespace standin::metadata {

struct AttributeKey {
  bool any = false;                          // `*`
  FileAttribute file = FileAttribute::None;  // known to the file system, found by this
  std::string name;                          // as written, for everything else
};

using Number = std::variant<int64_t, double>;

// What a value of a query means to each type of attribute; a part that it can't be is absent. A number,
// quoted or not, means seconds since 2001 to a date.
struct Literal {
  TextPattern text;
  std::optional<Number> number;
  std::optional<bool> truth;
};

enum class Operator { Equal, NotEqual, Less, Greater, LessOrEqual, GreaterOrEqual, InRange };

struct Comparison {
  AttributeKey key;
  Operator op = Operator::Equal;
  Literal value;    // the lower bound of InRange
  Literal highest;  // the upper bound of InRange; both bounds belong to the range
};

struct Expression;
using ExpressionRef = std::shared_ptr<const Expression>;

struct Expression {
  enum class Kind { Comparison, And, Or, Not } kind;
  Comparison comparison;             // of a Comparison
  std::vector<ExpressionRef> parts;  // of And and Or: two or more; of Not: one
};

}  // namespace standin::metadata
