#pragma once

// Marks the functions that a loadable module hands out. Everything else is hidden; the lists under
// cmake/exports/ name the same functions to the linker. On Windows that list alone decides, which
// keeps the exported name free of decoration.

#ifdef _WIN32
#define ORL_MODULE_EXPORT
#else
#define ORL_MODULE_EXPORT __attribute__((visibility("default")))
#endif
