// Host folder items and file URLs.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "host/owned.h"

// A new file URL, also for a file that does not exist yet in a folder that does; its name is then in
// decomposed form. Null for nil, and when no URL can be made of what the host tells about the file.
Owned<CFURLRef> CreateCFURLfromFolderItem(REALobject item);

// A new folder item, or, for a URL that names no place in the file system, a string variant of the absolute
// URL. Nil when the host makes neither.
Owned<REALobject> CFURL2RBVariant(CFURLRef url);
