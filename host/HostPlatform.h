// SPDX-License-Identifier: MIT
// Everything the host asks of the operating system beyond the standard library.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Quilo::Host {

/// The command line without the program's name, as UTF-8.
std::vector<std::string> CommandLine(int count, char** words);

/// The folder in which this program stands.  Throws: Fault (HostFailed).
std::filesystem::path ProgramFolder();

/// File name of a module of this platform: "quilo.pan~.so", "quilo.pan~.mxe64".
std::string ModuleFileName(const std::string& className);

/// Whether a person watches standard error.
bool StandardErrorIsTerminal();

/// Keeps the line ends of the standard streams as they are written.
void UsePlainStandardStreams();

/// A module in memory; it stays until the program ends.
class SharedLibrary {
public:
    /// Throws: Fault (HostFailed) with what the loader said; names that are missing count.
    explicit SharedLibrary(const std::filesystem::path& file);

    using Function = void (*)();
    /// Null when the library does not export the name.
    Function Find(const char* name) const;

private:
    friend void WatchModule(const SharedLibrary& library);
    void* handle_;
};

/// From now on the allocations of this module can be made to fail (HostAllocations.h).
void WatchModule(const SharedLibrary& library);

/// Whether a module is watched.
bool WatchesAllocations();

#if !defined(_WIN32)
/// Whether the code that called for the caller of this is the module's, the standard library's
/// functions between them left out.  Slow.
bool CalledByModule();
#endif

}  // namespace Quilo::Host
