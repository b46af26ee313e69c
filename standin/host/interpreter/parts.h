// What a program is made into before it runs.
#pragma once

#include <deque>

#include "standin/host/interpreter/classes.h"
#include "standin/host/interpreter/program.h"

namespace standin::host {

// Everything in it stays where it is: what was checked refers to it.
struct ProgramParts {
  ProgramText text;
  Classes classes;
  std::deque<ProgramClass> programClasses;  // a class after the one that it inherits
  std::deque<Callable> methods;             // outside of classes, with the plug-in's
  std::deque<Function> functions;
  std::deque<Block> initialValues;  // of the properties of classes
  std::vector<Type> globals;
  Function main{"the program"};

  std::vector<ProgramClass*> classList() {
    std::vector<ProgramClass*> list;
    for (ProgramClass& each : programClasses) list.push_back(&each);
    return list;
  }
};

// Fills in what is made of the text. Throws SourceError.
void check(ProgramParts& parts);

}  // namespace standin::host
