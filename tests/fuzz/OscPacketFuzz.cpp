// SPDX-License-Identifier: MIT
// Any bytes as an OSC packet: the reader in place and the one that copies agree, and what was read
// is written and read again unchanged.
#include "osc/VelkDspOscInputStream.h"
#include "osc/VelkDspOscOutputStream.h"
#include "text/VelkDspException.h"

#include <cstdint>
#include <cstdlib>

namespace {

std::vector<std::byte> Written(const tav::OSCPacket& packet) {
    tav::OSCOutputStream stream;
    if (const auto* message = std::get_if<tav::OSCMessage>(&packet)) {
        stream.WriteMessage(*message);
    } else {
        stream.WriteBundle(std::get<tav::OSCBundle>(packet));
    }
    return stream.Bytes();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const tav::MemoryInputStream bytes(data, size);
    tav::OscReader reader(bytes.Bytes());
    const bool isRead = reader.ReadPacket([](const tav::OscMessageView&) {});
    try {
        const auto once = Written(tav::OSCInputStream(bytes).ReadPacket());
        if (!isRead) std::abort();
        const tav::MemoryInputStream again(once.data(), once.size());
        // An empty blob at the very end is written and deliberately not read.
        try {
            if (Written(tav::OSCInputStream(again).ReadPacket()) != once) std::abort();
        } catch (const tav::Exception& refusal) {
            if (refusal.Message() != "OSC input stream exhausted before reaching end of blob")
                std::abort();
        }
    } catch (const tav::Exception&) {
        if (isRead) std::abort();
    }
    return 0;
}
