// The shared methods that name metadata attributes: each returns its own name as a new host string.
#pragma once

#include "host/records.h"

#define PLATFORM_KEY(key) REALstring get##key();
#define TEXT_KEY(key) REALstring get##key();
#include "attribute_keys.inc"
