// SPDX-License-Identifier: MIT
// The bytes of one file, read in order and never beyond its end.
#pragma once

#include "files/VelkDspByteOrder.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>

namespace tav {

/// A stream of known length, and the name under which its faults are told.
/// Thread: control.  Throws: tav::Exception "NAME: FAULT".
class ByteSource {
public:
    /// @param stream  must outlive the source and be able to seek
    ByteSource(std::istream& stream, std::string name);

    std::uint64_t Size() const noexcept { return size_; }
    std::uint64_t Position() const noexcept { return position_; }
    std::uint64_t Left() const noexcept { return size_ - position_; }

    /// Beyond the end means the end.
    void Seek(std::uint64_t position);
    /// Fills `bytes`; fails when fewer are left.
    void Read(std::span<std::uint8_t> bytes);
    ByteBlock Take(std::size_t count);
    /// The next four bytes as text; what cannot be printed becomes '?', for it is shown in
    /// messages.
    std::string TakeId();

    [[noreturn]] void Fail(const std::string& fault) const;

private:
    std::istream& stream_;
    std::string name_;
    std::uint64_t size_ = 0;
    std::uint64_t position_ = 0;
};

}  // namespace tav
