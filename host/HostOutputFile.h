// SPDX-License-Identifier: MIT
// A file that is there when it is complete, and not before.
#pragma once

#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>

namespace Quilo::Host {

/// The path that UTF-8 text names.
std::filesystem::path PathOf(const std::string& utf8);

/// Writes beside `name` and takes that name at the end; unless closed, nothing is left behind.
/// Something that is no plain file (a device, a pipe) is written to directly.
class OutputFile {
public:
    /// Throws: Fault (WrongInput) that names the file.
    explicit OutputFile(const std::string& name);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::ostream& Stream() { return stream_; }
    /// Throws: Fault (WrongInput) when not all could be written.
    void Close();

private:
    std::string name_;
    std::filesystem::path written_;
    bool isDirect_;
    std::ofstream stream_;
};

}  // namespace Quilo::Host
