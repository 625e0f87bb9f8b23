#include "tools/orl_finger/generate_command.h"

#include <filesystem>
#include <system_error>

#include "tools/command_line/one_line.h"
#include "tools/command_line/utf8_path.h"
#include "tools/orl_finger/complaint.h"
#include "tools/orl_finger/file_bytes.h"
#include "tools/orl_finger/impression.h"

namespace orl::tools {
namespace {

constexpr int kFirstFingerName = 101;

bool makeDirectory(const std::string& name, std::ostream& err) {
    std::error_code error;
    std::filesystem::create_directories(pathFromUtf8(name), error);
    if (error) {
        complain(err, name, error.message());
    }
    return !error;
}

bool writeImpression(const GenerateOptions& options,
                     const MasterFinger& finger,
                     int fingerNumber,
                     int impressionNumber,
                     std::ostream& err) {
    RandomStream random = RandomStream::forPart(options.seed,
                                                static_cast<std::uint64_t>(fingerNumber),
                                                static_cast<std::uint64_t>(impressionNumber));
    const std::string name = options.directory + "/" + std::to_string(fingerNumber) + "_" +
                             std::to_string(impressionNumber) + ".fmr";
    std::string reason;
    if (writeFile(name, bytesFromRecord(drawImpression(finger, random)), reason)) {
        return true;
    }
    complain(err, name, reason);
    return false;
}

// Part 0 of a finger is the finger itself, the parts from 1 on are its impressions.
bool writeFinger(const GenerateOptions& options, int fingerNumber, std::ostream& err) {
    RandomStream random =
        RandomStream::forPart(options.seed, static_cast<std::uint64_t>(fingerNumber), 0);
    const MasterFinger finger = drawFinger(random);
    for (int impression = 1; impression <= options.impressions; ++impression) {
        if (!writeImpression(options, finger, fingerNumber, impression, err)) {
            return false;
        }
    }
    return true;
}

}  // namespace

ExitStatus runGenerate(const GenerateOptions& options, std::ostream& out, std::ostream& err) {
    if (!makeDirectory(options.directory, err)) {
        return ExitStatus::kFailed;
    }
    for (int finger = 0; finger < options.fingers; ++finger) {
        if (!writeFinger(options, kFirstFingerName + finger, err)) {
            return ExitStatus::kFailed;
        }
    }
    const int records = options.fingers * options.impressions;
    out << counted(static_cast<std::size_t>(records), "record") << " in "
        << oneLine(options.directory) << '\n';
    return ExitStatus::kDone;
}

}  // namespace orl::tools
