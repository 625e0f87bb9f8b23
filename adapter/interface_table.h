#pragma once

// The module's export and the table that it hands out. All other entry points are reached through
// the table; docs/adapter.md lists its slots.

#include "platform/module_export.h"
#include "platform/wbf.h"

// Stores the address of the engine adapter's table through EngineInterface and returns S_OK. The
// table is constant data: the same for every call and never written. The pointer is not checked.
// Never throws; safe from any thread, any number of times.
extern "C" ORL_MODULE_EXPORT HRESULT WINAPI
WbioQueryEngineInterface(PWINBIO_ENGINE_INTERFACE* EngineInterface) noexcept;
