// SPDX-License-Identifier: MIT
#include "libvelkdsp/osc/OscPackets.h"

#include <lo/lo.h>
#include <memory>

namespace Tests {

namespace {

lo_message MakeMessage(const std::vector<LoValue>& values) {
    lo_message message = lo_message_new();
    for (const auto& [type, number, text] : values) {
        switch (type) {
            case 'i': lo_message_add_int32(message, static_cast<std::int32_t>(number)); break;
            case 'h': lo_message_add_int64(message, static_cast<std::int64_t>(number)); break;
            case 'f': lo_message_add_float(message, static_cast<float>(number)); break;
            case 'd': lo_message_add_double(message, number); break;
            case 's': lo_message_add_string(message, text.c_str()); break;
            case 'b': {
                lo_blob blob = lo_blob_new(static_cast<std::int32_t>(text.size()), text.data());
                lo_message_add_blob(message, blob);
                lo_blob_free(blob);
                break;
            }
            case 'T': lo_message_add_true(message); break;
            case 'F': lo_message_add_false(message); break;
            case 'N': lo_message_add_nil(message); break;
            default: lo_message_add_infinitum(message); break;
        }
    }
    return message;
}

Packet TakeOver(void* data, std::size_t size) {
    const std::unique_ptr<void, void (*)(void*)> owned(data, &std::free);
    const auto* const bytes = static_cast<const std::byte*>(data);
    return {bytes, bytes + size};
}

}  // namespace

Packet LoMessage(const std::string& address, const std::vector<LoValue>& values) {
    lo_message message = MakeMessage(values);
    std::size_t size = 0;
    void* const data = lo_message_serialise(message, address.c_str(), nullptr, &size);
    lo_message_free(message);
    return TakeOver(data, size);
}

Packet LoFloats(const std::string& address, const std::vector<double>& values) {
    std::vector<LoValue> floats;
    for (const double value : values) floats.push_back({'f', value});
    return LoMessage(address, floats);
}

Packet LoBundle(const std::vector<LoEntry>& entries, int depth) {
    lo_bundle bundle = lo_bundle_new(LO_TT_IMMEDIATE);
    for (const LoEntry& entry : entries) {
        lo_bundle_add_message(bundle, entry.address.c_str(), MakeMessage(entry.values));
    }
    for (; depth > 0; --depth) {
        lo_bundle outer = lo_bundle_new(LO_TT_IMMEDIATE);
        lo_bundle_add_bundle(outer, bundle);
        bundle = outer;
    }
    std::size_t size = 0;
    void* const data = lo_bundle_serialise(bundle, nullptr, &size);
    lo_bundle_free_recursive(bundle);
    return TakeOver(data, size);
}

Packet Bytes(const std::string& text) {
    const auto* const bytes = reinterpret_cast<const std::byte*>(text.data());
    return {bytes, bytes + text.size()};
}

}  // namespace Tests
