// The memory contract of the plug-in family: an object of one of its wrapper classes carries a CF or CG
// reference where every plug-in of the family can find it.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "host/records.h"

struct FamilyWrapper {
  uint32_t hostWords[6];
  CFTypeRef reference;  // owned by the wrapper
  uint32_t unknown;
  uint32_t tag;  // kFamilyTag from construction on, when the class is a genuine wrapper of CF values
};
static_assert(offsetof(FamilyWrapper, reference) == 24, "");
static_assert(offsetof(FamilyWrapper, tag) == 32, "");

const uint32_t kFamilyTag = 0x52424346;  // 'RBCF'

inline FamilyWrapper* familyWrapper(REALobject object) {
  return reinterpret_cast<FamilyWrapper*>(object);
}

// A type's own retain function, with the signature that the tables of conversions take.
template <typename Reference, Reference (*retainReference)(Reference)>
CFTypeRef retainBy(CFTypeRef value) {
  return retainReference(static_cast<Reference>(const_cast<void*>(value)));
}

// A rectangle (x, y, width, height), a size (width, height) or a point (x, y).
struct FamilyGeometry {
  uint32_t hostWords[6];
  double fields[4];
};
static_assert(offsetof(FamilyGeometry, fields) == 24, "");
static_assert(sizeof(FamilyGeometry) == 56, "");
