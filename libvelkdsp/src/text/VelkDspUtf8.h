// SPDX-License-Identifier: MIT
// Whether bytes are UTF-8 text.
#pragma once

#include <cstddef>
#include <string_view>

namespace tav {

/// Length in bytes of the first character, 1 to 4; 0 if the text is empty or begins with none: a
/// stray or missing continuation, an overlong form, a surrogate, beyond U+10FFFF.
/// Thread: any.
std::size_t Utf8CharacterLength(std::string_view text) noexcept;

/// The index of the first byte that belongs to no character; npos if there is none.
std::size_t FindBadUtf8(std::string_view text) noexcept;

}  // namespace tav
