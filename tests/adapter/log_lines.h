#pragma once

// The captured log as the tests compare it.

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapter/engine_log.h"
#include "adapter/engine_log_capture.h"

namespace orl::test {

// The messages logged since the last call, which all carry the adapter's tag.
inline std::vector<std::string> TakeLog() {
    std::vector<std::string> messages;
    for (adapter::CapturedLine& line : adapter::TakeCapturedLog()) {
        EXPECT_EQ(line.tag, "ORLA_ENGINE_ADAPTER");
        messages.push_back(std::move(line.message));
    }
    return messages;
}

}  // namespace orl::test
