// SPDX-License-Identifier: MIT
// Packets as another implementation of OSC (liblo) writes them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Tests {

using Packet = std::vector<std::byte>;

/// @param types  of liblo, the values in the same order: i h f d s b (its bytes as text) T F I N
struct LoValue {
    char type;
    double number = 0.0;
    std::string text{};
};
Packet LoMessage(const std::string& address, const std::vector<LoValue>& values);
/// A message of floats.
Packet LoFloats(const std::string& address, const std::vector<double>& values);

struct LoEntry {
    std::string address;
    std::vector<LoValue> values;
};
/// A bundle of messages, inside of as many bundles as `depth` says.
Packet LoBundle(const std::vector<LoEntry>& entries, int depth = 0);

/// Bytes written by hand: "#bundle", 0 and so on.
Packet Bytes(const std::string& text);

}  // namespace Tests
