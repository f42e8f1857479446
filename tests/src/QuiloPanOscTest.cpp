// SPDX-License-Identifier: MIT
// OSC at the object, in this process.
#include "libvelkdsp/osc/OscPackets.h"
#include "max/VelkMaxMethod.h"
#include "src/PanBox.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Tests {
namespace {

class OscBox : public PanBox {
public:
    using PanBox::PanBox;

    std::vector<std::string> AfterAll() {
        HostApi::AdvanceClocks(1000.0);
        HostApi::Settle();
        return TakeConsole();
    }
};

TEST(PanObjectOsc, KeepsTheNewestErrandOfEachAddress) {
    OscBox box("1 4 vbap2d");
    for (int k = 1; k <= 100; ++k) {
        box.SendPacket(LoFloats("/attribute/interpolationtime", {1.0 * k}));
        box.SendPacket(LoFloats("/attribute/automute", {1.0 * k}));
    }
    EXPECT_EQ(box.AfterAll(),
              std::vector<std::string>{"warn: 136 messages came too fast and were lost"});
    EXPECT_EQ(box.Ask("interpolationtime"), "100");
    EXPECT_EQ(box.Ask("automute"), "100");
    // Whole layouts replace each other without loss, others and those that are refused do not.
    for (int k = 1; k <= 100; ++k) {
        box.SendPacket(LoFloats("/speakers/xyz", {1, 0, 0, 0, 1, 0, -1, 0, 0, 0, -1.0 * k, 0}));
    }
    box.SendPacket(LoFloats("/speakers/xyz", {1, 0, 0, 0, 1, 0, -1, 0, 0, NAN, 1, 0}));
    box.SendPacket(LoFloats("/speakers/x++", {0.25, 0.25, 0.25, 0.25}));
    box.SendPacket(LoFloats("/speakers/x++", {0.25, 0.25, 0.25, 0.25}));
    EXPECT_EQ(box.AfterAll(),
              std::vector<std::string>{"error: error reading 4 th speaker position"});
    EXPECT_EQ(box.Ask("speakerspositions"), "1.5 0 0 0.5 1 0 -0.5 0 0 0.5 -100 0");
}

/// What takes long is computed elsewhere, or by the main thread where there is no other; errands of
/// an object that is freed are dropped.
TEST(PanObjectOsc, CarriesErrandsOutInTheirOrder) {
    for (const unsigned failure : {0u, 1u, 2u, 3u}) {
        OscBox box("1 2 binaural");
        HostApi::FailCall("systhread_create", failure, MAX_ERR_GENERIC);
        for (const char* message : {"/dsp/samplerate 48000", "/load kemar", "/attribute/nothing 1",
                                    "/load nowhere", "/dsp/buffersize 32", "/load kemar"}) {
            box.Send(message);
        }
        EXPECT_EQ(box.AfterAll(),
                  (std::vector<std::string>{
                      "post: Loaded hrtf from kemar", "error: no attribute nothing",
                      "error: Couldnt locate file :  nowhere", "post: Loaded hrtf from kemar"}));
        box.Send("/dsp/samplerate 44100");
        box.Send("/load kemar");
        if (failure % 2 == 0) HostApi::RunDeferred();
        box.Free();
        EXPECT_TRUE(box.AfterAll().empty());
    }
    // The layout that is asked for last stays, although another one is still being computed.
    OscBox box("1 3 vbap2d");
    box.Send("/speakers/azim -60 0 60");
    HostApi::RunDeferred();
    box.Send("speakers xyz 0 1 0 1 0 0 0 -1 0");
    box.AfterAll();
    EXPECT_EQ(box.Ask("speakerspositions"), "0 1 0 1 0 0 0 -1 0");
    OscBox hoa("1 9 hoa3d");
    hoa.Send("/attribute/hoamode fast");
    hoa.Send("/attribute/encoding FuMa");
    HostApi::RunDeferred();
    hoa.Send("hoamode precise");
    hoa.AfterAll();
    EXPECT_EQ(hoa.Ask("hoamode") + hoa.Ask("norm"), "preciseFuMa");
}

/// A thread is asked for, which is the one that Max does not give; the main thread does it then.
TEST(PanObjectOsc, LeavesTablesAndFiltersToAThread) {
    struct Row {
        const char *arguments, *message;
    };
    for (const auto& [arguments, message] :
         {Row{"1 9 hoa3d", "/attribute/hoamode fast"}, Row{"1 9 nfchoa3d", "/attribute/norm N3D"},
          Row{"1 2 binaural", "/implementation realisation fir length 64"}}) {
        OscBox box(arguments);
        HostApi::FailCall("systhread_create", 1, MAX_ERR_GENERIC);
        box.Send(message);
        EXPECT_TRUE(box.AfterAll().empty());
        t_systhread thread = nullptr;
        constexpr auto kNothing = [](void*) -> void* { return nullptr; };
        ASSERT_EQ(systhread_create(VelkMax::AsMethod(+kNothing), nullptr, 0, 0, 0, &thread),
                  MAX_ERR_NONE)
            << message;
        unsigned result = 0;
        systhread_join(thread, &result);
    }
}

TEST(PanObjectOsc, TakesPatternsInThePlaceOfAFormat) {
    OscBox box("1 2 binaural");
    box.Send("/listener/{xyz,odd} 1 2 3");
    box.Send("/listener/[x] 9");
    EXPECT_EQ(box.AfterAll(), std::vector<std::string>());
    EXPECT_EQ(box.Ask("listenerposition"), "9 2 3");
    OscBox layout("1 2 vbap2d");
    layout.Send("/speakers/[x]yz 1 0 0 0 1 0");
    layout.AfterAll();
    EXPECT_EQ(layout.Ask("speakerspositions"), "1 0 0 0 1 0");
}

TEST(PanObjectOsc, RefusesAMessageThatIsTooLong) {
    OscBox box("1 4");
    std::string message = "/source/1/xyz";
    for (int k = 0; k < 2000; ++k) message += " 1.5";
    box.Send(message);
    EXPECT_EQ(box.TakeConsole(),
              std::vector<std::string>{"error: message too long : /source/1/xyz"});
}

/// Packets with patterns and errands come in the audio interrupt as letters.
TEST(PanObjectOsc, ArrivesInTheAudioInterrupt) {
    OscBox box("2 4 vbap2d");
    box.SendPacket(LoMessage("/elsewhere", {}));  // makes the queue
    {
        const HostApi::ThreadScope interrupt(HostApi::ThreadKind::Audio);
        // A pattern takes memory; what comes after it stays behind it.
        box.SendPacket(LoFloats("/source/*/xyz", {0, 0, 1}));
        box.SendPacket(LoFloats("/source/2/xyz", {4, 5, 6}));
        box.SendPacket(LoBundle({{"/source/1/xyz", {{'f', 1}, {'f', 2}, {'f', 3}}},
                                 {"/attribute/interpolationtime", {{'f', 77}}}}));
        box.SendPacket(LoMessage("/source/5/x", {{'f', 1}}));
        EXPECT_TRUE(box.TakeConsole().empty());
    }
    EXPECT_EQ(box.AfterAll(),
              std::vector<std::string>{"error: exception : invalid /source index : 5"});
    EXPECT_EQ(box.Ask("interpolationtime"), "77");
    EXPECT_EQ(box.Ask("sourcespositions"), "1 2 3 4 5 6");
}

/// Audio is on but does not come here, or stops before it has taken what waits.
TEST(PanObjectOsc, TakesEffectWithoutAudio) {
    OscBox box("2 4 vbap2d");
    HostApi::SetAudioSettings({48000, 64, true});
    box.Send("/source/1/xyz 1 2 3");
    EXPECT_FALSE(box.Ask("sourcespositions").starts_with("1 2 3 "));
    box.AfterAll();
    EXPECT_TRUE(box.Ask("sourcespositions").starts_with("1 2 3 "));
    box.Send("enable 0");
    box.Send("/source/1/x++ 1");
    EXPECT_TRUE(box.Ask("sourcespositions").starts_with("2 2 3 "));
    box.Send("enable 1");
    box.Send("/source/1/x 7");
    HostApi::SetAudioSettings({48000, 64, false});
    box.Send("/source/1/x++ 1");  // after what waited
    EXPECT_TRUE(box.Ask("sourcespositions").starts_with("8 2 3 "));
    HostApi::SetAudioSettings({});
}

}  // namespace
}  // namespace Tests
