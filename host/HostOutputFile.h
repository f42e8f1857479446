// SPDX-License-Identifier: MIT
// What the host writes.
#pragma once

#include "files/VelkDspFileReplacement.h"

#include <filesystem>
#include <ostream>
#include <string>

namespace Quilo::Host {

/// The path that UTF-8 text names.
std::filesystem::path PathOf(const std::string& utf8);

/// A file that appears only when it is complete, in Close.
class OutputFile {
public:
    /// Throws: Fault (WrongInput) that names the file.
    explicit OutputFile(const std::string& name);

    std::ostream& Stream() { return file_.Stream(); }
    /// Throws: Fault (WrongInput) when writing failed.
    void Close();

private:
    std::string name_;
    tav::FileReplacement file_;
};

}  // namespace Quilo::Host
