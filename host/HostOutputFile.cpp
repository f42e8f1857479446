// SPDX-License-Identifier: MIT
#include "HostOutputFile.h"

#include "HostFault.h"

namespace Quilo::Host {

std::filesystem::path PathOf(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

OutputFile::OutputFile(const std::string& name) : name_(name), file_(PathOf(name)) {
    if (!file_.IsOpen()) throw Fault(ExitStatus::WrongInput, name + ": cannot be written");
}

void OutputFile::Close() {
    if (!file_.Commit()) throw Fault(ExitStatus::WrongInput, name_ + ": not all could be written");
}

}  // namespace Quilo::Host
