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

/// Whether an address still ends with a slash; each time it is read it loses one.
bool EndsWithSlash(const tav::OSCPacket& packet) {
    bool ends = false;
    const auto look = [&](const tav::OSCMessage& message) {
        ends = ends || message.AddressText().ends_with('/');
    };
    if (const auto* message = std::get_if<tav::OSCMessage>(&packet)) {
        look(*message);
    } else {
        std::get<tav::OSCBundle>(packet).ForEachMessage(look);
    }
    return ends;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const tav::MemoryInputStream bytes(data, size);
    tav::OscReader reader(bytes.Bytes());
    const bool isRead = reader.ReadPacket([](const tav::OscMessageView&) {});
    try {
        const tav::OSCPacket packet = tav::OSCInputStream(bytes).ReadPacket();
        if (!isRead) std::abort();
        if (EndsWithSlash(packet)) return 0;
        const auto once = Written(packet);
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
