#include "tests/support/guarded_buffer.h"

#include <cstring>
#include <new>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace orl::test {
namespace {

#ifdef _WIN32

std::size_t PageBytes() {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwPageSize;
}

void* AllocatePages(std::size_t bytes) {
    return VirtualAlloc(nullptr, bytes, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
}

bool ForbidReading(void* page, std::size_t bytes) {
    DWORD previous = 0;
    return VirtualProtect(page, bytes, PAGE_NOACCESS, &previous) != 0;
}

void FreePages(void* pages, std::size_t) {
    VirtualFree(pages, 0, MEM_RELEASE);
}

#else

std::size_t PageBytes() {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

void* AllocatePages(std::size_t bytes) {
    void* const pages =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return pages == MAP_FAILED ? nullptr : pages;
}

bool ForbidReading(void* page, std::size_t bytes) {
    return mprotect(page, bytes, PROT_NONE) == 0;
}

void FreePages(void* pages, std::size_t bytes) {
    munmap(pages, bytes);
}

#endif

}  // namespace

GuardedBuffer::GuardedBuffer(std::span<const std::uint8_t> bytes) : size_(bytes.size()) {
    const std::size_t pageBytes = PageBytes();
    const std::size_t readableBytes = (size_ / pageBytes + 1) * pageBytes;
    pagesBytes_ = readableBytes + pageBytes;
    pages_ = AllocatePages(pagesBytes_);
    if (pages_ == nullptr) {
        throw std::bad_alloc();
    }
    std::uint8_t* const forbidden = static_cast<std::uint8_t*>(pages_) + readableBytes;
    if (!ForbidReading(forbidden, pageBytes)) {
        FreePages(pages_, pagesBytes_);
        throw std::bad_alloc();
    }
    data_ = forbidden - size_;
    if (size_ != 0) {
        std::memcpy(data_, bytes.data(), size_);
    }
}

GuardedBuffer::~GuardedBuffer() {
    FreePages(pages_, pagesBytes_);
}

}  // namespace orl::test
