// SPDX-License-Identifier: MIT
// The object as a host has it: main thread, scheduler and audio interrupt send messages at once,
// the perform routine runs, and new chains call dsp64.
#include "HostAudioBridge.h"
#include "HostBridge.h"
#include "osc/VelkDspOscOutputStream.h"
#include "races/RaceThreads.h"
#include "src/PanBox.h"
#include "support/HostProgram.h"

#include <array>
#include <atomic>
#include <cmath>
#include <iterator>
#include <memory>
#include <mutex>

namespace Tests {

namespace {

constexpr std::size_t kFrames = 64;

constexpr const char* kAttributes[] = {"mute",
                                       "automute",
                                       "interpolationtime",
                                       "distanceattenuation",
                                       "crossearselection",
                                       "nfcompensationfilters",
                                       "hrtffilters",
                                       "gainscorrection",
                                       "delayscorrection",
                                       "elsewhere"};

/// A message, short or long, for any thread.  Surplus numbers stand for the values of a position.
std::string SomeMessage(std::mt19937& random, std::size_t numInputs) {
    const auto number = [&random](unsigned most) { return std::to_string(random() % most); };
    const std::string source = "source " + std::to_string(1 + random() % numInputs);
    switch (random() % 15) {
        case 0: return "interpolationtime " + number(60);
        case 1: return "speaker " + number(5) + " aed " + number(360) + " 0 1";
        case 2: return "speakers ae 0 10 60 -10 120 10 180 -10 240 10 300 " + number(20);
        case 3: return source + " mute " + number(2);
        case 4: return "clear";
        case 5: return "automute " + number(3);
        case 6: return "sourcespositions 0 1 0 1 0 " + number(3);
        case 7: return "getspeakerspositions";
        case 8: return "load kemar";
        case 9: return "implementation reduction " + number(100);
        case 10: return "bypass " + number(2);
        case 11: return source + " spread " + number(100);
        case 12: return kAttributes[random() % std::size(kAttributes)] + (' ' + number(2));
        default: return source + " aed " + number(360) + ' ' + number(90) + ' ' + number(4);
    }
}

/// The same by OSC: moves, errands, presets in `folder`, addresses that are not there.
tav::OSCMessage SomeOsc(std::mt19937& random, std::size_t numInputs, const std::string& folder) {
    using tav::OSCMessage;
    const auto number = [&random](unsigned most) { return static_cast<float>(random() % most); };
    const std::string source = "/source/" + std::to_string(1 + random() % numInputs);
    const std::string preset = folder + std::array{"/a.osc", "/b.txt", "/c.xml"}[random() % 3];
    switch (random() % 14) {
        case 0: return OSCMessage("/source/*/aed", number(360), 0.f, 1.f);
        case 1: return OSCMessage(source + "/x++", number(3) - 1.f);
        case 2: return OSCMessage(source + "/mute", number(2) > 0.f);
        case 3:
            return OSCMessage("/speakers/ae", 0.f, 10.f, 60.f, -10.f, 120.f, 10.f, 180.f, -10.f,
                              240.f, 10.f, 300.f, number(20));
        case 4:
            return OSCMessage(
                std::string("/attribute/") + kAttributes[random() % std::size(kAttributes)],
                number(2));
        case 5: return OSCMessage("/load", random() % 2 == 0 ? "kemar" : "nowhere");
        case 6: return OSCMessage("/preset/export", preset);
        case 7: return OSCMessage("/preset/load", preset);
        case 8: return OSCMessage("/dsp/buffersize", 64.f);
        case 9: return OSCMessage("/source/9/xyz", 1.f, 2.f, 3.f);  // faulty
        default: return OSCMessage(source + "/aed", number(360), number(90), number(4));
    }
}

/// Up to four messages in one packet, of which now and then a byte is wrong or the end is missing.
void SendPacket(Box& box, std::mt19937& random, const std::string& folder) {
    const std::size_t numInputs = HostApi::SignalInlets(box.Get());
    tav::OSCBundle bundle;
    for (auto left = random() % 4 + 1; left > 0; --left) {
        bundle.Add(SomeOsc(random, numInputs, folder));
    }
    tav::OSCOutputStream stream;
    stream.WriteBundle(bundle);
    std::vector<std::byte> packet = stream.Bytes();
    if (random() % 8 == 0) packet[random() % packet.size()] ^= std::byte{0x20};
    if (random() % 8 == 0) packet.resize(random() % packet.size());
    box.SendPacket(packet);
}

/// The signal side of a patch with one object in it.
class Audio {
public:
    explicit Audio(t_object* object)
        : object_(object),
          inputs_(HostApi::SignalInlets(object), std::vector<double>(kFrames, 1.0)),
          outputs_(HostApi::SignalOutlets(object), std::vector<double>(kFrames)) {
        for (auto& input : inputs_) inputPointers_.push_back(input.data());
        for (auto& output : outputs_) outputPointers_.push_back(output.data());
        Restart();
    }

    /// Sends dsp64, as after every change of a cord.  Thread: main.
    void Restart() {
        const std::vector<short> counts(inputs_.size() + outputs_.size(), 1);
        const std::lock_guard lock(chainLock_);
        chain_.reset();
        chain_ = std::make_unique<HostApi::DspChain>(object_, counts);
    }
    /// Thread: audio.
    void Perform() {
        const std::lock_guard lock(chainLock_);
        chain_->Perform(inputPointers_.data(), inputs_.size(), outputPointers_.data(),
                        outputs_.size(), kFrames);
        for (const auto& output : outputs_) {
            for (const double sample : output) {
                if (!std::isfinite(sample)) isFinite_ = false;
            }
        }
    }
    bool IsFinite() const { return isFinite_; }

private:
    t_object* object_;
    std::mutex chainLock_;  // the host's own: no vector while a chain is made
    std::unique_ptr<HostApi::DspChain> chain_;
    std::vector<std::vector<double>> inputs_;
    std::vector<std::vector<double>> outputs_;
    std::vector<double*> inputPointers_;
    std::vector<double*> outputPointers_;
    std::atomic<bool> isFinite_ = true;
};

Fault ObjectOutlivesAHost(const std::string& arguments) {
    // The rate of the built-in set: at another, its filters are converted, for minutes under a
    // sanitizer.
    HostApi::SetAudioSettings({44100, static_cast<int>(kFrames), true});
    PanBox box(arguments);
    if (box.Get() == nullptr) return "was not made";
    Audio audio(box.Get());
    const std::size_t numInputs = HostApi::SignalInlets(box.Get());
    const TemporaryFolder folder;
    const auto sendOsc = [&](std::mt19937& random) {
        SendPacket(box, random, folder.Path().string());
    };
    const auto send = [&](std::mt19937& random) {
        if (random() % 3 == 0) return sendOsc(random);
        box.Send(SomeMessage(random, numInputs));
    };
    const auto perform = [&](std::mt19937& random) {
        const HostApi::ThreadScope interrupt(HostApi::ThreadKind::Audio);
        if (random() % 4 == 0) send(random);
        audio.Perform();
    };
    const auto schedule = [&](std::mt19937& random) {
        send(random);
        HostApi::AdvanceClocks(1.0);
    };
    std::mt19937 random(7);
    const auto main = [&]() -> Fault {
        send(random);
        HostApi::RunDeferred();
        if (random() % 16 == 0) audio.Restart();
        return audio.IsFinite() ? "" : "an output was no number";
    };
    Fault fault =
        RunThreads(main, {perform, schedule, sendOsc}, ScenarioTime() / 3, Setters::AllAtOnce);

    // What is sent last, holds.
    HostApi::AdvanceClocks(1000.0);
    HostApi::Settle();
    box.Send("sourcespositions 1 2 3");
    if (!box.Ask("sourcespositions").starts_with("1 2 3 ")) fault += " a position was lost";
    box.Send("/source/1/xyz 3 2 1");
    box.Send("/attribute/interpolationtime 7");
    audio.Perform();
    HostApi::Settle();
    if (!box.Ask("sourcespositions").starts_with("3 2 1 ")) fault += " a packet was lost";
    if (box.Ask("interpolationtime") != "7") fault += " an errand was lost";
    for (const std::string& line : box.TakeConsole()) {
        if (line.starts_with("bug: ")) fault += ' ' + line;
    }
    return fault;
}

}  // namespace

Fault ObjectsOutliveAHost() {
    for (const char* arguments : {"2 6 vbap", "2 2 ab", "2 5 panr", "2 4 nfchoa3d", "2 2 binaural",
                                  "2 2 binaural nearfield", "2 2 binaural continuous"}) {
        const Fault fault = ObjectOutlivesAHost(arguments);
        if (!fault.empty()) return arguments + (": " + fault);
    }
    return {};
}

}  // namespace Tests
