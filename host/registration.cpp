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

// In the older layout a class record ends after its first 25 words.
const size_t kOldClassSize = 25 * 4;

template <typename OldRow, typename Row>
OldRow* tableInOldLayout(const Row* table, int32_t count) {
  static_assert(sizeof(OldRow) < sizeof(Row), "the older row is the beginning of today's");
  if (!table || count == 0) return nullptr;
  const auto older =
      reinterpret_cast<OldRow*>(allocateZeroed(int64_t{count} * int64_t{sizeof(OldRow)}).leak());
  for (int32_t i = 0; older && i < count; ++i) memcpy(&older[i], &table[i], sizeof(OldRow));
  return older;
}

// The host writes its system-use words into the copies. Each of our own rows points at its copy, where
// REALGetEventInstance finds the word.
REALevent* eventsInOldLayout(REALevent* events, int32_t count) {
  OldEvent* const older = tableInOldLayout<OldEvent>(events, count);
  for (int32_t i = 0; older && i < count; ++i) events[i].systemUse = reinterpret_cast<uint32_t>(&older[i]);
  return reinterpret_cast<REALevent*>(older);
}

const REALmethodDefinition* methodsInOldLayout(const REALmethodDefinition* methods, int32_t count) {
  return reinterpret_cast<REALmethodDefinition*>(tableInOldLayout<OldMethod>(methods, count));
}

const REALproperty* propertiesInOldLayout(const REALproperty* properties, int32_t count) {
  return static_cast<REALproperty*>(FixProperties(properties, count));
}

}  // namespace

void convertToOldLayout(REALclassDefinition* definition) {
  REALclassDefinition older = *definition;
  older.version = CurrentREALControlVersion;
  older.properties = propertiesInOldLayout(older.properties, older.propertyCount);
  older.methods = methodsInOldLayout(older.methods, older.methodCount);
  older.events = eventsInOldLayout(older.events, older.eventCount);
  memset(older.unused, 0, sizeof older.unused);
  older.constants =
      reinterpret_cast<REALconstant*>(tableInOldLayout<OldConstant>(older.constants, older.constantCount));
  older.sharedProperties = propertiesInOldLayout(older.sharedProperties, older.sharedPropertyCount);
  older.sharedMethods = methodsInOldLayout(older.sharedMethods, older.sharedMethodCount);
  memcpy(static_cast<void*>(definition), &older, kOldClassSize);
}

void* FixProperties(const REALproperty* properties, int32_t count) {
  return tableInOldLayout<OldProperty>(properties, count);
}

void* REALGetEventInstance(REALobject instance, const REALevent* event) {
  if (CurrentREALControlVersion > 9) return REALGetEventHandler(instance, event->systemUse);
  const auto copy = reinterpret_cast<const OldEvent*>(event->systemUse);
  // There is no copy if memory ran out at registration.
  return copy ? REALGetEventHandler(instance, copy->systemUse) : nullptr;
}
