// SPDX-License-Identifier: MIT
// Memory in which the values of an array attribute are answered.
#pragma once

#include "max/VelkMaxTexts.h"
#include "text/VelkDspException.h"

#include <cstddef>
#include <span>

namespace VelkMax {

/// A block of floats of the host's own allocator: an answer needs no further memory on our side.
class AttributeStorage {
public:
    /// Throws: tav::Exception where there is no memory.
    AttributeStorage(std::size_t count, tav::SourceSite site)
        : values_(reinterpret_cast<float*>(sysmem_newptr(count * sizeof(float)))),
          count_(count) {
        if (values_ == nullptr) throw tav::Exception(kNoMemoryForAttribute.Format(), site);
    }
    ~AttributeStorage() { sysmem_freeptr(values_); }
    AttributeStorage(const AttributeStorage&) = delete;
    AttributeStorage& operator=(const AttributeStorage&) = delete;

    /// Contents: whatever the last user left.
    std::span<float> First(std::size_t count) const {
        return std::span(values_, count_).first(count);
    }

private:
    float* values_;
    std::size_t count_;
};

}  // namespace VelkMax
