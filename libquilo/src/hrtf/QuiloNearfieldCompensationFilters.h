// SPDX-License-Identifier: MIT
// Filters that turn what is heard from far away into what is heard from near by.
#pragma once

#include "hrtf/QuiloHrtf.h"

#include <string>

namespace Quilo {

/// The set of a ".near" file, empty until one is loaded. Its container is that of HRTF sets.
class NearfieldCompensationFilters {
public:
    /// After a failure the set is what it was before.
    /// @param path  UTF-8, with the extension "near"
    /// Thread: control; files are read.  Throws: tav::Exception.
    void Load(const std::string& path);

    const Hrtf& Set() const noexcept { return set_; }

private:
    Hrtf set_;
};

}  // namespace Quilo
