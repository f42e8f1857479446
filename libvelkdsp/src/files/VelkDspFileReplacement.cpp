// SPDX-License-Identifier: MIT
#include "files/VelkDspFileReplacement.h"

#include <string>
#include <system_error>

namespace tav {

namespace {

/// For a symbolic link its target, so that the link stays.
std::filesystem::path TargetOf(const std::filesystem::path& file) {
    std::error_code fault;
    const std::filesystem::path target = std::filesystem::canonical(file, fault);
    return fault ? file : target;
}

/// Whether it keeps no content that could be replaced: a device or a pipe.
bool IsDevice(const std::filesystem::path& file) {
    std::error_code ignored;
    const auto status = std::filesystem::status(file, ignored);
    return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
}

/// Makes a folder beside the file. To make a folder is what the standard library can do only if
/// there is none, so that two writers never share one and nobody's file or link is opened.
/// @return its path; empty where no folder can be made
std::filesystem::path MakeFolderBeside(const std::filesystem::path& file) {
    for (unsigned k = 1;; ++k) {
        std::filesystem::path folder = file;
        folder += k == 1 ? ".part" : ".part" + std::to_string(k);
        std::error_code fault;
        if (std::filesystem::create_directory(folder, fault)) return folder;
        const auto taken = std::filesystem::symlink_status(folder, fault);
        if (!std::filesystem::exists(taken)) return {};
    }
}

}  // namespace

FileReplacement::FileReplacement(const std::filesystem::path& file)
    : file_(TargetOf(file)),
      written_(file_) {
    if (!IsDevice(file_)) {
        folder_ = MakeFolderBeside(file_);
        if (folder_.empty()) return;
        written_ = folder_ / "new";  // short: Windows counts the letters of a path
    }
    stream_.open(written_, std::ios::binary | std::ios::trunc);
    if (!stream_.is_open()) Abandon();
}

FileReplacement::~FileReplacement() {
    if (stream_.is_open()) Abandon();
}

bool FileReplacement::Commit() {
    if (!stream_.is_open()) return false;
    stream_.flush();
    if (stream_) stream_.close();
    std::error_code fault;
    if (stream_ && written_ != file_) std::filesystem::rename(written_, file_, fault);
    const bool isDone = stream_ && !fault;
    Abandon();
    return isDone;
}

/// Removes what this object has made and not put in its place. A folder stays where somebody else
/// has put something into it.
void FileReplacement::Abandon() noexcept {
    stream_.close();
    std::error_code ignored;
    if (folder_.empty()) return;
    std::filesystem::remove(written_, ignored);
    std::filesystem::remove(folder_, ignored);
}

bool ReplaceFile(const std::filesystem::path& file, std::string_view content) {
    FileReplacement replacement(file);
    replacement.Stream().write(content.data(), static_cast<std::streamsize>(content.size()));
    return replacement.Commit();
}

}  // namespace tav
