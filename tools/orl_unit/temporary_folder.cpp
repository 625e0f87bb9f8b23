#include "tools/orl_unit/temporary_folder.h"

#include <random>
#include <string>
#include <system_error>

#include "tools/orl_unit/command_error.h"

namespace orl::unit {

TemporaryFolder::TemporaryFolder() {
    std::error_code failure;
    const auto parent = std::filesystem::temp_directory_path(failure);
    std::random_device random;
    path_ = parent / ("orl-unit-" + std::to_string(random()) + "-" + std::to_string(random()));
    // False when the name is taken, which nobody but an intruder would manage.
    if (failure || !std::filesystem::create_directory(path_, failure)) {
        throw CommandError("no temporary folder can be made");
    }
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, failure);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace orl::unit
