// SPDX-License-Identifier: MIT
// A file that appears only when it is complete.
//
// Whoever reads it while it is written, or ends before, has the old file or the new one.
#pragma once

#include <filesystem>
#include <fstream>
#include <ostream>
#include <string_view>

namespace tav {

/// Writes a temporary file in a folder of its own beside the file that is to be replaced, and moves
/// it there in Commit. Without Commit it is removed and the other file stays as it was. Of a
/// symbolic link to a file the file is replaced; a device or a pipe is written directly.
/// Thread: control.  Throws: std::bad_alloc.
class FileReplacement {
public:
    /// The folder gets a name that nothing else has: "cue.txt.part" or "cue.txt.part2" and so on.
    explicit FileReplacement(const std::filesystem::path& file);
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    ~FileReplacement();

    /// Whether anything can be written: the folder is there, and so on.
    bool IsOpen() const { return stream_.is_open(); }
    /// What is written here is the new content.
    std::ostream& Stream() noexcept { return stream_; }
    /// @return false: it could not be written to its end, and the file is as it was
    bool Commit();

private:
    void Abandon() noexcept;

    std::filesystem::path file_;
    std::filesystem::path folder_;   // of the temporary file; empty for a device or a pipe
    std::filesystem::path written_;  // the same as file_ for a device or a pipe
    std::ofstream stream_;
};

/// All at once.  @return as Commit
bool ReplaceFile(const std::filesystem::path& file, std::string_view content);

}  // namespace tav
