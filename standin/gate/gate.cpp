#include "standin/gate/gate.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "standin/gate/shown_text.h"

namespace standin {
namespace {

struct Plan {
  std::string name;   // empty: any call
  int remaining = 0;  // 0: nothing planned
  bool throws = false;
};

// Function-local so that libraries may use the gate from their own initialisers.
struct State {
  bool logging = false;
  bool detailed = false;
  bool counting = false;
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

constinit size_t keptBytes = 16 << 20;

void updateWatched() {
  const State& s = state();
  gateState.watched = s.logging || s.counting || s.plan.remaining > 0;
}

void setPlan(Plan plan) {
  state().plan = std::move(plan);
  state().fired = 0;
  updateWatched();
}

void restore(const GateState& before) {
  gateState.depth = before.depth;
  gateState.outermost = before.outermost;
}

}  // namespace

constinit GateState gateState{};

bool Gate::takeWatchedCall(const char* name) {
  State& s = state();
  if (s.counting) ++s.counts[name];
  if (s.logging) s.log.emplace_back(name);
  const bool fails = takesFailure(s, name);
  if (fails && s.plan.throws) throw PlannedException();
  return fails;
}

void Gate::detail(const char* what) {
  if (gateState.depth != 1 || !gateState.watched) return;
  State& s = state();
  if (s.logging && s.detailed) s.log.back().append(" ").append(what);
}

Callout::~Callout() {
  restore(before_);
}

Inside::Inside(const char* name) : before_(gateState) {
  gateState.depth = 1;
  gateState.outermost = name;
}

Inside::~Inside() {
  restore(before_);
}

void startLog() {
  state().log.clear();
  state().logging = true;
  state().detailed = false;
  updateWatched();
}

void startDetailedLog() {
  startLog();
  state().detailed = true;
}

std::vector<std::string> stopLog() {
  state().logging = false;
  updateWatched();
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
  updateWatched();
}

void throwFromCall(const char* name, int nth) {
  setPlan({name, nth, true});
}

int failuresFired() {
  return state().fired;
}

void countCalls() {
  state().counts.clear();
  state().counting = true;
  updateWatched();
}

int callCount(const char* name) {
  if (!state().counting) die("callCount", "calls are not counted; call countCalls() first");
  int calls = 0;
  for (const auto& [known, count] : state().counts) {
    if (std::strcmp(known, name) == 0) calls += count;
  }
  return calls;
}

void setFreedBytesKept(size_t bytes) {
  keptBytes = bytes;
}

size_t freedBytesKept() {
  return keptBytes;
}

void die(const char* call, const std::string& what) {
  std::fprintf(stderr, "standin: %s: %s\n", shownText(call).c_str(), shownText(what).c_str());
  std::abort();
}

const char* currentCall() {
  return gateState.outermost ? gateState.outermost : "(no call)";
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
