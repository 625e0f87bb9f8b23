#pragma once

// A demonstration's summary as text and as JSON.

#include <string>

#include <nlohmann/json_fwd.hpp>

#include "tools/orl_unit/demo.h"

namespace orl::unit {

// The table of steps and the lines below it.
std::string demoText(const DemoSummary& summary);

// One object; times are in milliseconds.
nlohmann::ordered_json demoJson(const DemoSummary& summary);

}  // namespace orl::unit
