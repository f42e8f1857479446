// SPDX-License-Identifier: MIT
#include "libquilo/pan/PanPlayer.h"
#include "libvelkdsp/osc/OscPackets.h"
#include "math/VelkDspCoordinates.h"
#include "osc/VelkDspOscMessage.h"
#include "pan/QuiloKnnPanning.h"
#include "pan/QuiloNullPanning.h"
#include "pan/QuiloPan.h"
#include "support/SystemCallTrap.h"
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <random>
#include <thread>

namespace Quilo {
namespace {

using tav::OSCMessage;
using Tests::LoBundle;
using Tests::LoFloats;
using Tests::LoMessage;
using Tests::OnDefaultSpeakers;
using Tests::Packet;
using Tests::PanPlayer;

std::string RefusalOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const tav::Exception& refusal) {
        EXPECT_EQ(refusal.File(), "libquilo/src/pan/QuiloPanOSC");
        return refusal.Message();
    }
    return {};
}

bool IsNear(const tav::CartesianVector& a, const tav::CartesianVector& b) {
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z) < 1e-6f;
}

void PlayOneBlock(Pan& pan) { PanPlayer(pan).Play(64, Tests::Silence); }

TEST(PanOsc, CarriesOutWhatItsTableSays) {
    const auto pan = OnDefaultSpeakers(2, 4, "dbap");
    const auto isAt = [&](unsigned k, float x, float y, float z) {
        return IsNear(pan->SourcePosition(k), {x, y, z});
    };
    const struct {
        OSCMessage message;
        bool isHandled;
        std::function<bool()> holds;
    } rows[] = {
        {OSCMessage("/source/1/xyz", 1, 2, 3), true, [&] { return isAt(0, 1, 2, 3); }},
        {OSCMessage("/source/1/xyz/", 3.f, 2.f, 1.f), true, [&] { return isAt(0, 3, 2, 1); }},
        {OSCMessage("/source/1/x++", 1.f), true, [&] { return isAt(0, 4, 2, 1); }},
        {OSCMessage("/source/2/az", 0.f), true, [&] { return isAt(1, 0, 1, 0); }},
        {OSCMessage("/source/2/dist*=", 2.f), true, [&] { return isAt(1, 0, 2, 0); }},
        {OSCMessage("/source/1/xyz", 1.f, 2.f), false, [&] { return isAt(0, 4, 2, 1); }},
        {OSCMessage("/source/1/xyz", "1", "2", "3"), false, [&] { return isAt(0, 4, 2, 1); }},
        {OSCMessage("/source/1/nowhere", 1.f), false, [&] { return isAt(0, 4, 2, 1); }},
        {OSCMessage("/source/2/spread", 150), true, [&] { return pan->SourceSpread(1) == 100; }},
        {OSCMessage("/source/*/spread", 30.f), true,
         [&] { return pan->SourceSpread(0) == 30 && pan->SourceSpread(1) == 30; }},
        {OSCMessage("/source/{2,7}/m?te", true), true,
         [&] { return !pan->SourceMute(0) && pan->SourceMute(1); }},
        {OSCMessage("/dsp/samplerate", 1000), true, [&] { return pan->SampleRate() == 8000; }},
        {OSCMessage("/dsp/samplerate", 5e5f), true, [&] { return pan->SampleRate() == 384000; }},
        {OSCMessage("/dsp/samplerate", "48000"), false,
         [&] { return pan->SampleRate() == 384000; }},
        {OSCMessage("/dsp/samplera", 48000), false, [&] { return pan->SampleRate() == 384000; }},
        {OSCMessage("/dsp/samplerates", 8000), false, [&] { return pan->SampleRate() == 384000; }},
        {OSCMessage("/dsp/buffersize", 0), true, [&] { return pan->BufferSize() == 1; }},
        {OSCMessage("/dsp/mute", true), true, [&] { return pan->Mute(); }},
        {OSCMessage("/dsp/mute", 2), true, [&] { return !pan->Mute(); }},  // only 1 is true
        {OSCMessage("/dsp/mute", 1.f), false, [&] { return !pan->Mute(); }},
        {OSCMessage("/dsp/bypass", std::int64_t{1}), true, [&] { return pan->Bypass(); }},
        {OSCMessage("/dsp/automute/attack", 5), true,
         [&] { return pan->AutoMute() && pan->AutoMuteTime() == 5; }},
        {OSCMessage("/dsp/automute/active", false), true, [&] { return !pan->AutoMute(); }},
        {OSCMessage("/dsp/clear"), true, [] { return true; }},
        {OSCMessage("/dsp/clear", 1), false, [] { return true; }},
        {OSCMessage("/speakers/ae", 45, 0, -45, 0), true,
         [&] { return pan->SpeakersPositions().Size() == 2; }},
        {OSCMessage("/speakers/{xyz,q}", 1, 0, 0, 0, 1, 0, 0, 0, 1), true,
         [&] { return pan->SpeakersPositions().Size() == 3; }},
        {OSCMessage("/speakers/a[e]", 45, 0, -45, 0), true,
         [&] { return pan->SpeakersPositions().Size() == 2; }},
        {OSCMessage("/speakers/xyz"), true, [&] { return pan->SpeakersPositions().Size() == 2; }},
        {OSCMessage("/speakers/nowhere", 1, 2, 3), false, [] { return true; }},
        {OSCMessage("/load", "a", "b"), false, [] { return true; }},
        {OSCMessage("/loaded", "a"), false, [] { return true; }},
        {OSCMessage("/elsewhere", 1), false, [] { return true; }},
        {OSCMessage("/"), false, [] { return true; }},
    };
    for (const auto& row : rows) {
        const std::string name = row.message.AddressText() + " " + row.message.TypeTags();
        EXPECT_EQ(pan->ProcessOsc(row.message), row.isHandled) << name;
        EXPECT_TRUE(row.holds()) << name;
        EXPECT_EQ(pan->AcceptsOsc(row.message), row.isHandled) << name;
    }
    // Only an owner knows how.
    const auto binaural = OnDefaultSpeakers(1, 2, "binaural");
    for (const OSCMessage& message :
         {OSCMessage("/listener/xyz", 1, 2), OSCMessage("/crossfadetype", "linear"),
          OSCMessage("/implementation", "delay", 1)}) {
        EXPECT_FALSE(binaural->AcceptsOsc(message)) << message.AddressText();
        EXPECT_FALSE(binaural->ProcessOsc(message)) << message.AddressText();
    }
    const auto knn = OnDefaultSpeakers(1, 4, "knn");
    EXPECT_TRUE(knn->ProcessOsc(OSCMessage("/source/1/numneighbors", 9)));
    EXPECT_EQ(dynamic_cast<KnnPanning&>(*knn).NumNeighbors(0), 4u);
}

TEST(PanOsc, RefusesSourcesThatDoNotExist) {
    const auto pan = OnDefaultSpeakers(2, 4, "angular");
    for (const char* const part : {"0", "3", "-1", "one", "1a", ""}) {
        const std::string address = "/source/" + std::string(part) + (*part ? "/spread" : "");
        EXPECT_EQ(RefusalOf([&] { pan->ProcessOsc(OSCMessage(address, 1)); }),
                  "invalid /source index : " + std::string(part));
    }
}

TEST(PanOsc, TakesAPacketAtTheStartOfTheNextBlockInItsOrder) {
    const auto pan = OnDefaultSpeakers(3, 4, "vbap2d");
    PlayOneBlock(*pan);
    pan->Osc().Enqueue(LoBundle({{"/source/1/xyz", {{'f', 1}, {'f', 1}, {'f', 0}}},
                                 {"/source/[12]/x++", {{'i', 2}}},
                                 {"/source/3/dist", {{'s', 0, "far"}}},
                                 {"/source/1/x", {{'d', 7}}},
                                 {"/dsp/mute", {{'T'}}}},
                                2));
    EXPECT_FALSE(pan->Mute());
    const float before = pan->SourcePosition(1).x;
    PlayOneBlock(*pan);
    EXPECT_TRUE(pan->Mute());
    EXPECT_EQ(pan->SourcePosition(0), (tav::CartesianVector{7, 1, 0}));
    EXPECT_EQ(pan->SourcePosition(1).x, before + 2);
    // Muted or not: the host's mute and bypass do not hold messages back.
    pan->Osc().Enqueue(LoFloats("/source/1/x", {9}));
    std::vector<double> samples(64);
    double* ports[4] = {samples.data(), samples.data(), samples.data(), samples.data()};
    pan->ProcessHost(ports, ports, 64, true, false);
    EXPECT_EQ(pan->SourcePosition(0).x, 9);
}

TEST(PanOsc, DropsAFaultyPacketWhole) {
    const auto pan = OnDefaultSpeakers(2, 4, "angular");
    const auto before = pan->SourcePosition(0);
    Packet unpadded = LoBundle({{"/source/1/x", {{'f', 5}}}, {"/source/2/x", {{'f', 5}}}});
    unpadded.back() = std::byte{1};
    unpadded.push_back(std::byte{0});
    EXPECT_EQ(RefusalOf([&] { pan->Osc().Enqueue(unpadded); }),
              "OSC input stream exhausted while reading bundle element size");
    EXPECT_EQ(RefusalOf([&] {
                  pan->Osc().Enqueue(
                      LoBundle({{"/source/1/x", {{'f', 5}}}, {"/source/9/x", {{'f', 5}}}}));
              }),
              "invalid /source index : 9");
    PlayOneBlock(*pan);
    EXPECT_EQ(pan->SourcePosition(0), before);
    // Twelve messages for each of 22 formats of each of 250 sources.
    const auto many = OnDefaultSpeakers(250, 4, "angular");
    const Tests::LoEntry all{"/source/*/*", {{'f', 5}, {'f', 5}, {'f', 5}}};
    EXPECT_EQ(RefusalOf([&] { many->Osc().Enqueue(LoBundle(std::vector(12, all))); }),
              "OSC packet stands for more than 65536 messages");
}

TEST(PanOsc, KeepsTheNewestOfEachAddressInAFlood) {
    constexpr unsigned kSources = 100;
    const auto pan = OnDefaultSpeakers(kSources, 4, "angular");
    constexpr unsigned kMessages = 20000;
    for (unsigned k = 0; k < kMessages; ++k) {
        const std::string address = "/source/" + std::to_string(k % kSources + 1) + "/x";
        const Packet packet = LoFloats(address, {static_cast<double>(k)});
        OscChanges changes;
        if (k % 3 == 2) {
            ASSERT_TRUE(pan->Osc().EnqueueInAudio(packet, changes));
        } else {
            pan->Osc().Enqueue(packet);
        }
    }
    EXPECT_EQ(pan->Osc().TakeNumLost(), kMessages - 4096);
    EXPECT_EQ(pan->Osc().TakeNumLost(), 0u);
    for (int block = 0; block < 4; ++block) PlayOneBlock(*pan);  // 1024 commands in each
    for (unsigned source = 0; source < kSources; ++source) {
        EXPECT_EQ(pan->SourcePosition(source).x, kMessages - kSources + source);
    }
    // Whole positions replace each other without loss; one that is refused replaces none.
    for (int k = 0; k < 5000; ++k) pan->Osc().Enqueue(LoFloats("/source/1/xyz", {1, 2, k * 1.0}));
    pan->Osc().Enqueue(LoFloats("/source/1/xyz", {1, NAN, 1}));
    EXPECT_EQ(pan->Osc().TakeNumLost(), 0u);
    PlayOneBlock(*pan);
    EXPECT_EQ(pan->SourcePosition(0), (tav::CartesianVector{1, 2, 4999}));
}

TEST(PanOsc, CarriesOutWhatNoBlockTakes) {
    const auto pan = OnDefaultSpeakers(1, 4, "angular");
    pan->Osc().Enqueue(LoFloats("/source/1/x", {4}));
    PlayOneBlock(*pan);
    pan->Osc().Enqueue(LoFloats("/source/1/x", {5}));
    EXPECT_FALSE(pan->Osc().CarryOutIfStill());  // a block has begun since the last call
    EXPECT_TRUE(pan->Osc().IsWaiting());
    EXPECT_TRUE(pan->Osc().CarryOutIfStill());
    EXPECT_EQ(pan->SourcePosition(0).x, 5);
    EXPECT_FALSE(pan->Osc().IsWaiting() || pan->Osc().CarryOutIfStill());
}

TEST(PanOsc, SpeaksAdm) {
    const struct {
        const char* adm;
        std::vector<double> values;
        const char* own;
        std::vector<double> ownValues;
    } rows[] = {
        {"aed", {30, 10, 0.5}, "aed", {-30, 10, 2}},
        {"aed", {-200, 95, 2}, "aed", {180, 90, 4}},
        {"azim", {90}, "azim", {-90}},
        {"elev", {-100}, "elev", {-90}},
        {"dist", {0.25}, "dist", {1}},
        {"xyz", {-1, 0.5, 3}, "xyz", {-4, 2, 4}},
        {"x", {0.5}, "x", {2}},
        {"y", {-2}, "y", {-4}},
        {"z", {0.25}, "z", {1}},
        {"w", {0.4}, "spread", {40}},
        {"w", {7}, "spread", {100}},
    };
    for (const auto& row : rows) {
        const auto pan = OnDefaultSpeakers(2, 4, "dbap");
        for (unsigned k = 0; k < 2; ++k) pan->SetSourcePosition(k, {1, 2, 0.5f}, true, true);
        pan->Osc().Enqueue(LoFloats("/adm/config/dmax", {4}));
        pan->Osc().Enqueue(LoFloats(std::string("/adm/obj/1/") + row.adm, row.values));
        pan->Osc().Enqueue(LoFloats(std::string("/source/2/") + row.own, row.ownValues));
        PlayOneBlock(*pan);
        EXPECT_EQ(pan->SourcePosition(0), pan->SourcePosition(1)) << row.adm;
        EXPECT_EQ(pan->SourceSpread(0), pan->SourceSpread(1)) << row.adm;
        EXPECT_EQ(RefusalOf([&] { pan->Osc().Enqueue(LoFloats("/adm/obj/3/x", {1})); }), "");
        EXPECT_FALSE(pan->ProcessOsc(OSCMessage("/adm/obj/1/gain", 1.f)));
    }
}

class PanOscOn : public testing::TestWithParam<Tests::PanCase> {};

/// A panner that computes nothing, and counts how often.
class CountingPan : public NullPanning {
public:
    CountingPan() : NullPanning(3, 2) {}
    std::array<int, 3> counts{};

private:
    void ComputeSource(unsigned index, bool, bool) override { ++counts[index]; }
};

TEST(PanOsc, ComputesASourceOnceHoweverOftenABlockMovesIt) {
    CountingPan pan;
    const auto sendMoves = [&](int count) {
        for (int k = 0; k < count; ++k) {
            pan.Osc().Enqueue(LoFloats("/source/" + std::to_string(k % 2 + 1) + "/x++", {1}));
        }
    };
    sendMoves(1000);
    PlayOneBlock(pan);
    EXPECT_EQ(pan.counts, (std::array{1, 1, 0}));
    EXPECT_EQ(pan.SourcePosition(1), (tav::CartesianVector{500, 0, 0}));
    sendMoves(1026);  // two of them find no place in the first block
    PlayOneBlock(pan);
    EXPECT_EQ(pan.counts, (std::array{2, 2, 0}));
    pan.Osc().CarryOut();
    EXPECT_EQ(pan.counts, (std::array{3, 3, 0}));
    EXPECT_TRUE(pan.ProcessOsc(OSCMessage("/source/3/x++", 1.f)));
    pan.Osc().CarryOut();  // nothing waits
    PlayOneBlock(pan);
    EXPECT_EQ(pan.counts, (std::array{3, 3, 1}));
}

/// All that the audio thread carries out, in every panner, without memory or locks (which the
/// player sees to), and with the effect of the setters.
TEST_P(PanOscOn, DoesInAudioWhatTheSettersDo) {
    const auto& [type, numOutputs, subtype, mostGain] = GetParam();
    const auto byOsc = OnDefaultSpeakers(3, numOutputs, type, subtype);
    const auto bySetters = OnDefaultSpeakers(3, numOutputs, type, subtype);
    PanPlayer oscPlayer(*byOsc), setterPlayer(*bySetters);
    const auto sine = Tests::Sine(440);
    oscPlayer.Play(64, sine);
    setterPlayer.Play(64, sine);
    std::mt19937 random(4);
    for (int k = 0; k < 12; ++k) {
        const auto source = static_cast<unsigned>(random() % 3);
        const auto azimuth = static_cast<float>(random() % 360);
        const std::string address = "/source/" + std::to_string(source + 1);
        const bool isMuted = random() % 4 == 0;
        byOsc->Osc().Enqueue(LoBundle({{address + "/azim++", {{'f', 100}}},
                                       {address + "/dist*=", {{'f', 3}}},
                                       {address + "/aed", {{'f', azimuth}, {'f', 10}, {'f', 2}}},
                                       {address + "/spread", {{'f', azimuth / 4}}},
                                       {address + "/spreadxyz", {{'i', 5}, {'i', 6}, {'i', 7}}},
                                       {address + "/numneighbors", {{'i', 2}}},
                                       {address + "/mute", {{isMuted ? 'T' : 'F'}}}}));
        tav::CartesianVector position;
        const float values[] = {azimuth, 10.f, 2.f}, spreads[] = {5.f, 6.f, 7.f};
        tav::Coordinates::Apply(position, tav::Coordinates::Format::Aed, values);
        bySetters->SetSourcePosition(source, position, false, false);
        bySetters->SetSourceSpread(source, azimuth / 4);
        bySetters->SetSpreadByDirection(source, spreads);
        bySetters->SetNumNeighbors(source, 2);
        bySetters->SetSourceMute(source, isMuted);
        if (k == 8) {
            byOsc->Osc().Enqueue(LoMessage("/dsp/clear", {}));
            bySetters->Reset();
        }
        EXPECT_EQ(oscPlayer.Play(512, sine), setterPlayer.Play(512, sine));
    }
}

INSTANTIATE_TEST_SUITE_P(Panners,
                         PanOscOn,
                         testing::ValuesIn(Tests::kAllPanners),
                         [](const auto& test) { return Tests::NameOf(test.param); });

TEST(PanOsc, IsEnqueuedInTheAudioThreadWithoutMemory) {
    const auto pan = OnDefaultSpeakers(2, 4, "angular");
    const Packet move = LoBundle({{"/source/1/x", {{'f', 5}}}, {"/source/2/dist*=", {{'f', 2}}}});
    Packet faulty = move;
    faulty.pop_back();
    const struct {
        Packet packet;
        bool isShort;
    } rows[] = {
        {move, true},
        {LoMessage("/source/*/x", {{'f', 1}}), false},  // a pattern
        {LoBundle({{"/source/1/x", {{'f', 6}}}, {"/load", {{'s', 0, "kemar"}}}}), false},
        {LoMessage("/source/3/x", {{'f', 1}}), false},
        {faulty, false},
    };
    OscChanges changes = 0;
    EXPECT_FALSE(pan->Osc().EnqueueInAudio(move, changes));  // there is no queue yet
    pan->Osc().Enqueue(LoMessage("/elsewhere", {}));
    for (const auto& row : rows) {
        bool isDone = false;
        const unsigned violations =
            Tests::ViolationsOf([&] { isDone = pan->Osc().EnqueueInAudio(row.packet, changes); });
        EXPECT_EQ(violations, 0u);
        EXPECT_EQ(isDone, row.isShort);
        PlayOneBlock(*pan);
        EXPECT_EQ(pan->SourcePosition(0).x, 5);
    }
    EXPECT_EQ(changes, 1u);
    EXPECT_EQ(PanOSCReceiver::Attribute(0), "sourcespositions");
}

#if defined(TRAP_CATCHES_SYSTEM_CALLS)
/// Others wait for the panner's lock while the audio thread holds it: it wakes nobody.
TEST(PanOsc, GivesItsLockBackWithoutASystemCall) {
    const auto pan = OnDefaultSpeakers(1, 250, "angular");
    std::vector<double> samples(64);
    std::vector<double*> outputs(250, samples.data());
    const double* const input[] = {samples.data()};
    std::atomic<bool> isOver = false;
    const auto hammer = [&] {
        for (float x = 0; !isOver; x += 1) pan->SetSourcePosition(0, {x, 1, 0}, false, true);
    };
    std::thread first(hammer), second(hammer);
    std::vector<int> calls;
    for (int k = 0; k < 50; ++k) {
        for (int n = 0; n < 500; ++n) pan->Osc().Enqueue(LoFloats("/source/1/x", {n * 1.0}));
        const auto more =
            Tests::SystemCallsOf([&] { pan->ProcessHost(outputs.data(), input, 64, true, false); });
        calls.insert(calls.end(), more.begin(), more.end());
    }
    isOver = true;
    first.join();
    second.join();
    EXPECT_EQ(calls, std::vector<int>());
}
#endif

/// A million packets with faults of every kind reach a panner that plays; it plays on as one that
/// nobody disturbs.
TEST(PanOsc, OutlivesAMillionFaultyPackets) {
    const auto disturbed = OnDefaultSpeakers(4, 4, "vbap2d");
    const auto undisturbed = OnDefaultSpeakers(4, 4, "vbap2d");
    PanPlayer player(*disturbed), twin(*undisturbed);
    // Whole, they have no effect: some of the faults below leave a packet right.
    const Packet wholes[] = {
        LoMessage("/source/1/aed", {{'T'}, {'F'}, {'T'}}),
        LoMessage("/load", {{'s', 0, "nowhere.sofa"}, {'b', 0, "12345"}}),
        LoBundle({{"/source/2/x", {{'F'}}}, {"/speakers/xyz", {{'F'}, {'T'}}}}, 3),
        LoBundle({{"/source/2/x", {{'F'}}}}, 33),
        Tests::Bytes("junk that is no packet"),
    };
    std::mt19937 random(2026);
    unsigned numRefused = 0;
    for (unsigned k = 0; k < 1'000'000; ++k) {
        Packet packet = wholes[k % std::size(wholes)];
        const auto place = static_cast<std::size_t>(random() % packet.size());
        switch (random() % 5) {
            case 0: packet.resize(place); break;              // cut short
            case 1: packet[place] ^= std::byte{0x80}; break;  // huge or negative sizes
            case 2: packet[place] ^= std::byte{1}; break;     // off by one, bad padding
            case 3: packet.insert(packet.begin() + 4, std::byte{','}); break;
            default: packet[place] = static_cast<std::byte>(random()); break;
        }
        if (k % 1000 == 0) {
            ASSERT_EQ(player.Play(64, Tests::Ones), twin.Play(64, Tests::Ones)) << k;
        }
        try {
            disturbed->Osc().Enqueue(packet);
        } catch (const tav::Exception&) {
            ++numRefused;
        }
    }
    EXPECT_GT(numRefused, 500'000u);
}

}  // namespace
}  // namespace Quilo
