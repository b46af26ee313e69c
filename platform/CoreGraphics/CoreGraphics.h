// Core Graphics as this project uses it: on a Mac, this name means Apple's own header.
#pragma once

#include "CGBase.h"
#include "CGColor.h"
#include "CGColorSpace.h"
#include "CGContext.h"
#include "CGDataConsumer.h"
#include "CGDataProvider.h"
#include "CGEvent.h"
#include "CGEventSource.h"
#include "CGFont.h"
#include "CGGeometry.h"
#include "CGImage.h"
#include "CGLayer.h"
#include "CGPSConverter.h"
#include "CGPath.h"
