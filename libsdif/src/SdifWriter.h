// SPDX-License-Identifier: MIT
// Writes SDIF files.
#pragma once

#include "SdifTypes.h"

#include <cstddef>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Sdif {

/// A matrix with its elements, row by row.
struct Matrix {
    std::string signature;
    ElementType type = ElementType::Float32;
    std::uint32_t rows = 0;
    std::uint32_t columns = 0;
    std::vector<double> values;
};

/// Pattern: WriteNameValues* WriteFrame*
/// Throws: Error for what the format cannot hold and for a stream that has failed.
class Writer {
public:
    /// Writes the general header.
    /// @param stream  binary, empty, and alive as long as the writer
    explicit Writer(std::ostream& stream);

    /// @param pairs  names without blanks; names and values without any of ";{}"
    void WriteNameValues(const NameValues& pairs);
    /// Elements of whole types are rounded and clipped to what the type holds; NaN becomes 0.
    void WriteFrame(std::string_view signature,
                    double time,
                    std::int32_t stream,
                    std::span<const Matrix> matrices);

private:
    void Put(const std::string& bytes);

    std::ostream& stream_;
};

}  // namespace Sdif
