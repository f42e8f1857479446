// SPDX-License-Identifier: MIT
// Path ids and the folders they stand for; inside the library only.
#pragma once

#include "ext_files.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace HostApi {

std::filesystem::path PathOf(std::string_view utf8);

/// With forward slashes.
std::string PathText(const std::filesystem::path& path);

/// The id of a folder, always the same for the same folder; negative.
short FolderId(const std::filesystem::path& folder);

/// The folder of an id; 0 is the default folder, and so is an id that was never given out.
std::filesystem::path Folder(short id);

/// The folder of the module that is being loaded, as an id.
short ModuleFolder();

/// Four characters, the first one in the highest byte.
constexpr t_fourcc FourCharacters(const char (&text)[5]) {
    t_fourcc code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

/// The type that a file's extension stands for, 0 when unknown.
t_fourcc TypeOf(const std::filesystem::path& file);

}  // namespace HostApi
