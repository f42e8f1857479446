// SPDX-License-Identifier: MIT
#include "libvelkdsp/osc/OscPackets.h"
#include "osc/VelkDspOscInputStream.h"
#include "osc/VelkDspOscOutputStream.h"
#include "support/AllocationTrap.h"
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>

namespace tav {
namespace {

using namespace std::string_literals;
using Tests::Bytes;
using Tests::LoBundle;
using Tests::LoMessage;
using Tests::LoValue;
using Tests::Packet;

OSCInputStream Over(const Packet& packet) {
    return OSCInputStream(MemoryInputStream(packet.data(), packet.size()));
}

Packet Written(const OSCPacket& packet) {
    OSCOutputStream stream;
    if (const auto* message = std::get_if<OSCMessage>(&packet)) {
        stream.WriteMessage(*message);
    } else {
        stream.WriteBundle(std::get<OSCBundle>(packet));
    }
    return stream.Bytes();
}

/// The text of what reading throws; "" when it does not.
std::string FaultOf(const Packet& packet) {
    try {
        Over(packet).ReadPacket();
    } catch (const Exception& fault) {
        EXPECT_EQ(fault.File(), "libvelkdsp/src/osc/VelkDspOscInputStream");
        return fault.Message();
    }
    return {};
}

std::vector<LoValue> SomeValues(std::mt19937& random) {
    constexpr char kTypes[] = {'i', 'h', 'f', 's', 'b', 'T', 'F'};
    std::vector<LoValue> values;
    for (auto n = random() % 9; n > 0; --n) {
        const std::string text(1 + random() % 9, static_cast<char>('a' + random() % 26));
        const double number = static_cast<double>(static_cast<std::int32_t>(random())) / 4096;
        values.push_back({kTypes[random() % std::size(kTypes)], number, text + "end"});
    }
    return values;
}

OSCArgument Expected(const LoValue& value) {
    switch (value.type) {
        case 'i': return OSCArgument(static_cast<std::int32_t>(value.number));
        case 'h': return OSCArgument(static_cast<std::int64_t>(value.number));
        case 'f': return OSCArgument(static_cast<float>(value.number));
        case 's': return OSCArgument(value.text);
        case 'b': return OSCArgument(Bytes(value.text));
        default: return OSCArgument(value.type == 'T');
    }
}

TEST(OscStreams, ReadAndWriteWhatAnotherImplementationWrites) {
    std::mt19937 random(5);
    for (int k = 0; k < 500; ++k) {
        const std::string address = "/a/" + std::string(random() % 9, 'x') + std::to_string(k);
        const auto values = SomeValues(random);
        const Packet packet = LoMessage(address, values);
        const OSCMessage message = Over(packet).ReadMessage();
        EXPECT_EQ(message.AddressText(), address);
        ASSERT_EQ(message.Arguments().size(), values.size());
        for (std::size_t i = 0; i < values.size(); ++i) {
            EXPECT_EQ(message.Arguments()[i], Expected(values[i])) << values[i].type;
        }
        EXPECT_EQ(Written(message), packet);
        const Packet bundle =
            LoBundle({{address, values}, {"/b", {}}}, static_cast<int>(random() % 4));
        EXPECT_EQ(Written(Over(bundle).ReadPacket()), bundle);
    }
}

TEST(OscStreams, StoreADoubleAsTheNearestFloat) {
    const OSCMessage message = Over(LoMessage("/d", {{'d', 0.1}})).ReadMessage();
    EXPECT_EQ(message.TypeTags(), "f");
    EXPECT_EQ(message.Arguments()[0].Float(), 0.1f);
}

TEST(OscStreams, SayWhatIsWrong) {
    const std::string bundle = "#bundle\0\0\0\0\0\0\0\0\1"s;
    const std::string message = "/a\0\0,\0\0\0"s;
    const struct {
        std::string bytes;
        const char* fault;
    } rows[] = {
        {"", "exhausted while reading string"},
        {"/a\0"s, "exhausted while reading string"},
        {"/abc", "exhausted before finding null terminator of string"},
        {"/abcd\0\0\1"s, "format error: missing padding zeros"},
        {"/abcd\0\0"s, "format error: missing padding zeros"},
        {"/abc\0\0\0\0"s, "exhausted while reading type tag string"},
        {"/a\0\0"s, "exhausted while reading type tag string"},
        {"/a\0\0iii\0"s, "format error: expected type tag string"},
        {"/a\0\0,iii"s, "exhausted while reading type tag string"},
        {"/a\0\0,ix\0"s, "format error: encountered unsupported type tag : x"},
        {"/a\0\0,i\0\0\0\0\0"s, "exhausted while reading int32"},
        {"/a\0\0,h\0\0\0\0\0\0\0\0\0"s, "exhausted while reading int64"},
        {"/a\0\0,f\0\0\0\0\0"s, "exhausted while reading float"},
        {"/a\0\0,d\0\0\0\0\0\0\0\0\0"s, "exhausted while reading double"},
        {"/a\0\0,iN\0\0\0\0\1"s, ": internal error while reading message argument"},
        {"/a\0\0,I\0\0"s, ": internal error while reading message argument"},
        {"/a\0\0,b\0\0\0\0\0"s, "exhausted while reading blob"},
        {"/a\0\0,b\0\0\0\0\0\0"s, "exhausted before reaching end of blob"},  // empty, at the end
        {"/a\0\0,b\0\0\0\0\0\7abcdefg"s, "format error: missing padding zeros"},
        {"/a\0\0,b\0\0\0\0\0\x8xy"s, "exhausted before reaching end of blob"},
        {"/a\0\0,b\0\0\xff\xff\xff\xffxxxx"s, "exhausted before reaching end of blob"},
        {"/a\0\0,b\0\0\x7f\xff\xff\xffxxxx"s, "exhausted before reaching end of blob"},
        {"#bundle\0\0\0\0\0\0\0\0"s, "exhausted while reading bundle"},
        {"#bumble\0\0\0\0\0\0\0\0\0"s, "format error: bundle does not start with string '#bundle'"},
        {bundle + "\0\0"s, "exhausted while reading bundle element size"},
        {bundle + "\0\0\0\3abc"s, "format error: invalid bundle element size"},
        {bundle + "\x80\0\0\0abcd"s, "format error: invalid bundle element size"},
        {bundle + "\0\0\0\x9"s + message, "exhausted while reading bundle element content"},
        {bundle + "\0\0\0\4abcd"s, ": invalid bundle element content"},
        {bundle + "\0\0\0\x9"s + message + "\0"s,
         "format error: wrong element content size encountered while reading message"},
        {bundle + "\0\0\0\7"s + message,
         "format error: wrong element content size encountered while reading message"},
        {bundle + "\0\0\0\xf"s + bundle,
         "format error: wrong element content size encountered while reading bundle"},
        {bundle + "\0\0\0\x11"s + bundle + "\0\0\0\x8"s + message,
         "format error: wrong element content size encountered while reading bundle"},
        {"source", ": invalid packet content"},
    };
    for (const auto& row : rows) {
        const bool hasSpace = row.fault[0] == ':';
        EXPECT_EQ(FaultOf(Bytes(row.bytes)),
                  "OSC input stream" + std::string(hasSpace ? "" : " ") + row.fault);
    }
    EXPECT_EQ(FaultOf(Bytes(bundle)), "");
    EXPECT_EQ(FaultOf(Bytes(bundle + "\0\0\0\x8"s + message)), "");
    EXPECT_EQ(FaultOf(LoBundle({{"/a", {{'i', 1}}}}, 32)), "");
    EXPECT_EQ(FaultOf(LoBundle({{"/a", {{'i', 1}}}}, 33)),
              "OSC input stream format error: too many nested bundles");
}

TEST(OscStreams, RefuseEveryPacketThatIsCutShort) {
    const Packet packets[] = {
        LoMessage("/source/1/aed",
                  {{'f', 1}, {'i', 2}, {'h', 3}, {'d', 4}, {'s', 0, "abcd"}, {'b', 0, "abc"}}),
        LoBundle({{"/a", {{'b', 0, "12345"}}}, {"/b/c", {{'T'}, {'F'}, {'f', 1}}}}, 2)};
    for (const Packet& packet : packets) {
        for (std::size_t size = 0; size < packet.size(); ++size) {
            const Packet cut(packet.begin(), packet.begin() + static_cast<std::ptrdiff_t>(size));
            const bool isBundleAlone = size == 16 && packet[0] == std::byte{'#'};
            EXPECT_EQ(FaultOf(cut).empty(), isBundleAlone) << size << " of " << packet.size();
        }
    }
}

/// The reader of the audio thread and the one that throws agree on every packet.
TEST(OscReader, AgreesWithTheStreamAndTakesNoMemory) {
    std::mt19937 random(77);
    int refused = 0;
    for (int k = 0; k < 3000; ++k) {
        Packet packet = LoBundle({{"/ab", SomeValues(random)}, {"/c", SomeValues(random)}},
                                 static_cast<int>(random() % 3));
        for (auto n = random() % 3; n > 0; --n)
            packet[random() % packet.size()] = static_cast<std::byte>(random());
        OscReader reader(packet);
        unsigned violations = 0;
        {
            const Tests::AllocationTrap trap;
            reader.ReadPacket([](const OscMessageView&) {});
            violations = trap.Violations();
        }
        EXPECT_EQ(violations, 0u);
        EXPECT_EQ(OscFaultText(reader.Fault(), reader.UnknownTag()), FaultOf(packet));
        refused += reader.Fault() != OscFault::None ? 1 : 0;
    }
    EXPECT_GT(refused, 500);
}

TEST(OSCBundle, KnowsWhatItsElementsAre) {
    OSCBundle bundle;
    bundle.Add(OSCMessage("/a", 1));
    bundle.Add(OSCBundle(7));
    for (const auto& ask :
         {+[](const OSCBundle& b) { static_cast<void>(b.Elements()[0].Bundle()); },
          +[](const OSCBundle& b) { static_cast<void>(b.Elements()[1].Message()); }}) {
        try {
            ask(bundle);
            ADD_FAILURE();
        } catch (const Exception& refusal) {
            EXPECT_EQ(refusal.Message(), "Access error in OSC bundle element.");
            EXPECT_EQ(refusal.File(), "libvelkdsp/src/osc/VelkDspOscBundle");
        }
    }
    EXPECT_EQ(bundle.Elements()[1].Bundle().TimeTag(), 7u);
}

}  // namespace
}  // namespace tav
