// Weak imports: what a system may lack. Absent, a function's address and a constant's address are null.
#pragma once

#if defined(__APPLE__)
#define WEAK_IMPORT_ATTRIBUTE __attribute__((weak_import))
#else
#define WEAK_IMPORT_ATTRIBUTE __attribute__((weak))
#endif
