// What host code hears when it uses the plug-in, for tests that take something away from under it.
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/plugin/fixture.h"

// The answer to one use of the plug-in.
struct Answer {
  std::string topic;
  std::string value;  // "neutral" where it is nil, 0, false or empty
  Exceptions raised;
  // Of this use and of those that it builds on: what was called, and whether such a call was made to fail.
  std::set<std::string> calls;
  bool failed = false;

  std::string text() const;  // "TOPIC: VALUE", and behind it what was raised
};
std::vector<std::string> textsOf(const std::vector<Answer>& answers);

// Whether this is what is left of the complete answer where something could not be had: the same or the
// neutral value or one that the platform has for failures, or a list with fewer elements or neutral ones; and
// no exceptions but those that say that there is no query, no item or no such place in an array or
// key in a dictionary.
bool isDegraded(const Answer& answer, const Answer& complete);

// A value as answers tell it.
std::string describe(const host::Value& value);

// Collects answers. A use may be groundwork for those that follow until the end of the innermost scope.
class Answers {
 public:
  class Scope {
   public:
    explicit Scope(Answers& answers) : answers_(answers), outer_(answers.base_) {}
    ~Scope() { answers_.base_ = outer_; }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    Answers& answers_;
    const Answer outer_;
  };

  template <typename Use>
  void add(const std::string& topic, Use use) {
    Answer answer = base_;
    answer.topic = topic;
    const int failures = standin::failuresFired();
    finish();
    const Calls calls = callsOf([&] { answer.value = describe(use()); });
    standin::startLog();  // of what happens between two uses
    note(calls);
    answer.calls.insert(calls.begin(), calls.end());
    answer.failed |= standin::failuresFired() > failures;
    answer.raised = host::takeExceptions();
    all_.push_back(std::move(answer));
  }

  template <typename Use>
  void addGroundwork(const std::string& topic, Use use) {
    add(topic, use);
    base_.calls = all_.back().calls;
    base_.failed = all_.back().failed;
  }

  // When nothing of what was used is left.
  void finish() { note(standin::stopLog()); }

  const std::vector<Answer>& all() const { return all_; }

  // The names of all calls, also of those between two uses, where objects end.
  const std::set<std::string>& calls() const { return calls_; }

 private:
  void note(const Calls& calls) { calls_.insert(calls.begin(), calls.end()); }

  Answer base_;
  std::vector<Answer> all_;
  std::set<std::string> calls_;
};
