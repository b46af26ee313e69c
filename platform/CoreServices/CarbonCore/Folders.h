#pragma once

#include "Files.h"

enum { kOnAppropriateDisk = -32767, kOnSystemDisk = -32768 };
enum { kFrameworksFolderType = 0x6672616D };  // 'fram'

CS_EXPORT OSErr FSFindFolder(FSVolumeRefNum vRefNum, OSType folderType, Boolean createFolder,
                             FSRef* foundRef);
