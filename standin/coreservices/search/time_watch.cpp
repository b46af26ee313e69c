#include "standin/coreservices/search/time_watch.h"

#include <algorithm>
#include <optional>

#include "standin/coreservices/language/match.h"

namespace standin::metadata {
namespace {

constexpr double kHorizon = 3600;
// A bound that is reached needn't be passed: `<` is true a little later.
constexpr double kPast = 0.001;

bool isRelative(const Literal& literal) {
  return literal.relativeTime.has_value();
}

bool isRelative(const Expression& expression) {
  if (expression.kind != Expression::Kind::Comparison) {
    return std::ranges::any_of(expression.parts, [](const ExpressionRef& part) { return isRelative(*part); });
  }
  return isRelative(expression.comparison.value) || isRelative(expression.comparison.highest);
}

bool isPeriod(const Literal& literal) {
  return literal.relativeTime && literal.relativeTime->unit != TimeUnit::Second;
}

bool hasPeriods(const Expression& expression) {
  if (expression.kind != Expression::Kind::Comparison) {
    return std::ranges::any_of(expression.parts, [](const ExpressionRef& part) { return hasPeriods(*part); });
  }
  return isPeriod(expression.comparison.value) || isPeriod(expression.comparison.highest);
}

std::optional<double> secondsOf(const Value& value) {
  if (const auto* const date = std::get_if<Date>(&value)) return date->seconds;
  if (const auto* const real = std::get_if<double>(&value)) return *real;
  if (const auto* const integer = std::get_if<int64_t>(&value)) return static_cast<double>(*integer);
  return {};
}

// When the first of the attribute's values meets a bound that moves on. To be equal to one takes no time.
double nextOf(const Comparison& comparison, AttributeSource& source, double now) {
  if (comparison.op == Operator::Equal || comparison.op == Operator::NotEqual) return TimeWatch::kNever;
  std::vector<Value> values;
  if (!source.values(comparison.key, values)) return TimeWatch::kNever;
  double next = TimeWatch::kNever;
  for (const Literal* const bound : {&comparison.value, &comparison.highest}) {
    if (!isRelative(*bound) || isPeriod(*bound)) continue;
    for (const Value& value : values) {
      const std::optional<double> seconds = secondsOf(value);
      if (!seconds) continue;
      const double moment = *seconds - static_cast<double>(bound->relativeTime->distance);
      if (moment >= now) next = std::min(next, moment);
    }
  }
  return next;
}

// A part that time doesn't change may decide for all of them.
double nextOf(const Expression& expression, AttributeSource& source, double now) {
  if (!isRelative(expression)) return TimeWatch::kNever;
  if (expression.kind == Expression::Kind::Comparison) return nextOf(expression.comparison, source, now);
  double next = TimeWatch::kNever;
  for (const ExpressionRef& part : expression.parts) {
    if (isRelative(*part)) {
      next = std::min(next, nextOf(*part, source, now));
    } else {
      const Match deciding = expression.kind == Expression::Kind::And ? Match::No : Match::Yes;
      if (match(*part, source) == deciding) return TimeWatch::kNever;
    }
  }
  return next;
}

}  // namespace

std::unique_ptr<TimeWatch> TimeWatch::of(const ExpressionRef& expression, Date now) {
  ExpressionRef current = resolve(expression, now);
  if (current == expression) return nullptr;
  return std::unique_ptr<TimeWatch>(new TimeWatch(expression, std::move(current), now));
}

TimeWatch::TimeWatch(ExpressionRef expression, ExpressionRef current, Date now)
    : asked_(std::move(expression)),
      current_(std::move(current)),
      hasPeriods_(hasPeriods(*asked_)),
      now_(now.seconds) {
  startOver();
}

void TimeWatch::startOver() {
  moments_.clear();
  byPath_.clear();
  horizon_ = now_ + kHorizon;
  constexpr RelativeTime kTomorrow = {TimeUnit::Day, 1};
  whole_ = hasPeriods_ ? resolve(kTomorrow, Date{now_}).start : kNever;
}

void TimeWatch::turnTo(Date now) {
  now_ = std::max(now_, now.seconds);
  current_ = resolve(asked_, Date{now_});
}

void TimeWatch::forget(const std::string& path) {
  const auto entry = byPath_.find(path);
  if (entry == byPath_.end()) return;
  moments_.erase({entry->second, &entry->first});
  byPath_.erase(entry);
}

void TimeWatch::look(FileRecord& record) {
  const double moment = nextOf(*asked_, record, now_) + kPast;
  if (moment == kNever && byPath_.empty()) return;
  const std::string path(record.path());
  forget(path);
  if (moment == kNever) return;
  if (moment > horizon_) {
    whole_ = std::min(whole_, moment);
    return;
  }
  const auto entry = byPath_.emplace(path, moment).first;
  moments_.emplace(moment, &entry->first);
}

double TimeWatch::next() const {
  return moments_.empty() ? whole_ : std::min(whole_, moments_.begin()->first);
}

std::vector<std::string> TimeWatch::takeDue() {
  std::vector<std::string> due;
  while (!moments_.empty() && moments_.begin()->first <= now_) {
    due.push_back(*moments_.begin()->second);
    forget(due.back());
  }
  return due;
}

bool TimeWatch::takeWhole() {
  if (now_ < whole_) return false;
  startOver();
  return true;
}

}  // namespace standin::metadata
