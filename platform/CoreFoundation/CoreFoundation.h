// Core Foundation as this project uses it: on a Mac, this name means Apple's own header.
#pragma once

#include "CFArray.h"
#include "CFBase.h"
#include "CFBundle.h"
#include "CFData.h"
#include "CFDate.h"
#include "CFDictionary.h"
#include "CFNotificationCenter.h"
#include "CFNumber.h"
#include "CFString.h"
#include "CFURL.h"
