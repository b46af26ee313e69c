// When files come to match an expression, or stop, because time goes on: `DATE > $time.now(-60)` describes a
// file for a minute after its date.
//
// A moment is kept for each file that was looked at and that will match, or no longer match, within an hour.
// For what comes later it is enough to look at all files again by then, as it is for times in days and more,
// which move on at midnight.
#pragma once

#include <limits>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "standin/coreservices/attributes/dates.h"
#include "standin/coreservices/files/file_attributes.h"
#include "standin/coreservices/language/expression.h"

namespace standin::metadata {

class TimeWatch {
 public:
  static constexpr double kNever = std::numeric_limits<double>::infinity();

  // Null for an expression in which nothing is relative to time.
  static std::unique_ptr<TimeWatch> of(const ExpressionRef& expression, Date now);
  TimeWatch(const TimeWatch&) = delete;
  TimeWatch& operator=(const TimeWatch&) = delete;

  // From here on it is that time. Time doesn't go back.
  void turnTo(Date now);
  // With its relative times fixed as of now.
  const ExpressionRef& expression() const { return current_; }

  // What is known of the file now. A value that isn't known decides nothing.
  void look(FileRecord& record);
  void forget(const std::string& path);

  double next() const;  // when something is due, in seconds since 2001; or kNever
  // The files whose moment has come; they are forgotten until they are looked at again.
  std::vector<std::string> takeDue();
  // Whether it is time to look at all files again. It counts as done.
  bool takeWhole();

 private:
  TimeWatch(ExpressionRef expression, ExpressionRef current, Date now);
  void startOver();

  const ExpressionRef asked_;
  ExpressionRef current_;
  const bool hasPeriods_;
  double now_;
  double horizon_ = 0;                                   // moments after it aren't kept
  double whole_ = kNever;                                // when all files have to be looked at again
  using Moment = std::pair<double, const std::string*>;  // of a key of the next
  std::unordered_map<std::string, double> byPath_;
  std::set<Moment> moments_;
};

}  // namespace standin::metadata
