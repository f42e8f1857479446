// SPDX-License-Identifier: MIT
#include "max/VelkMaxFiles.h"

#include "max/VelkMaxHandlers.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace VelkMax {

namespace {

using PathBuffer = std::array<char, MAX_PATH_CHARS>;

/// A copy of a name, since the API writes into the names that it gets. None when it is longer than
/// a path may be.
std::optional<PathBuffer> Buffer(std::string_view name) {
    PathBuffer buffer{};
    if (name.size() >= buffer.size()) return {};
    std::ranges::copy(name, buffer.begin());
    return buffer;
}

}  // namespace

std::optional<FilePlace> LocateFile(const char* name) {
    auto buffer = Buffer(name);
    if (!buffer) return {};
    FilePlace place;
    t_fourcc type = 0;
    if (locatefile_extended(buffer->data(), &place.folder, &type, nullptr, 0) != 0) return {};
    place.name = buffer->data();
    return place;
}

std::optional<FilePlace> LocateNamesake(const std::string& path) {
    // Of any system: it begins with a slash, or a colon ends the name of a drive or of a volume.
    const bool isFull = path.find_first_of("/\\") == 0 || path.find(':') != std::string::npos;
    if (!isFull) return {};
    return LocateFile(path.c_str() + path.find_last_of("/\\:") + 1);
}

std::optional<FilePlace> AskForFile(std::span<const t_fourcc> types) {
    PathBuffer name{};
    FilePlace place;
    t_fourcc type = 0;
    std::vector<t_fourcc> shown(types.begin(), types.end());
    if (open_dialog(name.data(), &place.folder, &type, shown.data(),
                    static_cast<short>(shown.size())) != 0) {
        return {};
    }
    place.name = name.data();
    return place;
}

std::optional<FilePlace> AskWhereToSave(const char* proposedName, t_fourcc type) {
    auto name = Buffer(proposedName);
    if (!name) return {};
    FilePlace place;
    t_fourcc chosenType = type;
    if (saveasdialog_extended(name->data(), &place.folder, &chosenType, &type, 1) != 0) return {};
    place.name = name->data();
    return place;
}

std::string FullPath(const FilePlace& place) {
    PathBuffer path{};
    const t_max_err error =
        path_toabsolutesystempath(place.folder, place.name.c_str(), path.data());
    return error == MAX_ERR_NONE ? path.data() : place.name;
}

std::filesystem::path SystemPath(const FilePlace& place) {
    const std::string text = FullPath(place);
    return std::u8string(text.begin(), text.end());
}

void CarryFile(void* builder, const FilePlace& place) {
    constexpr max_long kSupportFolder = 1;
    fileusage_addfile(builder, kSupportFolder, place.name.c_str(), place.folder);
}

short ClassFolder(t_object* object) { return class_getpath(object_class(object)); }

}  // namespace VelkMax
