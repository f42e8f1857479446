// SPDX-License-Identifier: MIT
#include "ApiReports.h"

#include "ApiSink.h"

#include <utility>

namespace HostApi {
namespace {

/// Never destroyed: modules may post while the program ends.
Sink<ConsoleSink>& TheConsole() {
    static auto& console = *new Sink<ConsoleSink>;
    return console;
}

}  // namespace

void SetConsoleSink(ConsoleSink sink) { TheConsole().Set(std::move(sink)); }

void WriteRow(PostKind kind, std::string_view text, t_object* object) {
    TheConsole().Call(kind, text, object);
}

}  // namespace HostApi
