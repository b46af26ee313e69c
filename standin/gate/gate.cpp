#include "standin/gate/gate.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace standin {
namespace {

struct Plan {
  std::string name;   // empty: any call
  int remaining = 0;  // 0: nothing planned
  bool throws = false;
};

// Function-local so that libraries may use the gate from their own initialisers.
struct State {
  int depth = 0;
  const char* outermost = nullptr;
  bool logging = false;
  bool detailed = false;
  std::vector<std::string> log;
  std::unordered_map<const char*, int> counts;  // by the names' addresses: the same name may have several
  std::map<std::string, long, std::less<>> ledger;
  Plan plan;
  int fired = 0;
};

State& state() {
  static State* const s = new State;  // never destroyed: objects are released until the very end
  return *s;
}

bool takesFailure(State& s, const char* name) {
  if (s.plan.remaining == 0 || (!s.plan.name.empty() && s.plan.name != name)) return false;
  if (--s.plan.remaining > 0) return false;
  ++s.fired;
  return true;
}

void setPlan(Plan plan) {
  state().plan = std::move(plan);
  state().fired = 0;
}

}  // namespace

Gate::Gate(const char* name) : fails_(false) {
  State& s = state();
  if (s.depth > 0) {
    ++s.depth;
    return;
  }
  ++s.counts[name];
  if (s.logging) s.log.emplace_back(name);
  fails_ = takesFailure(s, name);
  if (fails_ && s.plan.throws) throw PlannedException();
  s.depth = 1;
  s.outermost = name;
}

Gate::~Gate() {
  if (--state().depth == 0) state().outermost = nullptr;
}

void Gate::detail(const char* what) {
  State& s = state();
  if (s.depth == 1 && s.logging && s.detailed) s.log.back().append(" ").append(what);
}

Callout::Callout() : depth_(state().depth), outermost_(state().outermost) {
  state().depth = 0;
}

Callout::~Callout() {
  state().depth = depth_;
  state().outermost = outermost_;
}

Inside::Inside(const char* name) : depth_(state().depth), outermost_(state().outermost) {
  state().depth = 1;
  state().outermost = name;
}

Inside::~Inside() {
  state().depth = depth_;
  state().outermost = outermost_;
}

void startLog() {
  state().log.clear();
  state().logging = true;
  state().detailed = false;
}

void startDetailedLog() {
  startLog();
  state().detailed = true;
}

std::vector<std::string> stopLog() {
  state().logging = false;
  return std::exchange(state().log, {});
}

void logNote(const std::string& note) {
  if (state().logging) state().log.push_back(note);
}

void failCall(const char* name, int nth) {
  setPlan({name, nth});
}

void failCall(int nth) {
  setPlan({{}, nth});
}

void clearFailures() {
  state().plan = {};
}

void throwFromCall(const char* name, int nth) {
  setPlan({name, nth, true});
}

int failuresFired() {
  return state().fired;
}

int callCount(const char* name) {
  int calls = 0;
  for (const auto& [known, count] : state().counts) {
    if (std::strcmp(known, name) == 0) calls += count;
  }
  return calls;
}

void resetCallCounts() {
  state().counts.clear();
}

void die(const char* call, const std::string& what) {
  std::fprintf(stderr, "standin: %s: %s\n", call, what.c_str());
  std::abort();
}

const char* currentCall() {
  return state().outermost ? state().outermost : "(no call)";
}

long& ledgerLine(const char* kind) {
  return state().ledger[kind];
}

std::vector<LedgerLine> ledger() {
  std::vector<LedgerLine> lines;
  for (const auto& [kind, count] : state().ledger) {
    if (count != 0) lines.push_back({kind, count});
  }
  return lines;
}

}  // namespace standin
