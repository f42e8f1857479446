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

/// The file itself when it is no regular file: a device keeps no content that could be replaced.
std::filesystem::path PathToWrite(const std::filesystem::path& file) {
    std::error_code ignored;
    const auto status = std::filesystem::status(file, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) return file;
    for (unsigned k = 1;; ++k) {
        std::filesystem::path part = file;
        part += k == 1 ? ".part" : ".part" + std::to_string(k);
        const auto taken = std::filesystem::symlink_status(part, ignored);
        if (!std::filesystem::exists(taken)) return part;
    }
}

}  // namespace

FileReplacement::FileReplacement(const std::filesystem::path& file)
    : file_(TargetOf(file)),
      written_(PathToWrite(file_)) {
    stream_.open(written_, std::ios::binary | std::ios::trunc);
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
    if (stream_ && !fault) return true;
    Abandon();
    return false;
}

/// Removes what this object has opened, and nothing else.
void FileReplacement::Abandon() noexcept {
    stream_.close();
    std::error_code ignored;
    if (written_ != file_) std::filesystem::remove(written_, ignored);
}

bool ReplaceFile(const std::filesystem::path& file, std::string_view content) {
    FileReplacement replacement(file);
    replacement.Stream().write(content.data(), static_cast<std::streamsize>(content.size()));
    return replacement.Commit();
}

}  // namespace tav
