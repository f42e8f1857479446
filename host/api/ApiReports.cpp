// SPDX-License-Identifier: MIT
#include "ApiReports.h"

#include <mutex>
#include <utility>

namespace HostApi {
namespace {

struct Console {
    std::recursive_mutex mutex;  // recursive, since a sink may cause another post
    ConsoleSink sink;
};

Console& TheConsole() {
    static auto& console = *new Console;
    return console;
}

}  // namespace

void SetConsoleSink(ConsoleSink sink) {
    Console& console = TheConsole();
    const std::lock_guard lock(console.mutex);
    console.sink = std::move(sink);
}

void WriteRow(PostKind kind, std::string_view text, t_object* object) {
    Console& console = TheConsole();
    const std::lock_guard lock(console.mutex);
    if (console.sink) console.sink(kind, text, object);
}

}  // namespace HostApi
