// SPDX-License-Identifier: MIT
// An object with the standard messages and two attributes, whose getters do what a test wants.
#pragma once

#include "src/PanBox.h"

#include <functional>

namespace Tests {

/// One at a time: the console is global. The attributes: "level", a float from 0 to 10 with the
/// default 5, and "odd", a long of 7 unless `getOdd` says otherwise.
class ToyBox : public Box {
public:
    using Getter = std::function<t_max_err(max_long*, t_atom**)>;

    ToyBox();
    ~ToyBox();

    /// Gives "odd" a property.
    void AddProperty(const char* property, const char* type, const char* text);
    /// Gives "odd" a property that cannot be read.
    void AddUnreadableProperty(const char* property);

    Getter getOdd;
};

}  // namespace Tests
