// SPDX-License-Identifier: MIT
#include "text/VelkDspException.h"

#include "text/VelkDspLog.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace tav {
namespace {

// The libraries come first, since their paths contain "src/", too.
constexpr std::string_view kRoots[] = {"libvelkdsp/src/", "libquilo/src/", "libsdif/src/", "src/",
                                       "host/",           "tools/",        "tests/"};

std::size_t StartOfRoot(std::string_view path, std::string_view root) {
    const std::size_t at = path.rfind(root);
    const bool wholeName = at == 0 || (at != std::string_view::npos && path[at - 1] == '/');
    return wholeName ? at : std::string_view::npos;
}

std::string WithoutExtension(std::string path) {
    const std::size_t name = path.rfind('/') + 1;  // 0 when there is no slash
    const std::size_t dot = path.rfind('.');
    if (dot != std::string::npos && dot > name) path.erase(dot);
    return path;
}

}  // namespace

std::string LibraryPath(std::string_view path) {
    std::string slashed(path);
    std::ranges::replace(slashed, '\\', '/');
    for (const std::string_view root : kRoots) {
        const std::size_t start = StartOfRoot(slashed, root);
        if (start != std::string_view::npos) return WithoutExtension(slashed.substr(start));
    }
    return WithoutExtension(slashed.substr(slashed.rfind('/') + 1));
}

Exception::Exception(std::string message, std::source_location site)
    : message_(std::move(message)),
      file_(LibraryPath(site.file_name())),
      line_(static_cast<int>(site.line())),
      hasLocation_(true) {}

Exception::Exception(std::string message, SourceSite site)
    : message_(std::move(message)),
      file_(site.file),
      line_(site.line),
      hasLocation_(true) {}

Exception::Exception(std::string message, NoSite) : message_(std::move(message)) {}

void Exception::Print(bool exitAfterwards) const {
    if (hasLocation_) {
        Log("Exception occured in : " + file_ + " at line " + std::to_string(line_) + " : ");
        Log("  " + message_);
    } else {
        Log("Exception occured : " + message_);
    }
    Log("");
    if (exitAfterwards) std::exit(1);
}

}  // namespace tav
