// The stand-in host: the runtime that loads the plug-in, calls its methods and serves its entry points.
//
// A program starts the host, hands `resolve` to the plug-in's start-up function, and then does what host code
// does: makes instances, calls methods by name, reads and sets properties, attaches event handlers. Every
// entry point passes the gate (standin/gate/gate.h) under its own name, every request to the resolver as
// "resolve NAME", every event handler as "event NAME", every array procedure as "array insert", "array get"
// or "array set".
//
// References are counted apart for the two sides: what the plug-in holds, and what the host and its code
// hold. So a release that the plug-in makes of a reference it does not own ends the process at that very
// call, even while the host still holds the object; a reference that the plug-in forgets stays in the ledger
// ("host object lock", "host string lock") when the call is over.
//
// One host per process, used from one thread.
//
// This header is the contract; it includes language/ alone. It is carried out by the rooms around it, of
// which each may include those before it, and none those behind it: machine/, language/, state/, things/,
// program/, entry/. Above it stand source/ and interpreter/: programs of the host language.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "standin/host/language/encodings.h"
#include "standin/host/value.h"

namespace standin::host {

struct Settings {
  double version = 2014.1;
  bool hasVersion = true;  // false: the host has no "REALGetRBVersion"
  bool inRuntime = true;   // what "REALinRuntime" answers
  // The third word of an array leads to its elements. Hosts above 2013.9 never offer it: there the word is an
  // address that can't be read.
  bool directArrayStorage = true;
  bool insertProcedures = true;  // false: the array gives out no such procedure (null)
  bool getProcedures = true;
  bool setProcedures = true;
  // The order in which an array's write procedure takes its arguments: (array, value, index) or
  // (array, index, value).
  bool setTakesValueFirst = true;
  // An exception is thrown through the plug-in's frames as soon as it is raised; otherwise it waits for the
  // plug-in to return.
  bool raiseByUnwinding = false;
  // A boolean result of the plug-in is a whole register, 0 or 1 (anything else: CallError), not its lowest
  // byte.
  bool wholeBooleans = false;
  // Answers of memory blocks.
  bool nullMemoryBlockPointers = false;
  std::optional<int32_t> memoryBlockSize;  // reported instead of the true one
  // Answers of folder items. A real host gives a reference of every item that is there, of its parent when
  // that is there, and the older FSSpec of the root folder only.
  bool itemReferences = true;
  bool parentReferences = true;
  bool leafNames = true;  // false: a parent comes with an empty name
  enum class ItemFSSpecs { ofRoot, none, rootForAll } itemFSSpecs = ItemFSSpecs::ofRoot;
  // A new thing stands where the last one of its size stood (dictionaries are of a size of their own),
  // instead of never where another one was.
  bool reusesAddresses = false;
  std::set<std::string> unreadableProperties;  // that the plug-in can't read, of any object
  std::set<std::string> unloadableMethods;     // declarations for which the plug-in gets no function
  std::set<std::string> hidden;                // entry points that this host lacks
  std::map<std::string, int> delayed;          // entry points that are found from the nth request on
  std::set<std::string> unknownClasses;  // classes that no instance and no class reference can be had of
};

// A host older than 2012.0: no "PluginGetStringData", "PluginDisposeStringData" and "REALGetStringCFString".
Settings oldHost(double version = 2011.04);

// Starts with no classes and no exceptions. Throws std::logic_error when a host is running.
void start(Settings settings = {});
// Ends the run. What is still alive is listed ("host object MDQueryZNK", one line each), taken out of the
// ledger and never served again; references that the program still holds to it can be dropped safely.
std::vector<std::string> stop();
// For the end of a program: drops what host code still holds, be it in circles, but for what C++ holds. What
// is alive afterwards, the plug-in holds.
void releaseEverything();
bool running();
// May be changed while the host runs; entry points found earlier by the plug-in stay with it.
Settings& settings();

extern "C" void* standinHostResolve(const char* name);
// What the plug-in's start-up function takes.
constexpr auto resolve = &standinHostResolve;
// Every name that the resolver knows, sorted.
std::vector<std::string> entryPointNames();

// What the plug-in handed over at start-up.
std::optional<int32_t> announcedVersion();
std::vector<std::string> registrationErrors();
std::vector<std::string> registeredClasses();  // in order of registration

enum class MemberKind { property, method, sharedMethod, event, constant };
struct Member {
  MemberKind kind;
  std::string name;
  std::string text;  // the declaration; of a property "Name As Type"
  bool assignable = false;
};
// In the order of the tables: properties, methods, shared methods, events, constants.
std::vector<Member> members(std::string_view className);
std::vector<Member> globalMethods();

// What host code raised or was handed.
struct Exception {
  std::string className;
  std::string message;
  int32_t errorNumber;
};
// Hands over the exceptions since the last time, in order.
std::vector<Exception> takeExceptions();

// A use that no compiler of the host language would let pass: an unknown name, arguments that no overload
// takes, a property that can't be set. The text names the candidates.
class CallError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

// A new instance, without any constructor method.
Value newInstance(std::string_view className);
// New: an instance on which the fitting Constructor was called. Without arguments and without a Constructor
// that takes none it is the bare instance.
Value constructWith(std::string_view className, std::span<const Value> arguments);
// Methods are found by name (letter case does not matter) and arguments, among the object's class's methods;
// values that the declaration gives to missing arguments are filled in. A result "as variant" comes as the
// value inside. When the plug-in raised an exception the result is what it returned, and takeExceptions()
// tells.
Value callWith(const Value& object, std::string_view name, std::span<const Value> arguments);
Value callSharedWith(std::string_view className, std::string_view name, std::span<const Value> arguments);
Value callGlobalWith(std::string_view name, std::span<const Value> arguments);

template <class... Arguments>
using Values = std::array<Value, sizeof...(Arguments)>;

template <class... Arguments>
Value construct(std::string_view className, Arguments&&... arguments) {
  return constructWith(className, Values<Arguments...>{Value(std::forward<Arguments>(arguments))...});
}
template <class... Arguments>
Value call(const Value& object, std::string_view name, Arguments&&... arguments) {
  return callWith(object, name, Values<Arguments...>{Value(std::forward<Arguments>(arguments))...});
}
template <class... Arguments>
Value callShared(std::string_view className, std::string_view name, Arguments&&... arguments) {
  return callSharedWith(className, name, Values<Arguments...>{Value(std::forward<Arguments>(arguments))...});
}
template <class... Arguments>
Value callGlobal(std::string_view name, Arguments&&... arguments) {
  return callGlobalWith(name, Values<Arguments...>{Value(std::forward<Arguments>(arguments))...});
}

// Properties: fields, properties with functions, and methods without parameters.
Value get(const Value& object, std::string_view name);
void set(const Value& object, std::string_view name, const Value& value);
Value constant(std::string_view className, std::string_view name);
bool isA(const Value& object, std::string_view className);
std::string classNameOf(const Value& object);  // empty of what is no instance

// The handler gets the event's declared arguments. A null handler detaches. It must not throw through the
// plug-in: what it throws is kept, and thrown on by the call that led to it, or by rethrowHandlerError().
using Handler = std::function<void(const std::vector<Value>&)>;
void setEventHandler(const Value& object, std::string_view event, Handler handler);
void rethrowHandlerError();

// Arrays. A nil Value makes a nil element.
Value stringArray(const std::vector<std::string>& texts);
Value stringArrayOf(const std::vector<Value>& strings);
Value objectArray(const std::vector<Value>& elements);  // of objects or variants
Value dateArray(const std::vector<Value>& dates);
Value int32Array(const std::vector<int32_t>& numbers);
Value int64Array(const std::vector<int64_t>& numbers);
Value singleArray(const std::vector<float>& numbers);
Value doubleArray(const std::vector<double>& numbers);
Value booleanArray(const std::vector<bool>& values);
std::vector<Value> elements(const Value& array);
std::vector<std::string> texts(const Value& stringArray);  // UTF-8

// A variant that says it holds something of that type code, whatever the code; its text is given. It stays a
// variant: a Value of kind object that is no instance.
Value variantOfType(int32_t code, std::string_view text);

// Dates. The fields are kept as they are given, a month of 13 too. A fresh Date is 5 June 1987, 04:03:02.
struct DateFields {
  int32_t year, month, day, hour, minute, second;
  bool operator==(const DateFields&) const = default;
};
Value date(int32_t year, int32_t month, int32_t day, int32_t hour = 0, int32_t minute = 0,
           int32_t second = 0);
DateFields fields(const Value& date);

// Dictionaries. Keys are equal as in the host language: numbers by their value, strings whatever the letter
// case, dates by their fields, other objects by identity. Entries keep the order in which their keys came.
using Entry = std::pair<Value, Value>;
Value dictionary(const std::vector<Entry>& entries = {});
std::vector<Entry> entries(const Value& dictionary);
std::optional<Value> lookUp(const Value& dictionary, const Value& key);

Value memoryBlock(std::string_view bytes);
// An absolute path, in UTF-8. Nothing need be there.
Value folderItem(const std::string& path);
std::string path(const Value& folderItem);

// Classes of other plug-ins of the family, whose instances wrap a Core Foundation reference: it stands at
// byte 24 of the object. Genuine ones have the family's tag at byte 32 from the start. An instance that ends
// releases its reference when it has the tag or got the reference from setWrapped(); a reference in one
// without a tag ends the process. Throws std::logic_error when the name is taken or the base class unknown.
void addWrapperClass(std::string_view name, bool genuine, std::string_view base = {});
// Those that have up to four doubles from byte 24 on.
void addGeometryClass(std::string_view name);
Value geometry(std::string_view className, const std::vector<double>& numbers);
std::vector<double> numbers(const Value& geometry);  // all four
const void* wrapped(const Value& wrapper);           // borrowed
// Takes over one reference, and gives up the one before.
void setWrapped(const Value& wrapper, const void* reference);
uint32_t wrapperTag(const Value& wrapper);

// The bytes of the plug-in's instance data of an object, for tests that look behind the properties.
void* instanceData(const Value& object);

}  // namespace standin::host
