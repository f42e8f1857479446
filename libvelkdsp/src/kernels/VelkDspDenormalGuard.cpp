// SPDX-License-Identifier: MIT
#include "kernels/VelkDspDenormalGuard.h"

#if defined(__SSE2__) || defined(_M_X64)
#include <xmmintrin.h>
#define TAV_HAS_MXCSR 1
#else
#define TAV_HAS_MXCSR 0
#endif

namespace tav {

#if TAV_HAS_MXCSR

namespace {
constexpr unsigned kFlushResultsToZero = 0x8000;
constexpr unsigned kOperandsAreZero = 0x0040;
}  // namespace

DenormalGuard::DenormalGuard() noexcept TAV_NONBLOCKING : callersMode_(_mm_getcsr()) {
    _mm_setcsr(callersMode_ | kFlushResultsToZero | kOperandsAreZero);
}

DenormalGuard::~DenormalGuard() noexcept TAV_NONBLOCKING { _mm_setcsr(callersMode_); }

#else

DenormalGuard::DenormalGuard() noexcept TAV_NONBLOCKING = default;
DenormalGuard::~DenormalGuard() noexcept TAV_NONBLOCKING = default;

#endif

}  // namespace tav
