// SPDX-License-Identifier: MIT
#include "max/VelkMaxHandlers.h"

namespace VelkMax {

void AddMessages(t_class* type, std::span<const MessageRow> rows) {
    for (const MessageRow& row : rows) {
        if (row.handler(type, row.name) != MAX_ERR_NONE) {
            Error(static_cast<t_object*>(nullptr), kMethodNotAdded, row.name);
        }
    }
}

}  // namespace VelkMax
