// SPDX-License-Identifier: MIT
// Files as Max names them: by a file name and the id of its folder.
#pragma once

#include "ext.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace VelkMax {

/// The code of four characters that the API writes as 'TEXT'.
constexpr t_fourcc FileType(const char (&letters)[5]) {
    t_fourcc type = 0;
    for (int index = 0; index < 4; ++index) {
        type = (type << 8) | static_cast<unsigned char>(letters[index]);
    }
    return type;
}

/// A file that exists or is to be written.
struct FilePlace {
    std::string name;  // UTF-8
    short folder = 0;
};

/// Finds a file in Max's search path.  @param name  of a file, or a full path
std::optional<FilePlace> LocateFile(const char* name);

/// For a full path that leads nowhere, as one does that was stored on another machine: finds a file
/// of the same name in Max's search path. Nothing for a name that is not a full path.
std::optional<FilePlace> LocateNamesake(const std::string& path);

/// Both open a dialog; the result is empty when the user cancels it. They must not be called while
/// a message runs: see Door::SendToMain.
/// @param types  of files that the dialog shows; empty: all files
std::optional<FilePlace> AskForFile(std::span<const t_fourcc> types);
std::optional<FilePlace> AskWhereToSave(const char* proposedName, t_fourcc type);

/// The full path as the operating system writes it; only the name when Max finds no path.
std::string FullPath(const FilePlace& place);
std::filesystem::path SystemPath(const FilePlace& place);

/// Asks for a file to be copied beside a standalone program, where it can be opened like any other.
/// @param builder  what Max gave the method `fileusage`, which is under way
void CarryFile(void* builder, const FilePlace& place);

/// The folder of the module from which the object's class came.
short ClassFolder(t_object* object);

}  // namespace VelkMax
