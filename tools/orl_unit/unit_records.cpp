// Listing and deleting what is stored; the service does both without the engine.

#include "tools/orl_unit/biometric_unit.h"
#include "tools/orl_unit/finger_names.h"
#include "tools/orl_unit/unit_sessions.h"

namespace orl::unit {
namespace {

WINBIO_IDENTITY everybody() {
    WINBIO_IDENTITY identity = {};
    identity.Type = WINBIO_ID_TYPE_WILDCARD;
    identity.Value.Wildcard = WINBIO_IDENTITY_WILDCARD;
    return identity;
}

}  // namespace

void BiometricUnit::listRecords(const std::function<void(const ListedRecord&)>& visit) {
    const CaptureSession session(*this);
    WINBIO_STORAGE_INTERFACE& routines = *pipeline_.StorageInterface;
    WINBIO_IDENTITY identity = everybody();
    HRESULT found = routines.QueryBySubject(&pipeline_, &identity, WINBIO_SUBTYPE_ANY);
    while (SUCCEEDED(found)) {
        WINBIO_STORAGE_RECORD record = {};
        check(routines.GetCurrentRecord(&pipeline_, &record), "GetCurrentRecord");
        visit({{nameOf(*record.Identity), record.SubFactor},
               record.Identity,
               record.TemplateBlobSize});
        found = routines.NextRecord(&pipeline_);
    }
    if (found != WINBIO_E_DATABASE_NO_RESULTS && found != WINBIO_E_DATABASE_NO_MORE_RECORDS) {
        failCall(found, "NextRecord");
    }
}

std::size_t BiometricUnit::deleteRecords(const std::optional<std::string>& name,
                                         std::uint8_t subFactor) {
    const CaptureSession session(*this);
    WINBIO_STORAGE_INTERFACE& routines = *pipeline_.StorageInterface;
    WINBIO_IDENTITY identity = name ? identityOf(*name) : everybody();
    SIZE_T recordCount = 0;
    if (SUCCEEDED(routines.QueryBySubject(&pipeline_, &identity, subFactor))) {
        routines.GetRecordCount(&pipeline_, &recordCount);
    }
    const HRESULT deleted = routines.DeleteRecord(&pipeline_, &identity, subFactor);
    if (deleted == WINBIO_E_DATABASE_NO_SUCH_RECORD) {
        throw CommandError((name ? inQuotes(*name) + " has" : std::string("there is")) +
                           " no such record to delete");
    }
    check(deleted, "DeleteRecord");
    return recordCount;
}

}  // namespace orl::unit
