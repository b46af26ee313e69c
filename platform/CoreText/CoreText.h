// Core Text as this project uses it: on a Mac, this name means Apple's own header.
#pragma once

#include "CTDefines.h"
#include "CTFont.h"
#include "CTFontCollection.h"
#include "CTFrame.h"
#include "CTFramesetter.h"
#include "CTGlyphInfo.h"
#include "CTLine.h"
#include "CTParagraphStyle.h"
#include "CTRun.h"
#include "CTRunDelegate.h"
#include "CTTypesetter.h"
