#pragma once

// A biometric unit: the pipeline of an engine adapter module and the host's storage adapter, worked
// in the order in which the biometric service works it. The sensor adapter's part, delivering a
// sample that has been captured, is played by wrapping a record.
//
// All operations throw CommandError with a reason for the user; StoreError, which is one, when the
// store is the reason. One thread at a time.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/wbf.h"
#include "tools/orl_unit/command_error.h"
#include "tools/orl_unit/loaded_module.h"
#include "tools/orl_unit/record_file.h"
#include "tools/orl_unit/secret_bytes.h"
#include "tools/orl_unit/storage_context.h"

namespace orl::unit {

class StoreError : public CommandError {
  public:
    using CommandError::CommandError;
};

enum class StoreUse {
    kCreateIfMissing,
    kMustExist,
};

struct StoreAccessOptions {
    bool readOnly = false;
    std::chrono::milliseconds lockWait{5000};
};

// Whose finger a record is.
struct Subject {
    std::string name;
    std::uint8_t subFactor = 0;
};

// Time inside the engine's comparing calls, its reading of the store included.
struct ComparisonTime {
    std::chrono::nanoseconds spent{0};
    std::size_t comparisonCount = 0;

    void add(const ComparisonTime& other) {
        spent += other.spent;
        comparisonCount += other.comparisonCount;
    }
};

struct EnrollOutcome {
    std::optional<Subject> duplicateOf;  // whose stored record the duplicate check found
    bool stored = false;
    ComparisonTime time;
};

struct VerifyOutcome {
    bool match = false;
    ComparisonTime time;
};

struct IdentifyOutcome {
    std::optional<Subject> subject;
    ComparisonTime time;
};

enum class DuplicateRule {
    kRefuse,  // a finger that matches a stored record is not enrolled
    kAllow,
};

// A stored record, as listed. The identity is valid during the callback only.
struct ListedRecord {
    Subject subject;
    const WINBIO_IDENTITY* identity = nullptr;
    std::size_t templateBytes = 0;
};

class BiometricUnit {
  public:
    using Progress = std::function<void(std::size_t done, std::size_t total)>;

    // Loads the module, attaches both adapters and asks the engine for its formats.
    explicit BiometricUnit(const std::filesystem::path& modulePath);
    BiometricUnit(const BiometricUnit&) = delete;
    BiometricUnit& operator=(const BiometricUnit&) = delete;
    // Closes the database and detaches both adapters.
    ~BiometricUnit();

    // Opens the store at path, or the one in memory (kMemoryStorePath), for all that follows.
    void openStore(const std::string& path, StoreUse use, const StoreAccessOptions& options);

    // Told of every record that the cursor comes to.
    void onRecord(Progress progress) { storage().onRecord = std::move(progress); }

    // Enrolls a record as a finger of the named identity, which is made when it is new. The record
    // is in the store, durably, when stored is true. Throws CommandError when the identity has that
    // finger already.
    EnrollOutcome enroll(const FingerRecord& record, const Subject& subject, DuplicateRule rule);

    // Compares a record with the first stored record of the subject. Throws CommandError for an
    // unknown name, and for a finger that the identity has not enrolled.
    VerifyOutcome verify(const FingerRecord& record, const Subject& subject);

    // Looks for a record among all stored ones.
    IdentifyOutcome identify(const FingerRecord& record);

    // The sample as the engine exports it after a raw capture of the record.
    SecretBytes captureRaw(const FingerRecord& record);

    // Calls the visitor for every stored record, in the order of enrollment.
    void listRecords(const std::function<void(const ListedRecord&)>& visit);

    // Deletes the records of a subject, or of everybody when the name is not set; sub-factor ANY
    // means all fingers. Returns how many there were. Throws CommandError for an unknown name, or
    // when there is nothing to delete.
    std::size_t deleteRecords(const std::optional<std::string>& name, std::uint8_t subFactor);

  private:
    class CaptureSession;
    class EnrollmentSession;

    StorageContext& storage() const;
    RecordStore& store() const { return *storage().store; }
    WINBIO_ENGINE_INTERFACE& engine() const { return module_.engine(); }

    void queryFormats();
    void detach();
    void createStore(const std::filesystem::path& path);
    void checkStoreFormat() const;

    // Delivers a record to the engine as a captured sample.
    void pushSample(const FingerRecord& record,
                    WINBIO_BIOMETRIC_SUBTYPE subFactor,
                    WINBIO_BIR_PURPOSE purpose);
    SecretBytes sampleOf(const FingerRecord& record,
                         WINBIO_BIOMETRIC_SUBTYPE subFactor,
                         WINBIO_BIR_PURPOSE purpose) const;
    void clearContexts();

    WINBIO_IDENTITY identityOf(const std::string& name);
    WINBIO_IDENTITY identityForEnrollment(const std::string& name);
    std::string nameOf(const WINBIO_IDENTITY& identity);
    void refuseEnrolledSubject(WINBIO_IDENTITY identity, const Subject& subject);
    EnrollOutcome checkForDuplicate();
    void commitEnrollment(WINBIO_IDENTITY identity, const Subject& subject);
    std::size_t comparisonsOfWalk() const;

    // Forgets earlier faults of the store, ahead of a call.
    void forgetFault() { storage().lastFault = {}; }
    // Throws when the store has failed since, whatever the engine made of it.
    void failOnStoreFault() const;
    void failOnStoreStatus(const StoreStatus& status) const;
    // Throws when a call has failed.
    void check(HRESULT result, std::string_view call) const;
    [[noreturn]] void failCall(HRESULT result, std::string_view call) const;

    LoadedModule module_;
    WINBIO_PIPELINE pipeline_ = {};
    WINBIO_REGISTERED_FORMAT sampleFormat_ = {};
    StoreFormat storeFormat_;
    std::string storeName_;
};

}  // namespace orl::unit
