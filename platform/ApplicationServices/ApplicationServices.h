// ApplicationServices as this project uses it: on a Mac, this name means Apple's own header.
#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <CoreServices/CoreServices.h>
#include <CoreText/CoreText.h>
