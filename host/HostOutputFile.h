// SPDX-License-Identifier: MIT
// A file that appears only when it is complete.
#pragma once

#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>

namespace Quilo::Host {

/// The path that UTF-8 text names.
std::filesystem::path PathOf(const std::string& utf8);

/// Writes a temporary file beside `name` and renames it in Close; without Close it is removed. A
/// device or a pipe is written directly.
class OutputFile {
public:
    /// Throws: Fault (WrongInput) that names the file.
    explicit OutputFile(const std::string& name);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::ostream& Stream() { return stream_; }
    /// Throws: Fault (WrongInput) when writing failed.
    void Close();

private:
    std::string name_;
    std::filesystem::path written_;
    bool isDirect_;
    std::ofstream stream_;
};

}  // namespace Quilo::Host
