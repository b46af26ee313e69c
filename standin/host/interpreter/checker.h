// Finds out what the names of a program stand for, whether the types of its values fit, and makes functions
// of its expressions and statements. Everything throws SourceError, whose text names what would fit.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "standin/host/interpreter/classes.h"
#include "standin/host/interpreter/parts.h"
#include "standin/host/interpreter/types.h"

namespace standin::host {

[[noreturn]] inline void fail(Place place, const std::string& what) {
  throw SourceError(place, what);
}

struct Checked {
  Type type;
  Code code;
  Place place;
};

// Where a value can be stored.
struct Target {
  Type type;
  Store store;
};

// A name that a program gave to a value.
struct Named {
  std::string name;
  Type type;
  size_t slot = 0;
  bool isGlobal = false;
  Code constant = {};  // of a constant
};

// Names in the order of their declaration, the nearest last.
using Names = std::vector<Named>;
const Named* findName(const Names& names, std::string_view name);

Type resolveType(ProgramParts& parts, const TypeName& name);

// The name among those given that is probably meant: "; did you mean NAME?", or nothing.
std::string suggestion(std::string_view name, const std::vector<std::string>& names);

// The checker of one method's body, or of the statements outside of methods.
class Checker {
 public:
  // `self` is null outside of classes; in shared methods of a class there is no object.
  Checker(ProgramParts& parts, const Names& globals, const ProgramClass* self, bool hasObject)
      : parts_(parts), globals_(globals), self_(self), hasObject_(hasObject) {}

  // Fills in its body, of the statements. `globals` takes the variables and constants declared outermost.
  void checkBody(const Block& statements, Function& function, Names* globals = nullptr);
  Checked checkExpression(const Expression& expression);
  Code checkedAs(const Expression& expression, const Type& type);
  Code checkConstant(const Expression& expression, Type& type);
  void declareParameters(const Declaration& declaration);

 private:
  using Written = std::vector<const Expression*>;  // arguments as they are written
  using Arguments = std::vector<Checked>;
  using Candidates = std::vector<const Callable*>;

  // What may be called by a name, and on which object; of functions and shared members on none.
  struct Members {
    Candidates candidates;
    std::optional<Checked> object = {};
    bool isSuper = false;           // not what a class that inherits has instead
    bool objectIsArgument = false;  // the first one
  };

  Checked literal(const Expression& expression) const;
  Checked variable(const Named& named, Place place) const;
  Checked nameOf(const Expression& expression, const Written& written);
  std::optional<Checked> special(const Expression& expression, const Written& written);
  Checked argumentsOf(const Expression& expression);
  Checked unary(const Expression& expression);
  Checked binary(const Expression& expression);
  Checked isA(const Expression& expression);
  Checked newObject(const Expression& expression);
  Checked cast(const Expression& value, const Type& type, Place place);
  Checked arrayOf(const Written& elements, Place place);
  Checked indexed(Checked array, Checked index) const;
  Checked self(Place place) const;

  const Named* variableNamed(std::string_view name) const;
  void leaveOutPrivate(Candidates& candidates) const;
  std::optional<Members> callables(std::string_view name, Place place) const;
  Members membersOf(const Expression& member);
  Members membersOfClass(const ClassInfo& cls, const Expression& member, std::optional<Checked> object) const;
  Members membersOfValue(Checked object, const Expression& member);
  Checked callOrIndex(Members members, const std::string& name, const Written& written, Place place);
  const Callable* choose(const Members& members, const Arguments& arguments, bool sets) const;
  [[noreturn]] void failNoFit(const Members& members, const std::string& name, const Arguments& arguments,
                              Place place) const;
  Checked called(const Callable& callable, Members members, Arguments arguments, Place place);
  std::vector<Code> argumentCodes(const Callable& callable, Arguments arguments) const;
  Code objectCode(const Callable& callable, const Members& members, Place place) const;
  Target target(const Expression& expression, const Checked& value);

  Code coerced(Checked value, const Type& type) const;
  std::optional<int> distance(const Type& from, const Type& to) const;
  Type resolve(const TypeName& name) const { return resolveType(parts_, name); }
  [[noreturn]] void failUnknown(const std::string& name, Place place) const;

  // Statements.
  Action block(const Block& statements);
  Action statement(const Statement& statement);
  Action dim(const Statement& statement);
  Action assign(const Statement& statement);
  Action call(const Statement& statement);
  Action ifElse(const std::vector<Branch>& branches);
  Action select(const Statement& statement);
  Action forTo(const Statement& statement);
  Action forEach(const Statement& statement);
  Action loop(const Statement& statement);
  Action leave(const Statement& statement);
  Action giveBack(const Statement& statement);
  Action tryCatch(const Statement& statement);
  Action raise(const Statement& statement);
  Action handler(const Statement& statement);
  Action redim(const Statement& statement);
  const Named& declare(const std::string& name, const Type& type, Place place);
  const Named& loopVariable(const Statement& statement, const Type& type);

  ProgramParts& parts_;
  const Names& globals_;
  const ProgramClass* const self_;
  const bool hasObject_;
  const Function* function_ = nullptr;
  Names* outermost_ = nullptr;  // where global declarations go; null in methods
  int blockDepth_ = 0;
  Names locals_;
  size_t slots_ = 0;
  std::vector<Named> subjects_;
  std::vector<std::string> loops_;  // the kinds of those around the statement
};

}  // namespace standin::host
