// CoreServices as this project uses it: on a Mac, this name means Apple's own header. All of it is a weak
// import, because the plug-in loads the framework weakly.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "CarbonCore/Files.h"
#include "CarbonCore/Folders.h"
#include "Metadata/MDItem.h"
#include "Metadata/MDQuery.h"
#include "Metadata/MDSchema.h"
