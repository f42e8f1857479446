// SPDX-License-Identifier: MIT
// Path ids and their folders; inside the library only.
#pragma once

#include "ext_files.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace HostApi {

std::filesystem::path PathOf(std::string_view utf8);

/// The path in UTF-8 with forward slashes.
std::string PathText(const std::filesystem::path& path);

/// The id of a folder, negative and the same each time.
short FolderId(const std::filesystem::path& folder);

/// The folder of an id; the default folder for 0 and for an unknown id.
std::filesystem::path Folder(short id);

/// The folder of the module that is being loaded, as an id.
short ModuleFolder();

/// The code of four characters, the first one in the highest byte.
constexpr t_fourcc FourCharacters(const char (&text)[5]) {
    t_fourcc code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

/// The file type of an extension; 0 when unknown.
t_fourcc TypeOf(const std::filesystem::path& file);

}  // namespace HostApi
