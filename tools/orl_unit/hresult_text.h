#pragma once

// HRESULTs for messages.

#include <string>

#include "platform/wbf.h"

namespace orl::unit {

// "NAME (0x80098003)" for a code of the framework's or a common one, "0x..." alone for others.
std::string hresultText(HRESULT result);

}  // namespace orl::unit
