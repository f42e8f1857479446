// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspByteSource.h"

#include "text/VelkDspException.h"

#include <algorithm>
#include <istream>
#include <utility>

namespace tav {

ByteSource::ByteSource(std::istream& stream, std::string name)
    : stream_(stream),
      name_(std::move(name)) {
    stream_.seekg(0, std::ios::end);
    const std::streamoff end = stream_.tellg();
    stream_.seekg(0);
    if (!stream_ || end < 0) Fail("cannot be read");
    size_ = static_cast<std::uint64_t>(end);
}

void ByteSource::Fail(const std::string& fault) const { throw Exception(name_ + ": " + fault); }

void ByteSource::Seek(std::uint64_t position) {
    position_ = std::min(position, size_);
    stream_.seekg(static_cast<std::streamoff>(position_));
}

void ByteSource::Read(std::span<std::uint8_t> bytes) {
    if (bytes.size() > Left()) Fail("is cut short");
    // Streams read char, which may alias any type.
    stream_.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream_) Fail("cannot be read");
    position_ += bytes.size();
}

ByteBlock ByteSource::Take(std::size_t count) {
    if (count > Left()) Fail("is cut short");
    ByteBlock bytes(count);
    Read(bytes);
    return bytes;
}

std::string ByteSource::TakeId() {
    const ByteBlock bytes = Take(4);
    std::string id(bytes.begin(), bytes.end());
    std::ranges::replace_if(
        id, [](char c) { return c < ' ' || c > '~'; }, '?');
    return id;
}

}  // namespace tav
