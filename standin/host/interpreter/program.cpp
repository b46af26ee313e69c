#include "standin/host/interpreter/program.h"

#include <utility>

#include "standin/host/host.h"
#include "standin/host/interpreter/checker.h"
#include "standin/host/interpreter/parts.h"
#include "standin/host/source/parser.h"

namespace standin::host {
namespace {

Outcome failed(const Thrown& thrown) {
  const Value& exception = thrown.exception;
  Outcome outcome{Outcome::Kind::failed};
  outcome.className = classNameOf(exception);
  outcome.message = utf8Of(get(exception, "Message"));
  outcome.errorNumber = static_cast<int>(get(exception, "ErrorNumber").integer());
  outcome.stack = thrown.stack;
  return outcome;
}

Outcome finished(Machine& machine, const Function& main) {
  try {
    machine.invoke(main, {}, {});
    machine.throwPending();
    return {};
  } catch (const Thrown& thrown) {
    machine.close();
    return failed(thrown);
  } catch (const Uncaught& uncaught) {
    machine.close();
    return failed(uncaught.thrown);
  } catch (const Quit& quit) {
    return {Outcome::Kind::ended, quit.status};
  } catch (const Interruption&) {
    machine.close();
    return {Outcome::Kind::interrupted};
  }
}

}  // namespace

Program::Program(std::string_view source) : parts_(std::make_unique<ProgramParts>()) {
  parts_->text = parseProgram(source);
  check(*parts_);
}

Program::~Program() = default;

Outcome Program::run(const Surroundings& surroundings) {
  Machine machine(surroundings);
  const std::vector<ProgramClass*> classes = parts_->classList();
  openClasses(classes, machine);
  for (const Type& type : parts_->globals) machine.globals.push_back(firstValue(type));
  machine.globals.front() = stringArray(surroundings.arguments);
  Outcome outcome = finished(machine, parts_->main);
  // What global variables hold ends as in a program that ends; what holds itself in circles has no end there.
  machine.globals.assign(machine.globals.size(), Value());
  machine.close();
  releaseEverything();
  closeClasses(classes);
  return outcome;
}

}  // namespace standin::host
