// SPDX-License-Identifier: MIT
// Paths and the search path.
#include "ApiFiles.h"

#include "ApiFaults.h"
#include "HostBridge.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;

namespace HostApi {
namespace {

struct Files {
    std::mutex mutex;
    std::vector<fs::path> folders;     // id -1 is the first one
    std::vector<fs::path> searchPath;  // in the order in which they were added
    fs::path patcherFolder;            // may be empty
    short moduleFolder = 0;
};

Files& TheFiles() {
    static auto& files = *new Files;
    return files;
}

struct TypeRow {
    std::string_view extension;
    t_fourcc type;
};

constexpr TypeRow kTypes[] = {
    {".json", FourCharacters("JSON")}, {".maxpat", FourCharacters("JSON")},
    {".txt", FourCharacters("TEXT")},  {".xml", FourCharacters("TEXT")},
    {".wav", FourCharacters("WAVE")},  {".wave", FourCharacters("WAVE")},
    {".aif", FourCharacters("AIFF")},  {".aiff", FourCharacters("AIFF")},
    {".data", FourCharacters("DATA")}, {".maxb", FourCharacters("maxb")},
};

bool IsFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

/// The folders to be searched, in order.
std::vector<fs::path> SearchedFolders() {
    Files& files = TheFiles();
    const std::lock_guard lock(files.mutex);
    std::vector<fs::path> folders;
    if (!files.patcherFolder.empty()) folders.push_back(files.patcherFolder);
    std::error_code error;
    folders.push_back(fs::current_path(error));
    folders.insert(folders.end(), files.searchPath.begin(), files.searchPath.end());
    return folders;
}

/// The existing file of this name, or of this name with the extension of one of the types.
std::optional<fs::path> Candidate(const fs::path& file, std::span<const t_fourcc> types) {
    const t_fourcc type = TypeOf(file);
    const bool fits = types.empty() || type == 0 || std::ranges::find(types, type) != types.end();
    if (fits && IsFile(file)) return file;
    for (const TypeRow& row : kTypes) {
        if (std::ranges::find(types, row.type) == types.end()) continue;
        fs::path extended = PathOf(PathText(file) + std::string(row.extension));
        if (IsFile(extended)) return extended;
    }
    return {};
}

std::optional<fs::path> Locate(const fs::path& name, std::span<const t_fourcc> types) {
    if (name.empty()) return {};
    if (name.is_absolute()) return Candidate(name, types);
    for (const fs::path& folder : SearchedFolders())
        if (auto found = Candidate(folder / name, types)) return found;
    return {};
}

/// Copies text into a buffer of the API.  @return whether it fits
bool Put(const std::string& text, char* out, max_long size) {
    strncpy_zero(out, text.c_str(), size);
    return text.size() < static_cast<std::size_t>(size);
}

bool Exists(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error);
}

}  // namespace

fs::path PathOf(std::string_view utf8) { return std::u8string(utf8.begin(), utf8.end()); }

std::string PathText(const fs::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

short FolderId(const fs::path& folder) {
    std::error_code error;
    const fs::path full = fs::absolute(folder, error).lexically_normal();
    Files& files = TheFiles();
    const std::lock_guard lock(files.mutex);
    const auto known = std::ranges::find(files.folders, full);
    const auto place = known - files.folders.begin();
    if (known == files.folders.end()) files.folders.push_back(full);
    return static_cast<short>(-1 - place);
}

fs::path Folder(short id) {
    Files& files = TheFiles();
    const std::lock_guard lock(files.mutex);
    std::error_code error;
    const auto place = static_cast<std::size_t>(-1 - id);
    return id < 0 && place < files.folders.size() ? files.folders[place] : fs::current_path(error);
}

short ModuleFolder() { return TheFiles().moduleFolder; }

t_fourcc TypeOf(const fs::path& file) {
    std::string extension = PathText(file.extension());
    std::ranges::transform(extension, extension.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    const auto* row = std::ranges::find(kTypes, extension, &TypeRow::extension);
    return row == std::end(kTypes) ? 0 : row->type;
}

void SetPatcherFolder(const fs::path& folder) {
    std::error_code error;
    TheFiles().patcherFolder = fs::absolute(folder, error);
}

void SetModuleFolder(const fs::path& folder) { TheFiles().moduleFolder = FolderId(folder); }

void AddSearchFolder(const fs::path& folder) {
    Files& files = TheFiles();
    const std::lock_guard lock(files.mutex);
    std::error_code error;
    files.searchPath.push_back(fs::absolute(folder, error));
}

}  // namespace HostApi

using namespace HostApi;

short locatefile_extended(
    char* name, short* path, t_fourcc* type, const t_fourcc* types, short ntypes) {
    if (InjectedFailure("locatefile_extended")) return 1;
    if (!name || !path) return 1;
    const auto wanted = types && ntypes > 0 ? std::span(types, static_cast<std::size_t>(ntypes))
                                            : std::span<const t_fourcc>();
    const auto found = Locate(PathOf(name), wanted);
    if (!found || !Put(PathText(found->filename()), name, MAX_PATH_CHARS)) return 1;
    *path = FolderId(found->parent_path());
    if (type) *type = TypeOf(*found);
    return 0;
}

short path_topathname(const short path, const char* file, char* out) {
    return path_topotentialname(path, file, out, 1);
}

short path_topotentialname(const short path, const char* file, char* out, short check) {
    const fs::path full = file && *file ? Folder(path) / PathOf(file) : Folder(path);
    if (!Put(PathText(full), out, MAX_PATH_CHARS)) return 1;
    return check && !Exists(full) ? 1 : 0;
}

short path_frompathname(const char* full, short* path, char* file) {
    const fs::path whole = PathOf(full ? full : "");
    if (!whole.is_absolute() || !whole.has_filename()) return 1;
    if (!Put(PathText(whole.filename()), file, MAX_FILENAME_CHARS)) return 1;
    *path = FolderId(whole.parent_path());
    return 0;
}

short path_nameconform(const char* src, char* dst, max_long style, max_long type) {
    fs::path path = PathOf(src ? src : "");
    std::error_code error;
    if (type == PATH_TYPE_ABSOLUTE) path = fs::absolute(path, error);
    std::string text = PathText(path);
    const bool native = style == PATH_STYLE_NATIVE && fs::path::preferred_separator != '/';
    if (native || style == PATH_STYLE_NATIVE_WIN) std::ranges::replace(text, '/', '\\');
    return Put(text, dst, MAX_PATH_CHARS) ? 0 : 1;
}

t_max_err path_toabsolutesystempath(const short path, const char* file, char* out) {
    char full[MAX_PATH_CHARS];
    if (path_topotentialname(path, file, full, 0) != 0) return MAX_ERR_GENERIC;
    return path_nameconform(full, out, PATH_STYLE_NATIVE, PATH_TYPE_ABSOLUTE) == 0
               ? MAX_ERR_NONE
               : MAX_ERR_GENERIC;
}

max_long path_exists(short path, const char* file) {
    return Exists(Folder(path) / PathOf(file ? file : "")) ? 1 : 0;
}

short path_getdefault() { return 0; }
