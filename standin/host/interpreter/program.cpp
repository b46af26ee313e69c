#include "standin/host/interpreter/program.h"

#include "standin/host/host.h"
#include "standin/host/interpreter/checker.h"

namespace standin::host {
namespace {

int statusOf(Machine& machine, const Function& main) {
  try {
    machine.invoke(main, {}, {});
    return 0;
  } catch (const Quit& quit) {
    return quit.status;
  }
}

// What global variables hold ends with the program, while destructors may still use them, and fail.
Outcome finished(Machine& machine, const ProgramParts& parts) {
  try {
    const int status = statusOf(machine, parts.main);
    for (size_t i = 0; i < parts.globals.size(); ++i) machine.globals[i] = firstValue(parts.globals[i]);
    machine.throwPending();
    return {Outcome::Kind::ended, status};
  } catch (const Thrown& thrown) {
    machine.close();
    const Value& exception = thrown.exception;
    const auto number = static_cast<int>(get(exception, "ErrorNumber").integer());
    return {Outcome::Kind::failed, 0, classNameOf(exception), utf8Of(get(exception, "Message")), number,
            thrown.stack};
  } catch (const Quit& quit) {
    return {Outcome::Kind::ended, quit.status};
  } catch (const Interruption&) {
    return {Outcome::Kind::interrupted};
  }
}

// A member of the plug-in that gives an array makes it before it looks whether it can: when it raises, the
// empty array stays in its hands, and nobody could give it back.
void takeBackArrays(size_t most) {
  for (const Ref& each : everythingAlive()) {
    const auto* const array = asKind<HostArray>(*each.thing());
    const bool isForgotten = array && array->count() == 0 && array->hostReferences == 1;  // that of `each`
    if (!isForgotten || array->pluginReferences != 1 || most == 0) continue;
    --most;
    release(*each.thing(), Side::plugin);
  }
}

}  // namespace

Program::Program(std::string_view source) : parts_(new ProgramParts{.text = parseProgram(source)}) {
  check(*parts_);
}

Program::~Program() = default;

Outcome Program::run(const Surroundings& surroundings) {
  Machine machine(surroundings);
  openClasses(parts_->programClasses, machine);
  for (const Type& type : parts_->globals) machine.globals.push_back(firstValue(type));
  machine.globals.front() = stringArray(surroundings.arguments);
  Outcome outcome = finished(machine, *parts_);
  // What is left never ends in the language: what holds itself in circles, and all that a program held that
  // failed or was interrupted.
  machine.close();
  machine.globals.assign(machine.globals.size(), Value());
  releaseEverything();
  takeBackArrays(machine.raisedForArrays);
  closeClasses(parts_->programClasses);
  return outcome;
}

}  // namespace standin::host
