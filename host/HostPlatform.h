// SPDX-License-Identifier: MIT
// Everything the host asks of the operating system beyond the standard library.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Quilo::Host {

/// The command line without the program's name, as UTF-8.
std::vector<std::string> CommandLine(int count, char** words);

/// The folder of this program. Throws: Fault (HostFailed).
std::filesystem::path ProgramFolder();

/// File name of a module of this platform: "quilo.pan~.so", "quilo.pan~.mxe64".
std::string ModuleFileName(const std::string& className);

/// Whether standard error is a terminal.
bool StandardErrorIsTerminal();

/// Turns off the conversion of line ends in the standard streams.
void UsePlainStandardStreams();

/// A module in memory; it stays until the program ends.
class SharedLibrary {
public:
    /// Throws: Fault (HostFailed) with the loader's message; missing symbols are errors, too.
    explicit SharedLibrary(const std::filesystem::path& file);

    using Function = void (*)();
    /// Null when the library does not export the name.
    Function Find(const char* name) const;

private:
    friend void WatchModule(const SharedLibrary& library);
    void* handle_;
};

/// Makes it possible to let allocations of this module fail (HostAllocations.h).
void WatchModule(const SharedLibrary& library);

/// Whether a module is watched.
bool WatchesAllocations();

#if !defined(_WIN32)
/// Whether the function that calls this was called from the module, directly or through functions
/// of the standard library. Slow.
bool CalledByModule();
#endif

}  // namespace Quilo::Host
