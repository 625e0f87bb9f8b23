#pragma once

// What loading from memory and loading from a file have in common. For these two alone: a program
// that loads from memory links no code for files.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "matcher/api/template_loading.h"

namespace orl::matcher {

// Reads the record into `loaded`, which is fresh; returns 0, loadFailStatus or noFingerStatus.
// Throws as the loaders do.
template <FeatureForm kForm>
std::int32_t loadRecord(const std::uint8_t* buffer,
                        std::size_t size,
                        std::int32_t loadFailStatus,
                        std::int32_t noFingerStatus,
                        BasicLoadedTemplate<kForm>& loaded);

extern template std::int32_t loadRecord(
    const std::uint8_t*, std::size_t, std::int32_t, std::int32_t, LoadedTemplate&);
extern template std::int32_t loadRecord(
    const std::uint8_t*, std::size_t, std::int32_t, std::int32_t, FullLoadedTemplate&);

// Empty for status 0, else the status text and where the record came from.
std::string loadMessage(std::int32_t status, std::string_view source);

}  // namespace orl::matcher
