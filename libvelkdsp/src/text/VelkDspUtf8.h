// SPDX-License-Identifier: MIT
// Whether bytes are UTF-8 text.
#pragma once

#include <cstddef>
#include <string_view>

namespace tav {

/// Bytes of the character in front, 1 to 4; 0 when the text is empty or begins with bytes that are
/// no character: a stray or missing continuation, an overlong form, a surrogate, beyond U+10FFFF.
/// Thread: any.
std::size_t Utf8CharacterLength(std::string_view text) noexcept;

/// Where the first byte stands that belongs to no character; npos when there is none.
std::size_t FindBadUtf8(std::string_view text) noexcept;

}  // namespace tav
