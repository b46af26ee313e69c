#include "standin/host/things/event_handlers.h"

#include <map>
#include <utility>

namespace standin::host {
namespace {

using Key = std::pair<ObjectHandle, const Event*>;

std::map<Key, Handler>& handlers() {
  static auto* const all = new std::map<Key, Handler>;
  return *all;
}

}  // namespace

// A handler is out of the table before it is destroyed: objects that end with it come back here.

void attachHandler(ObjectHandle object, const Event& event, Handler handler) {
  std::swap(handlers()[{object, &event}], handler);
}

void detachHandler(ObjectHandle object, const Event& event) {
  const auto gone = handlers().extract({object, &event});
}

const Handler* findHandler(ObjectHandle object, const Event& event) {
  const auto found = handlers().find({object, &event});
  return found == handlers().end() ? nullptr : &found->second;
}

void forgetHandlers(ObjectHandle object) {
  auto& all = handlers();
  for (;;) {
    const auto first = all.lower_bound({object, nullptr});
    if (first == all.end() || first->first.first != object) return;
    const auto gone = all.extract(first);
  }
}

void forgetAllHandlers() {
  const auto gone = std::exchange(handlers(), {});
}

}  // namespace standin::host
