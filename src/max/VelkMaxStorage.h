// SPDX-License-Identifier: MIT
// Memory for the values that the getter of an array attribute returns.
#pragma once

#include "max/VelkMaxTexts.h"
#include "text/VelkDspException.h"

#include <cstddef>
#include <span>

namespace VelkMax {

/// A block of floats from the host's allocator, made with the object: getters then need no memory
/// of ours.
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

    /// The first `count` floats, not initialised.
    std::span<float> First(std::size_t count) const {
        return std::span(values_, count_).first(count);
    }

private:
    float* values_;
    std::size_t count_;
};

}  // namespace VelkMax
