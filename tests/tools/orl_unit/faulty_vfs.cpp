#include "tests/tools/orl_unit/faulty_vfs.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include <sqlite3.h>

namespace orl::unit {
namespace {

constexpr const char* kName = "faulty";

struct Countdown {
    std::size_t remaining = 0;
    int resultCode = SQLITE_OK;
    bool failed = false;

    // Counts one writing operation; its result when it is to fail, else SQLITE_OK.
    int take() {
        if (remaining > 0) {
            --remaining;
            return SQLITE_OK;
        }
        failed = true;
        return resultCode;
    }
};

Countdown countdown;
sqlite3_vfs* systemVfs = nullptr;
sqlite3_vfs faultyVfs;

// A file of this file system: the base, followed by the system's file.
struct FaultyFile {
    sqlite3_file base;
    sqlite3_file* real;
};

sqlite3_file* real(sqlite3_file* file) {
    return reinterpret_cast<FaultyFile*>(file)->real;
}

int closeFile(sqlite3_file* file) {
    return real(file)->pMethods->xClose(real(file));
}
int readFile(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
    return real(file)->pMethods->xRead(real(file), bytes, count, offset);
}
int writeFile(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    const int failure = countdown.take();
    return failure != SQLITE_OK ? failure
                                : real(file)->pMethods->xWrite(real(file), bytes, count, offset);
}
int truncateFile(sqlite3_file* file, sqlite3_int64 size) {
    const int failure = countdown.take();
    return failure != SQLITE_OK ? failure : real(file)->pMethods->xTruncate(real(file), size);
}
int syncFile(sqlite3_file* file, int flags) {
    const int failure = countdown.take();
    return failure != SQLITE_OK ? failure : real(file)->pMethods->xSync(real(file), flags);
}
int fileSize(sqlite3_file* file, sqlite3_int64* size) {
    return real(file)->pMethods->xFileSize(real(file), size);
}
int lockFile(sqlite3_file* file, int level) {
    return real(file)->pMethods->xLock(real(file), level);
}
int unlockFile(sqlite3_file* file, int level) {
    return real(file)->pMethods->xUnlock(real(file), level);
}
int checkReservedLock(sqlite3_file* file, int* isReserved) {
    return real(file)->pMethods->xCheckReservedLock(real(file), isReserved);
}
int controlFile(sqlite3_file* file, int operation, void* argument) {
    return real(file)->pMethods->xFileControl(real(file), operation, argument);
}
int sectorSize(sqlite3_file* file) {
    return real(file)->pMethods->xSectorSize(real(file));
}
int deviceCharacteristics(sqlite3_file* file) {
    return real(file)->pMethods->xDeviceCharacteristics(real(file));
}

const sqlite3_io_methods kMethods = {1,
                                     closeFile,
                                     readFile,
                                     writeFile,
                                     truncateFile,
                                     syncFile,
                                     fileSize,
                                     lockFile,
                                     unlockFile,
                                     checkReservedLock,
                                     controlFile,
                                     sectorSize,
                                     deviceCharacteristics,
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr};

int openFile(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    auto* const faulty = reinterpret_cast<FaultyFile*>(file);
    faulty->real = reinterpret_cast<sqlite3_file*>(faulty + 1);
    const int result = systemVfs->xOpen(systemVfs, name, faulty->real, flags, outFlags);
    faulty->base.pMethods = faulty->real->pMethods == nullptr ? nullptr : &kMethods;
    return result;
}

int deleteFile(sqlite3_vfs* /*vfs*/, const char* name, int syncFolder) {
    const int failure = countdown.take();
    return failure != SQLITE_OK ? failure : systemVfs->xDelete(systemVfs, name, syncFolder);
}

}  // namespace

FaultyVfs::FaultyVfs(std::size_t allowedOperations, int resultCode) {
    countdown = {allowedOperations, resultCode, false};
    systemVfs = sqlite3_vfs_find(nullptr);
    faultyVfs = *systemVfs;
    faultyVfs.zName = kName;
    faultyVfs.szOsFile = static_cast<int>(sizeof(FaultyFile)) + systemVfs->szOsFile;
    faultyVfs.xOpen = openFile;
    faultyVfs.xDelete = deleteFile;
    faultyVfs.pNext = nullptr;
    sqlite3_vfs_register(&faultyVfs, 1);
}

FaultyVfs::~FaultyVfs() {
    sqlite3_vfs_unregister(&faultyVfs);
    sqlite3_vfs_register(systemVfs, 1);
}

bool FaultyVfs::failed() const {
    return countdown.failed;
}

}  // namespace orl::unit
