// SPDX-License-Identifier: MIT
// Reads SDIF files of any origin, damaged ones included.
#pragma once

#include "SdifTypes.h"

#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace Sdif {

/// Every size in the file is compared with what is left of the file, or of the frame, before memory
/// is taken or bytes are passed over; so memory stays within a small multiple of the file's size,
/// and every sequence of calls ends. What is cut off is noticed where it is read or passed over:
/// the headers before it are still told.
/// Pattern: ReadNameValues (NextFrame (NextMatrix ReadMatrix?)*)*
/// Throws: Error; the reader is of no use afterwards.
class Reader {
public:
    /// Reads the general header.
    /// @param stream  binary, seekable, and alive as long as the reader
    explicit Reader(std::istream& stream);

    /// The pairs of all name-value tables; other ASCII chunks are passed over.
    NameValues ReadNameValues();
    /// The next frame, nothing at the end of the file. What is left of the frame before it is
    /// passed over.
    std::optional<FrameHeader> NextFrame();
    /// The next matrix of the frame, nothing behind its last one.
    std::optional<MatrixHeader> NextMatrix();
    /// The elements of the matrix, row by row. Whole numbers beyond 2^53 are rounded.
    std::vector<double> ReadMatrix();

private:
    std::uint64_t Left(std::uint64_t end) const noexcept {
        return end < size_ ? end - position_ : size_ - position_;
    }
    std::string Read(std::uint64_t count, std::uint64_t end);
    std::uint32_t ReadWord(std::uint64_t end);
    std::string ReadSignature(std::uint64_t end);
    void MoveTo(std::uint64_t position);

    std::istream& stream_;
    std::uint64_t size_ = 0;
    std::uint64_t position_ = 0;
    std::uint64_t frameEnd_ = 0;    // as its header says
    std::uint64_t nextMatrix_ = 0;  // where it begins; kNowhere: the matrix before it is cut off
    std::uint32_t matricesLeft_ = 0;
    MatrixHeader matrix_;
};

}  // namespace Sdif
