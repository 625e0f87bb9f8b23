#include "tests/module/hosted_unit.h"

#include <stdexcept>

#include "tests/support/bir_builder.h"

namespace orl::test {
namespace {

constexpr WINBIO_BIOMETRIC_SUBTYPE kRightIndexFinger = 2;

void Require(HRESULT hr, const char* what) {
    if (FAILED(hr)) {
        throw std::runtime_error(std::string(what) + " failed");
    }
}

}  // namespace

WINBIO_ENGINE_INTERFACE& EngineTableOf(const DynamicLibrary& module) {
    using QueryFunction = std::remove_pointer_t<PWINBIO_QUERY_ENGINE_INTERFACE_FN>;
    auto* query = module.Symbol<QueryFunction>("WbioQueryEngineInterface");
    if (query == nullptr) {
        throw std::runtime_error("the module lacks WbioQueryEngineInterface");
    }
    PWINBIO_ENGINE_INTERFACE table = nullptr;
    Require(query(&table), "WbioQueryEngineInterface");
    return *table;
}

HostedUnit::HostedUnit(WINBIO_ENGINE_INTERFACE& engine) : engine_(engine), storage_(pipeline_) {
    pipeline_.EngineInterface = &engine;
    Require(engine_.Attach(&pipeline_), "Attach");
}

HostedUnit::~HostedUnit() {
    engine_.Detach(&pipeline_);
}

HRESULT HostedUnit::Capture(const std::vector<std::uint8_t>& record) {
    std::vector<std::uint8_t> bir = BuildBir(record);
    WINBIO_REJECT_DETAIL rejectDetail = 0;
    return engine_.AcceptSampleData(&pipeline_,
                                    reinterpret_cast<PWINBIO_BIR>(bir.data()),
                                    bir.size(),
                                    WINBIO_PURPOSE_VERIFY,
                                    &rejectDetail);
}

HRESULT HostedUnit::Enroll(const WINBIO_IDENTITY& identity) {
    WINBIO_REJECT_DETAIL rejectDetail = 0;
    Require(engine_.CreateEnrollment(&pipeline_), "CreateEnrollment");
    Require(engine_.UpdateEnrollment(&pipeline_, &rejectDetail), "UpdateEnrollment");
    WINBIO_IDENTITY copy = identity;
    return engine_.CommitEnrollment(&pipeline_, &copy, kRightIndexFinger, nullptr, 0);
}

bool HostedUnit::Verify(const WINBIO_IDENTITY& identity) {
    WINBIO_IDENTITY copy = identity;
    BOOLEAN match = FALSE;
    PUCHAR payload = nullptr;
    SIZE_T payloadSize = 0;
    PUCHAR hash = nullptr;
    SIZE_T hashSize = 0;
    WINBIO_REJECT_DETAIL rejectDetail = 0;
    Require(engine_.VerifyFeatureSet(&pipeline_,
                                     &copy,
                                     kRightIndexFinger,
                                     &match,
                                     &payload,
                                     &payloadSize,
                                     &hash,
                                     &hashSize,
                                     &rejectDetail),
            "VerifyFeatureSet");
    return match != FALSE;
}

}  // namespace orl::test
