// SPDX-License-Identifier: MIT
// Files as Max knows them: by a name and the folder it stands in.
#pragma once

#include "ext.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace VelkMax {

/// 'TEXT' as the API writes it.
constexpr t_fourcc FileType(const char (&letters)[5]) {
    t_fourcc type = 0;
    for (int index = 0; index < 4; ++index) {
        type = (type << 8) | static_cast<unsigned char>(letters[index]);
    }
    return type;
}

/// A file that exists, or may be made.
struct FilePlace {
    std::string name;  // UTF-8
    short folder = 0;
};

/// Finds a file in Max's search path.  @param name  of a file, or a full path
std::optional<FilePlace> LocateFile(const char* name);

/// Lets the user choose; nothing when the dialog is cancelled. Never call them in the stack of a
/// message: see Door::SendToMain.
/// @param types  that the dialog shows; none: all
std::optional<FilePlace> AskForFile(std::span<const t_fourcc> types);
std::optional<FilePlace> AskWhereToSave(const char* proposedName, t_fourcc type);

/// The full path as the operating system writes it; only the name when Max cannot tell.
std::string FullPath(const FilePlace& place);
std::filesystem::path SystemPath(const FilePlace& place);

/// The folder of the module from which the object's class came.
short ClassFolder(t_object* object);

}  // namespace VelkMax
