// SPDX-License-Identifier: MIT
// The attribute of functions that may run in the audio thread.
//
// Written after `noexcept`: such a function neither allocates, locks, throws, posts nor touches
// files, and calls only functions with the same attribute. Compilers that know the attribute check
// this; for others it only informs the reader.
#pragma once

#if defined(__clang__) && defined(__has_cpp_attribute)
#if __has_cpp_attribute(clang::nonblocking)
#define TAV_NONBLOCKING [[clang::nonblocking]]
#endif
#endif

#ifndef TAV_NONBLOCKING
#define TAV_NONBLOCKING
#endif
