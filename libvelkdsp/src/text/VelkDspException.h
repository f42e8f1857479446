// SPDX-License-Identifier: MIT
// The exception type of the libraries, and a guard that converts all other exceptions to it.
#pragma once

#include <exception>
#include <new>
#include <source_location>
#include <string>
#include <string_view>

namespace tav {

/// The place of an exception: a library path without extension, such as
/// "libvelkdsp/src/text/VelkDspString", and a line.
struct SourceSite {
    const char* file;
    int line;
};

/// A message, and the place in the libraries where the exception was made.
class Exception : public std::exception {
public:
    struct NoSite {};

    /// The site is where the exception is made.
    explicit Exception(std::string message,
                       std::source_location site = std::source_location::current());
    /// With a fixed site, for texts that are promises and must not depend on our line numbers.
    Exception(std::string message, SourceSite site);
    Exception(std::string message, NoSite);

    const char* what() const noexcept override { return message_.c_str(); }
    const std::string& Message() const noexcept { return message_; }
    const std::string& File() const noexcept { return file_; }
    int Line() const noexcept { return line_; }
    /// False if file and line are unknown ("" and 0).
    bool HasLocation() const noexcept { return hasLocation_; }

    /// Writes the exception to the log.
    /// @param exitAfterwards  ends the process with status 1
    void Print(bool exitAfterwards = false) const;

private:
    std::string message_;
    std::string file_;
    int line_ = 0;
    bool hasLocation_ = false;
};

/// An exception converted from another type; its site is the guarded call.
class UnknownException : public Exception {
public:
    using Exception::Exception;
};

/// A path as the compiler gives it, cut to the part inside this project and without extension;
/// a path from elsewhere is cut to its file name.
std::string LibraryPath(std::string_view path);

/// Runs `operation` and gives back its result. A tav::Exception passes unchanged; any other
/// exception becomes an UnknownException that names `context`.
template <class Operation>
decltype(auto) Guarded(std::string_view context,
                       Operation&& operation,
                       std::source_location site = std::source_location::current()) {
    try {
        return operation();
    } catch (const Exception&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw UnknownException("out of memory occured in " + std::string(context), site);
    } catch (const std::exception& fault) {
        throw UnknownException(
            "exception " + std::string(fault.what()) + " occured in " + std::string(context), site);
    } catch (...) {
        throw UnknownException("unknown exception occured in " + std::string(context), site);
    }
}

}  // namespace tav
