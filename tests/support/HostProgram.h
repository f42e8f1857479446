// SPDX-License-Identifier: MIT
// Runs the built quilo-host as a person at a terminal would.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Tests {

/// A folder of its own for one test, removed with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
    const std::filesystem::path& Path() const { return path_; }
    /// Names of everything in the folder, sorted.
    std::vector<std::string> Names() const;

private:
    std::filesystem::path path_;
};

std::string ReadText(const std::filesystem::path& file);  // "" when there is none
void WriteText(const std::filesystem::path& file, const std::string& text);
std::vector<std::string> Lines(const std::string& text);

struct HostRun {
    int status = -1;                   // exit status
    std::vector<std::string> console;  // lines of standard output
    std::vector<std::string> errors;   // lines of standard error
};

/// Runs quilo-host in `folder` and waits for its end. The program is the one that was built with
/// these tests, or the one that the environment variable QUILO_HOST names.
HostRun RunHost(const TemporaryFolder& folder,
                const std::vector<std::string>& arguments,
                const std::string& standardInput = {});

}  // namespace Tests
