#include "matcher/matching/scaled_turns.h"

#include <cmath>

#include "matcher/features/lookup_tables.h"

namespace orl::matcher {

const ScaledTurns& ScaledTurns::Table() {
    static const ScaledTurns table;
    return table;
}

ScaledTurns::ScaledTurns() : entries_{} {
    constexpr float kScale = 32767.0F;
    const auto scaled = [](float value) {
        return static_cast<std::int16_t>(std::lround(value * kScale));
    };
    const auto scaledTurn = [&](std::int16_t rotation) {
        return ScaledTurn{scaled(Cos(rotation)), scaled(Sin(rotation))};
    };
    for (int rotation = -kReach; rotation <= kReach; ++rotation) {
        entries_[static_cast<std::size_t>(rotation + kReach)] = {
            scaledTurn(static_cast<std::int16_t>(rotation)),
            scaledTurn(oppositeRotation(rotation))};
    }
}

}  // namespace orl::matcher
