#pragma once

#include <CoreFoundation/CoreFoundation.h>

#define CS_EXPORT extern "C" __attribute__((visibility("default"))) WEAK_IMPORT_ATTRIBUTE

typedef SInt16 FSVolumeRefNum;
typedef UInt32 FSCatalogInfoBitmap;
typedef UInt32 TextEncoding;

enum { nsvErr = -35, bdNamErr = -37, paramErr = -50, dirNFErr = -120 };

// The directory of a volume's root, and the one that the root itself is said to lie in.
enum { fsRtParID = 1, fsRtDirID = 2 };

enum {
  kFSCatInfoNone = 0x00000000,
  kFSCatInfoNodeFlags = 0x00000002,
  kFSCatInfoVolume = 0x00000004,
  kFSCatInfoParentDirID = 0x00000008,
  kFSCatInfoNodeID = 0x00000010,
  kFSCatInfoGettableInfo = 0x0003FFFF
};
enum { kFSNodeIsDirectoryMask = 0x0010 };

#pragma pack(push, 2)

struct FSRef {
  UInt8 hidden[80];
};
static_assert(sizeof(FSRef) == 80, "FSRef");

struct FSSpec {
  FSVolumeRefNum vRefNum;
  SInt32 parID;
  StrFileName name;  // a Pascal string in the encoding of the system's script
};
static_assert(sizeof(FSSpec) == 70, "FSSpec");
static_assert(offsetof(FSSpec, parID) == 2 && offsetof(FSSpec, name) == 6, "FSSpec");
typedef FSSpec* FSSpecPtr;

struct UTCDateTime {
  UInt16 highSeconds;
  UInt32 lowSeconds;
  UInt16 fraction;
};
static_assert(sizeof(UTCDateTime) == 8, "UTCDateTime");

struct FSCatalogInfo {
  UInt16 nodeFlags;
  FSVolumeRefNum volume;
  UInt32 parentDirID;
  UInt32 nodeID;
  UInt8 sharingFlags;
  UInt8 userPrivileges;
  UInt8 reserved1;
  UInt8 reserved2;
  UTCDateTime createDate;
  UTCDateTime contentModDate;
  UTCDateTime attributeModDate;
  UTCDateTime accessDate;
  UTCDateTime backupDate;
  UInt32 permissions[4];
  UInt8 finderInfo[16];
  UInt8 extFinderInfo[16];
  UInt64 dataLogicalSize;
  UInt64 dataPhysicalSize;
  UInt64 rsrcLogicalSize;
  UInt64 rsrcPhysicalSize;
  UInt32 valence;
  TextEncoding textEncodingHint;
};
static_assert(sizeof(FSCatalogInfo) == 144, "FSCatalogInfo");
static_assert(offsetof(FSCatalogInfo, nodeID) == 8 && offsetof(FSCatalogInfo, dataLogicalSize) == 104,
              "FSCatalogInfo");

#pragma pack(pop)

CS_EXPORT OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                                 HFSUniStr255* outName, FSSpecPtr fsSpec, FSRef* parentRef);
CS_EXPORT OSErr FSpMakeFSRef(const FSSpec* source, FSRef* newRef);
