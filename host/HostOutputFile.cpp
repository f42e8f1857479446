// SPDX-License-Identifier: MIT
#include "HostOutputFile.h"

#include "HostFault.h"

#include <system_error>

namespace Quilo::Host {

std::filesystem::path PathOf(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

OutputFile::OutputFile(const std::string& name) : name_(name), written_(PathOf(name)) {
    std::error_code ignored;
    const auto status = std::filesystem::status(written_, ignored);
    isDirect_ = std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
    if (!isDirect_) written_ += ".part";
    stream_.open(written_, std::ios::binary | std::ios::trunc);
    if (!stream_) throw Fault(ExitStatus::WrongInput, name + ": cannot be written");
}

OutputFile::~OutputFile() {
    if (!stream_.is_open() || isDirect_) return;
    stream_.close();
    std::error_code ignored;
    std::filesystem::remove(written_, ignored);
}

void OutputFile::Close() {
    stream_.flush();
    if (!stream_) throw Fault(ExitStatus::WrongInput, name_ + ": not all could be written");
    std::error_code error;
    stream_.close();
    if (!isDirect_) std::filesystem::rename(written_, PathOf(name_), error);
    if (!error) return;
    std::error_code ignored;
    std::filesystem::remove(written_, ignored);
    throw Fault(ExitStatus::WrongInput, name_ + ": cannot be written: " + error.message());
}

}  // namespace Quilo::Host
