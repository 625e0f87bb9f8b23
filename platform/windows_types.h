#pragma once

// The basic Windows types and codes that the biometric platform's interface is written in.
//
// On Windows they come from <windows.h>. Elsewhere this header supplies the same names with the
// widths that they have on 64-bit Windows, so that the structures of wbf.h have one layout on every
// system. ULONG and DWORD are 32 bits wide everywhere.

#ifdef _WIN32

#include <windows.h>

#else

#include <cstddef>
#include <cstdint>

// The platform's calling convention; the ordinary C one where the compiler's target has no other.
#define WINAPI

using HRESULT = std::int32_t;  // negative values are failures
using BOOL = std::int32_t;
using BOOLEAN = std::uint8_t;
using UCHAR = std::uint8_t;
using USHORT = std::uint16_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using LONGLONG = std::int64_t;
using SIZE_T = std::size_t;
using WCHAR = char16_t;
using HANDLE = void*;
using LPVOID = void*;
using PVOID = void*;
using PUCHAR = UCHAR*;
using PULONG = ULONG*;
using PSIZE_T = SIZE_T*;
using PBOOLEAN = BOOLEAN*;
using PCWSTR = const WCHAR*;

struct GUID {
    ULONG Data1;
    USHORT Data2;
    USHORT Data3;
    UCHAR Data4[8];
};

union LARGE_INTEGER {
    LONGLONG QuadPart;
};

inline constexpr BOOLEAN FALSE = 0;
inline constexpr BOOLEAN TRUE = 1;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001U);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003U);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);
inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005U);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057U);

constexpr bool SUCCEEDED(HRESULT hr) {
    return hr >= 0;
}

constexpr bool FAILED(HRESULT hr) {
    return hr < 0;
}

#endif

using PGUID = GUID*;
