// SPDX-License-Identifier: MIT
// The only file of the host that calls operating systems: first Windows, then POSIX.
#include "HostPlatform.h"

#include "HostAllocations.h"
#include "HostFault.h"

#include <cstdint>
#include <iterator>
#include <string_view>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#if !defined(NOMINMAX)  // MinGW's headers define it
#define NOMINMAX
#endif
#include <windows.h>
// shellapi.h must follow windows.h
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#else
#include <dlfcn.h>
#include <execinfo.h>
#include <unistd.h>
#endif

namespace Quilo::Host {

#if defined(_WIN32)

namespace {

std::string Utf8(const std::wstring& wide) {
    const std::u8string text = std::filesystem::path(wide).u8string();
    return {text.begin(), text.end()};
}

}  // namespace

std::vector<std::string> CommandLine(int, char**) {
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int k = 1; k < count; ++k) arguments.push_back(Utf8(words[k]));
    LocalFree(words);
    return arguments;
}

std::filesystem::path ProgramFolder() {
    std::wstring file(32768, L'\0');
    const DWORD length = GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size()));
    if (length == 0 || length == file.size())
        throw Fault(ExitStatus::HostFailed, "the folder of the program is unknown");
    file.resize(length);
    return std::filesystem::path(file).parent_path();
}

std::string ModuleFileName(const std::string& className) { return className + ".mxe64"; }

bool StandardErrorIsTerminal() { return _isatty(_fileno(stderr)) != 0; }

void UsePlainStandardStreams() {
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
    SetConsoleOutputCP(CP_UTF8);
}

SharedLibrary::SharedLibrary(const std::filesystem::path& file)
    : handle_(LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {
    if (!handle_)
        throw Fault(ExitStatus::HostFailed, "the module cannot be loaded: " + Utf8(file) +
                                                ": error " + std::to_string(GetLastError()));
}

SharedLibrary::Function SharedLibrary::Find(const char* name) const {
    return reinterpret_cast<Function>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

namespace {

using Malloc = void*(std::size_t);
Malloc* moduleMalloc = nullptr;  // the function that the module imported before

void* WatchedMalloc(std::size_t size) { return RefuseAllocation() ? nullptr : moduleMalloc(size); }

template <class T>
T* At(char* base, std::uint32_t offset) {
    return reinterpret_cast<T*>(base + offset);
}

/// Replaces one entry of the import table, whose memory is write-protected.
void Replace(IMAGE_THUNK_DATA& place, Malloc* function) {
    DWORD before = 0;
    VirtualProtect(&place, sizeof place, PAGE_READWRITE, &before);
    place.u1.Function = reinterpret_cast<ULONGLONG>(function);
    VirtualProtect(&place, sizeof place, before, &before);
}

/// Replaces malloc among the functions that the module imports from one library.
void WatchImports(char* base, const IMAGE_IMPORT_DESCRIPTOR& library) {
    auto* name = At<IMAGE_THUNK_DATA>(base, library.OriginalFirstThunk);
    auto* place = At<IMAGE_THUNK_DATA>(base, library.FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++place) {
        if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
        const auto offset = static_cast<std::uint32_t>(name->u1.AddressOfData);
        const auto* const import = At<IMAGE_IMPORT_BY_NAME>(base, offset);
        if (std::string_view(reinterpret_cast<const char*>(import->Name)) != "malloc") continue;
        moduleMalloc = reinterpret_cast<Malloc*>(place->u1.Function);
        Replace(*place, WatchedMalloc);
    }
}

}  // namespace

// The C++ library is linked into the module, so its operator new cannot be replaced; but it calls
// malloc, which the module imports.
void WatchModule(const SharedLibrary& library) {
    auto* const base = static_cast<char*>(library.handle_);
    const auto* const dos = At<IMAGE_DOS_HEADER>(base, 0);
    const auto* const headers =
        At<IMAGE_NT_HEADERS>(base, static_cast<std::uint32_t>(dos->e_lfanew));
    const auto& imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (imports.Size == 0) return;
    const auto* from = At<IMAGE_IMPORT_DESCRIPTOR>(base, imports.VirtualAddress);
    for (; from->Name != 0; ++from) WatchImports(base, *from);
}

bool WatchesAllocations() { return moduleMalloc != nullptr; }

#else

std::vector<std::string> CommandLine(int count, char** words) {
    return count > 0 ? std::vector<std::string>(words + 1, words + count)
                     : std::vector<std::string>();
}

std::filesystem::path ProgramFolder() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) throw Fault(ExitStatus::HostFailed, "the folder of the program is unknown");
    return program.parent_path();
}

std::string ModuleFileName(const std::string& className) { return className + ".so"; }

bool StandardErrorIsTerminal() { return isatty(STDERR_FILENO) != 0; }

void UsePlainStandardStreams() {}

SharedLibrary::SharedLibrary(const std::filesystem::path& file)
    : handle_(dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_)
        throw Fault(ExitStatus::HostFailed,
                    std::string("the module cannot be loaded: ") + dlerror());
}

SharedLibrary::Function SharedLibrary::Find(const char* name) const {
    return reinterpret_cast<Function>(dlsym(handle_, name));
}

namespace {

const void* moduleBase = nullptr;

const void* BaseOf(const void* address, std::string_view& name) {
    Dl_info info{};
    if (dladdr(address, &info) == 0) return nullptr;
    name = info.dli_fname ? info.dli_fname : "";
    return info.dli_fbase;
}

}  // namespace

void WatchModule(const SharedLibrary& library) {
    std::string_view name;
    for (const char* entry : {"ext_main", "main"})
        if (const auto function = library.Find(entry))
            moduleBase = BaseOf(reinterpret_cast<const void*>(function), name);
}

bool WatchesAllocations() { return moduleBase != nullptr; }

bool CalledByModule() {
    void* frames[24];
    const int count = backtrace(frames, static_cast<int>(std::size(frames)));
    std::string_view name;
    const void* const program = BaseOf(reinterpret_cast<const void*>(&CalledByModule), name);
    bool isInside = true;  // a sanitizer stands in for backtrace, and above everything else
    for (int k = 0; k < count; ++k) {
        const void* const base = BaseOf(frames[k], name);
        if (base == program) isInside = false;
        if (isInside || base == program || name.find("libstdc++") != name.npos) continue;
        return base == moduleBase;
    }
    return false;
}

#endif

}  // namespace Quilo::Host
