#include "tools/orl_finger/inspect_command.h"

#include <cstdint>
#include <exception>
#include <span>

#include "matcher/api/finger_matcher.h"
#include "matcher/api/template_loading.h"
#include "matcher/triangulation/delaunay_mesh.h"
#include "tools/orl_finger/complaint.h"
#include "tools/orl_finger/file_bytes.h"
#include "tools/orl_finger/json_line.h"
#include "tools/orl_finger/match_report.h"

namespace orl::tools {
namespace {

using matcher::FullFingerFeatures;
using matcher::FullLoadedTemplate;
using matcher::Minutia;
using matcher::TriangleFeature;

// One finger view with the triangulation that its triangles were made from.
struct InspectedView {
    const FullFingerFeatures* finger = nullptr;
    std::vector<std::uint64_t> triangulation;
};

struct Inspection {
    std::string record;
    std::int32_t status = 0;
    std::string message;
    FullLoadedTemplate loaded;
    std::vector<InspectedView> views;  // empty when the record did not load
};

std::vector<std::uint64_t> triangulate(std::span<const Minutia> minutiae) {
    std::vector<double> points;
    points.reserve(2 * minutiae.size());
    for (const Minutia& minutia : minutiae) {
        points.push_back(minutia.x);
        points.push_back(minutia.y);
    }
    const matcher::DelaunayMesh mesh(points);
    return {mesh.vertices().begin(), mesh.vertices().end()};
}

void inspectRecord(std::span<const std::uint8_t> bytes, Inspection& inspection) {
    try {
        inspection.status = matcher::loadTemplateFromBuffer(bytes.data(),
                                                            bytes.size(),
                                                            "Probe",
                                                            ORLFingerMatcher_StatusProbeNotLoaded,
                                                            ORLFingerMatcher_StatusProbeEmpty,
                                                            inspection.loaded,
                                                            inspection.message);
        if (inspection.status == 0) {
            for (const FullFingerFeatures& finger : inspection.loaded.fingers) {
                inspection.views.push_back({&finger, triangulate(finger.minutiae)});
            }
        }
    } catch (const std::exception& error) {
        inspection.status = kExceptionStatus;
        inspection.message = error.what();
        inspection.views.clear();
    }
}

void appendHex(std::string& hex, std::uint8_t byte) {
    constexpr char kDigits[] = "0123456789abcdef";
    constexpr unsigned kNibbleBits = 4;
    constexpr unsigned kNibble = 0xF;
    hex += kDigits[byte >> kNibbleBits];
    hex += kDigits[byte & kNibble];
}

// The 16 bytes of a triangle feature, as they are compared, in lower-case hex.
std::string hexFromTriangle(const TriangleFeature& triangle) {
    std::string hex;
    for (const matcher::TriangleVertex& vertex : triangle.vertices) {
        for (const std::uint8_t byte : {vertex.x, vertex.y, vertex.angle, vertex.type}) {
            appendHex(hex, byte);
        }
    }
    for (const std::uint8_t side : triangle.sides) {
        appendHex(hex, side);
    }
    return hex;
}

void appendView(JsonLine& line, const InspectedView& view) {
    line.beginObject().key("minutiae").beginArray();
    for (const Minutia& minutia : view.finger->minutiae) {
        line.beginObject();
        line.key("type").number(std::int64_t{minutia.type});
        line.key("x").number(std::int64_t{minutia.x});
        line.key("y").number(std::int64_t{minutia.y});
        line.key("angle").number(std::int64_t{minutia.angle});
        line.endObject();
    }
    line.endArray().key("triangulation").beginArray();
    for (const std::uint64_t index : view.triangulation) {
        line.number(static_cast<std::int64_t>(index));
    }
    line.endArray().key("triangles").beginArray();
    for (const TriangleFeature& triangle : view.finger->triangles) {
        line.text(hexFromTriangle(triangle));
    }
    line.endArray().endObject();
}

std::string jsonFromInspection(const Inspection& inspection) {
    const FullLoadedTemplate& loaded = inspection.loaded;
    JsonLine line;
    line.beginObject();
    line.key("record").text(inspection.record);
    line.key("status").number(std::int64_t{inspection.status});
    line.key("message").text(inspection.message);
    line.key("imageSize").beginArray();
    line.number(std::int64_t{loaded.imageSize.width});
    line.number(std::int64_t{loaded.imageSize.height});
    line.endArray().key("fingerPositions").beginArray();
    for (const std::uint8_t position : loaded.fingerPositions) {
        line.number(std::int64_t{position});
    }
    line.endArray().key("views").beginArray();
    for (const InspectedView& view : inspection.views) {
        appendView(line, view);
    }
    line.endArray().endObject();
    return line.str();
}

std::string textFromMinutia(const Minutia& minutia) {
    constexpr const char* kTypeNames[] = {"other", "ending", "bifurcation", "reserved"};
    return "    (" + std::to_string(minutia.x) + ", " + std::to_string(minutia.y) + ")  " +
           std::to_string(minutia.angle) + " degrees  " +
           (minutia.type < std::size(kTypeNames) ? kTypeNames[minutia.type] : "unknown") + "\n";
}

std::string textFromInspection(const Inspection& inspection) {
    std::string text = inspection.record + "\n";
    if (inspection.status != 0) {
        return text + "  not loaded: " + inspection.message + "\n";
    }
    text += "  image: " + std::to_string(inspection.loaded.imageSize.width) + " x " +
            std::to_string(inspection.loaded.imageSize.height) + " pixels\n";
    for (std::size_t i = 0; i < inspection.views.size(); ++i) {
        const FullFingerFeatures& finger = *inspection.views[i].finger;
        text += "  view " + std::to_string(i) + ": " + std::to_string(finger.minutiae.size()) +
                " minutiae, " + std::to_string(finger.triangles.size()) + " triangles\n";
        for (const Minutia& minutia : finger.minutiae) {
            text += textFromMinutia(minutia);
        }
    }
    return text;
}

ExitStatus inspectFile(const std::string& name, bool json, std::ostream& out, std::ostream& err) {
    Inspection inspection;
    inspection.record = name;
    std::vector<std::uint8_t> bytes;
    if (!readOrComplain(name, bytes, err)) {
        return ExitStatus::kFailed;
    }
    inspectRecord(bytes, inspection);
    if (json) {
        out << jsonFromInspection(inspection) << '\n';
    } else {
        out << textFromInspection(inspection);
    }
    if (inspection.status == 0) {
        return ExitStatus::kDone;
    }
    complain(err, name, inspection.message);
    return ExitStatus::kFailed;
}

}  // namespace

ExitStatus runInspect(const InspectOptions& options, std::ostream& out, std::ostream& err) {
    ExitStatus end = ExitStatus::kDone;
    for (const std::string& record : options.records) {
        end = worse(end, inspectFile(record, options.json, out, err));
    }
    return end;
}

}  // namespace orl::tools
