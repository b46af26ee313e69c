// Carbon as this project uses it: on a Mac, this name means Apple's own header.
#pragma once

#include "HIToolbox/MacApplication.h"
