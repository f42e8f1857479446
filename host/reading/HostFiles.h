// SPDX-License-Identifier: MIT
// Reads whole files: scripts, OSC packets, dictionaries.
//
// A device or a pipe may never end, so only regular files of a bounded size are read.
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <istream>
#include <string>
#include <system_error>

namespace HostReading {

/// Largest size of a file or stream, in bytes.
inline constexpr std::size_t kMostFileBytes = std::size_t{64} << 20;

struct FileContent {
    std::string bytes;
    std::string fault;  // why nothing was read; "" if there was no error
};

/// Reads a stream to its end.
inline FileContent ReadToEnd(std::istream& stream) {
    FileContent content;
    std::array<char, 4096> block{};
    while (stream.read(block.data(), block.size()) || stream.gcount() > 0) {
        content.bytes.append(block.data(), static_cast<std::size_t>(stream.gcount()));
        if (content.bytes.size() > kMostFileBytes) return {"", "it is longer than 64 MiB"};
    }
    return content;
}

/// Whether the path exists and is not a regular file.
inline bool IsIrregularFile(const std::filesystem::path& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
}

/// Reads a regular file; anything else is not opened.
inline FileContent ReadRegularFile(const std::filesystem::path& path) {
    if (IsIrregularFile(path)) return {"", "it is no regular file"};
    std::ifstream stream(path, std::ios::binary);
    if (!stream) return {"", "it cannot be opened"};
    return ReadToEnd(stream);
}

}  // namespace HostReading
