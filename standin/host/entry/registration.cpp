// Takes the plug-in's class records. What is wrong with one is written down, and the class refused.
//
// Records are read by word numbers and not through structures shared with the plug-in, so that a plug-in that
// lays out its structures wrongly is found out.
#include <cstdint>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "standin/gate/gate.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/language/declarations.h"
#include "standin/host/machine/machine_call.h"
#include "standin/host/state/runtime.h"

namespace standin::host {
namespace {

struct Layout {
  int classWords, methodWords, propertyWords, eventWords, constantWords;
};
constexpr Layout kNewLayout{29, 6, 12, 4, 5};
constexpr Layout kOldLayout{25, 4, 10, 2, 3};  // of control version 9

enum ClassWord {
  classVersion = 0,
  className = 1,
  classSuper = 2,
  classDataSize = 3,
  classDataOffset = 4,
  classConstructor = 5,
  classDestructor = 6,
  classProperties = 7,
  classMethods = 9,
  classEvents = 11,
  classEventInstances = 13,
  classInterfaces = 15,
  classConstants = 18,
  classFlags = 20,
  classSharedProperties = 21,
  classSharedMethods = 23,
  classNewer = 25
};

constexpr uint32_t kMemberFlags = 4;
constexpr uint32_t kPropertyFlags = 6;
constexpr uint32_t kStandardAccess = 0xFFFFFFFF;
constexpr int32_t kMostRows = 10000;  // a count beyond this is a pointer or garbage

// Never 24, where the wrapper classes of other plug-ins keep what they wrap, and another one for every class.
constexpr uint32_t kFirstDataOffset = 48;
constexpr uint32_t kDataOffsetStep = 16;
// No index that a caller would arrive at by counting, and no address.
constexpr uint32_t kFirstEventIndex = 0x00E70001;

const Layout& layoutOf(int32_t controlVersion) {
  return controlVersion > 9 ? kNewLayout : kOldLayout;
}

const char* textAt(uint32_t word) {
  return static_cast<const char*>(addressIn(word));
}

class RegistrationError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

[[noreturn]] void refuse(const std::string& what) {
  throw RegistrationError(what);
}

// What is wrong, told in parts, which are put together only then.
template <class... Parts>
void require(bool fits, const Parts&... what) {
  if (fits) return;
  std::ostringstream text;
  (text << ... << what);
  refuse(text.str());
}

void requireZero(const uint32_t* row, int first, int end, std::string_view what) {
  for (int i = first; i < end; ++i) require(row[i] == 0, what, ": word ", i, " is not 0");
}

Method readMethod(const uint32_t* row, const Layout& layout) {
  require(row[2] != 0, "a method without a declaration");
  Method method;
  method.text = textAt(row[2]);
  method.declaration = parseMethod(method.text);
  require(row[0] != 0, method.text, ": no function");
  require(row[3] == kMemberFlags, method.text, ": flags ", row[3], " instead of 4");
  requireZero(row, 4, layout.methodWords, method.text);
  method.function = addressIn(row[0]);
  method.setter = addressIn(row[1]);
  require(!method.setter || method.declaration.result.kind != TypeKind::none, method.text,
          ": a setter, but no type");
  return method;
}

Property readProperty(const uint32_t* row, const Layout& layout, uint32_t dataSize) {
  require(row[1] != 0 && row[2] != 0, "a property without a name or a type");
  Property property;
  property.name = parseName(textAt(row[1]));
  property.type = parseType(textAt(row[2]));
  require(row[0] == 0, property.name, ": a group, which this host does not take");
  require(row[3] == kPropertyFlags, property.name, ": flags ", row[3], " instead of 6");
  requireZero(row, 7, layout.propertyWords, property.name);
  require(row[4] != 0, property.name, ": no getter");
  property.parameter = row[6];
  property.readOnly = row[5] == 0;
  property.access = row[4] == kStandardAccess ? Property::Access::field : Property::Access::functions;
  if (property.access == Property::Access::functions) {
    require(row[5] != kStandardAccess, property.name, ": a getter function and a standard setter");
    property.getter = addressIn(row[4]);
    property.setter = addressIn(row[5]);
    return property;
  }
  require(row[5] == 0 || row[5] == kStandardAccess, property.name,
          ": a standard getter and a setter function");
  const auto size = static_cast<uint32_t>(property.type.size());
  require(property.parameter % (size > 4 ? 4 : size) == 0, property.name, ": a field at an odd position");
  require(property.parameter < dataSize && dataSize - property.parameter >= size, property.name,
          ": a field at ", property.parameter, " in instance data of ", dataSize, " bytes");
  return property;
}

// The handler's arguments are objects of classes that must be there: unlike a method, an event is bound to
// its parameters' classes when it is taken in.
void requireKnownClasses(const Declaration& declaration, const std::string& text, const std::string& own) {
  for (const Parameter& parameter : declaration.parameters) {
    const std::string& name = parameter.type.className;
    require(name.empty() || sameName(name, own) || runtime().classes.find(name), text, ": the class ", name,
            " is unknown");
  }
}

Event readEvent(uint32_t* row, const Layout& layout, const std::string& own) {
  require(row[0] != 0, "an event without a declaration");
  Event event;
  event.text = textAt(row[0]);
  event.declaration = parseMethod(event.text);
  requireZero(row, 2, layout.eventWords, event.text);
  requireKnownClasses(event.declaration, event.text, own);
  return event;
}

Constant readConstant(const uint32_t* row, const Layout& layout) {
  require(row[0] != 0, "a constant without a declaration");
  Constant constant;
  constant.text = textAt(row[0]);
  constant.declaration = parseConstant(constant.text);
  requireZero(row, 1, layout.constantWords, constant.text);
  return constant;
}

// A table whose memory could not be had is null and keeps its count: its members are missing then, and the
// class is taken all the same.
template <class Read>
void readTable(const uint32_t* record, int word, int rowWords, const char* what, Read read) {
  const auto count = static_cast<int32_t>(record[word + 1]);
  require(count >= 0 && count <= kMostRows, what, ": a count of ", count);
  auto* const table = static_cast<uint32_t*>(addressIn(record[word]));
  if (!table && count > 0) {
    runtime().registrationErrors.push_back(std::string(textAt(record[className])) + ": the table of " + what +
                                           " is null, its count " + std::to_string(count));
    return;
  }
  for (int32_t i = 0; i < count; ++i) {
    try {
      read(table + static_cast<ptrdiff_t>(i) * rowWords);
    } catch (const std::runtime_error& error) {
      refuse(std::string(what) + ", row " + std::to_string(i + 1) + ": " + error.what());
    }
  }
}

void checkVersion(int32_t version) {
  const auto& announced = runtime().announced;
  require(version >= 9 && version <= 12, "control version ", version);
  require(!announced || *announced == version, "control version ", version, " in the record, ",
          announced.value_or(0), " announced");
}

void checkClassWords(const uint32_t* record, const Layout& layout) {
  require(record[className] != 0, "a class without a name");
  require(record[classSuper] == 0, "a superclass, which this host does not take");
  require(record[classDataSize] % 16 == 0, "a data size that is no multiple of 16");
  require(record[classDataSize] <= 4096, "a data size above 4096");
  require(record[classFlags] == kMemberFlags, "class flags ", record[classFlags], " instead of 4");
  requireZero(record, classEventInstances, classConstants, "class record");
  requireZero(record, classSharedProperties, classSharedMethods, "class record");
  requireZero(record, classNewer, layout.classWords, "class record");
}

void readMembers(Class& cls, const uint32_t* record, const Layout& layout) {
  readTable(record, classProperties, layout.propertyWords, "properties",
            [&](uint32_t* row) { cls.properties.push_back(readProperty(row, layout, cls.dataSize)); });
  readTable(record, classMethods, layout.methodWords, "methods",
            [&](uint32_t* row) { cls.methods.push_back(readMethod(row, layout)); });
  readTable(record, classEvents, layout.eventWords, "events",
            [&](uint32_t* row) { cls.events.push_back(readEvent(row, layout, cls.name)); });
  readTable(record, classConstants, layout.constantWords, "constants",
            [&](uint32_t* row) { cls.constants.push_back(readConstant(row, layout)); });
  readTable(record, classSharedMethods, layout.methodWords, "shared methods",
            [&](uint32_t* row) { cls.sharedMethods.push_back(readMethod(row, layout)); });
}

void checkDeclaredOnce(const Class& cls) {
  const auto check = [](const std::vector<Method>& methods) {
    for (size_t i = 0; i < methods.size(); ++i) {
      for (size_t j = 0; j < i; ++j) {
        if (sameSignature(methods[i].declaration, methods[j].declaration))
          refuse(methods[i].text + ": declared twice");
      }
    }
  };
  check(cls.methods);
  check(cls.sharedMethods);
}

// The words that are the host's to fill.
void writeSystemWords(Class& cls, uint32_t* record, const Layout& layout) {
  cls.dataOffset = kFirstDataOffset + kDataOffsetStep * runtime().classes.registered().size();
  record[classDataOffset] = cls.dataOffset;
  auto* const rows = static_cast<uint32_t*>(addressIn(record[classEvents]));
  static uint32_t nextEvent = kFirstEventIndex;
  for (size_t i = 0; i < cls.events.size(); ++i) {
    cls.events[i].index = nextEvent;
    rows[i * static_cast<size_t>(layout.eventWords) + 1] = nextEvent++;
  }
}

void registerClass(uint32_t* record) {
  const auto version = static_cast<int32_t>(record[classVersion]);
  checkVersion(version);
  const Layout& layout = layoutOf(version);
  checkClassWords(record, layout);
  auto cls = std::make_unique<Class>();
  cls->name = parseName(textAt(record[className]));
  require(!runtime().classes.find(cls->name), "the name is taken");
  cls->record = record;
  cls->dataSize = record[classDataSize];
  cls->constructor = addressIn(record[classConstructor]);
  cls->destructor = addressIn(record[classDestructor]);
  readMembers(*cls, record, layout);
  checkDeclaredOnce(*cls);
  writeSystemWords(*cls, record, layout);
  runtime().classes.add(std::move(cls));
}

std::string nameForMessage(uint32_t nameWord) {
  return nameWord ? textAt(nameWord) : "(no name)";
}

}  // namespace

namespace entry {

void RegisterPluginVersion(int32_t version) {
  const Gate gate(__func__);
  if (!gate.fails()) runtime().announced = version;
}

double REALGetRBVersion() {
  const Gate gate(__func__);
  const double version = gate.fails() ? 0 : runtime().settings.version;
  runtime().versionTold = version;
  return version;
}

bool REALinRuntime() {
  const Gate gate(__func__);
  return !gate.fails() && runtime().settings.inRuntime;
}

void PluginRegisterClass(uint32_t* record) {
  const Gate gate(__func__);
  if (!record) die(__func__, "a null record");
  if (gate.fails()) return;
  try {
    registerClass(record);
  } catch (const std::runtime_error& error) {
    runtime().registrationErrors.push_back(nameForMessage(record[className]) + ": " + error.what());
  }
}

void PluginRegisterMethod(uint32_t* record) {
  const Gate gate(__func__);
  if (!record) die(__func__, "a null record");
  if (gate.fails()) return;
  try {
    // A global method comes in the new layout whatever the control version is; old hosts read its beginning.
    const bool old = runtime().announced.value_or(0) == 9;
    runtime().globals.push_back(readMethod(record, old ? kOldLayout : kNewLayout));
  } catch (const std::runtime_error& error) {
    runtime().registrationErrors.push_back(std::string("global method: ") + error.what());
  }
}

}  // namespace entry
}  // namespace standin::host
