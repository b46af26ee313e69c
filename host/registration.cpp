#include "registration.h"

#include <string.h>

#include "owned.h"
#include "services.h"

namespace {

// Rows in the layout of control version 9: the first words of today's rows.
struct OldMethod {
  uint32_t words[4];
};
struct OldProperty {
  uint32_t words[10];
};
struct OldEvent {
  uint32_t declaration;
  uint32_t systemUse;
};
struct OldConstant {
  uint32_t words[3];
};
static_assert(sizeof(OldProperty) == 40 && sizeof(OldMethod) == 16 && sizeof(OldEvent) == 8 &&
                  sizeof(OldConstant) == 12,
              "the layouts of control version 9");

// Words of a class record in the older layout; those it has are where they are today.
const size_t kOldClassSize = 25 * 4;

template <typename OldRow, typename Row>
OldRow* olderTable(const Row* table, int32_t count) {
  static_assert(sizeof(OldRow) < sizeof(Row), "the older row is the beginning of today's");
  if (!table || count == 0) return nullptr;
  const auto older =
      reinterpret_cast<OldRow*>(allocateZeroed(int64_t{count} * int64_t{sizeof(OldRow)}).leak());
  for (int32_t i = 0; older && i < count; ++i) memcpy(&older[i], &table[i], sizeof(OldRow));
  return older;
}

// The host writes its system-use words into the copies; each of our own rows is made to point at its copy, so
// that REALGetEventInstance finds the word.
REALevent* olderEvents(REALevent* events, int32_t count) {
  OldEvent* const older = olderTable<OldEvent>(events, count);
  for (int32_t i = 0; older && i < count; ++i) events[i].systemUse = reinterpret_cast<uint32_t>(&older[i]);
  return reinterpret_cast<REALevent*>(older);
}

const REALmethodDefinition* olderMethods(const REALmethodDefinition* methods, int32_t count) {
  return reinterpret_cast<REALmethodDefinition*>(olderTable<OldMethod>(methods, count));
}

const REALproperty* olderProperties(const REALproperty* properties, int32_t count) {
  return static_cast<REALproperty*>(FixProperties(properties, count));
}

void convertToOldLayout(REALclassDefinition* definition) {
  REALclassDefinition older = *definition;
  older.version = CurrentREALControlVersion;
  older.properties = olderProperties(older.properties, older.propertyCount);
  older.methods = olderMethods(older.methods, older.methodCount);
  older.events = olderEvents(older.events, older.eventCount);
  memset(older.unused, 0, sizeof older.unused);
  older.constants =
      reinterpret_cast<REALconstant*>(olderTable<OldConstant>(older.constants, older.constantCount));
  older.sharedProperties = olderProperties(older.sharedProperties, older.sharedPropertyCount);
  older.sharedMethods = olderMethods(older.sharedMethods, older.sharedMethodCount);
  memcpy(static_cast<void*>(definition), &older, kOldClassSize);
}

}  // namespace

void MyREALRegisterClass(REALclassDefinition* definition) {
  while (definition->dataSize % 16 != 0) ++definition->dataSize;
  if (CurrentREALControlVersion > 9) {
    definition->version = CurrentREALControlVersion;
  } else {
    convertToOldLayout(definition);
  }
  REALRegisterClass(definition);
}

void* FixProperties(const REALproperty* properties, int32_t count) {
  return olderTable<OldProperty>(properties, count);
}

void* REALGetEventInstance(REALobject instance, const REALevent* event) {
  if (CurrentREALControlVersion > 9) return REALGetEventHandler(instance, event->systemUse);
  const auto copy = reinterpret_cast<const OldEvent*>(event->systemUse);
  return copy ? REALGetEventHandler(instance, copy->systemUse) : nullptr;  // without memory there is no copy
}
