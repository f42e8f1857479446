// SPDX-License-Identifier: MIT
#include "HostRender.h"

#include "HostActions.h"
#include "HostAmbix.h"
#include "HostChain.h"
#include "HostCoverageProbe.h"
#include "HostFault.h"
#include "HostLayouts.h"
#include "HostObject.h"
#include "HostOutputFile.h"
#include "HostPlatform.h"
#include "HostPlatformUdp.h"
#include "HostProgress.h"
#include "audiofiles/VelkDspWavFile.h"
#include "picture/HostPicture.h"
#include "picture/HostScene.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <iostream>
#include <optional>
#include <thread>

namespace Quilo::Host {

namespace {

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not wait");

/// Frames. Without it a decimal time may fall in the frame before: 0.036 s at 48000 Hz is slightly
/// less than 1728 frames in binary.
constexpr double kTimeRounding = 1e-6;

/// Longer than any glide: interpolation takes two times 200 ms at most, and near-field filters
/// reach the ratio of an array of 20 m within 0.9 s.
constexpr double kSettlingSeconds = 2;

/// Eleven days: a run that takes OSC and has no input goes on until it is interrupted.
constexpr double kEndlessSeconds = 1e6;

/// The index of the frame that contains a time.
double FrameAt(double seconds, double hz) { return std::floor(seconds * hz + kTimeRounding); }

/// The length of a run, rounded up to whole frames, except for rounding errors.
std::uint64_t NumFrames(double seconds, double hz) {
    const double frames = std::ceil(seconds * hz - kTimeRounding);
    if (frames > 1e15) throw Fault(ExitStatus::WrongInput, "--duration: the run is too long");
    return static_cast<std::uint64_t>(std::max(frames, 0.0));
}

std::uint64_t RunFrames(const Options& options, const Inputs& inputs, double rateHz) {
    if (options.duration) return NumFrames(*options.duration, rateHz);
    if (options.oscPort != 0 && inputs.NumChannels() == 0)
        return NumFrames(kEndlessSeconds, rateHz);
    return inputs.NumChannels() > 0 ? inputs.NumFrames() : NumFrames(1, rateHz);
}

class Run {
public:
    Run(const Options& options,
        const Script& script,
        const Inputs& inputs,
        Object& object,
        Actions& actions)
        : options_(options),
          script_(script),
          inputs_(inputs),
          object_(object),
          rateHz_(RunRate(options, inputs)),
          numFrames_(RunFrames(options, inputs, rateHz_)),
          numFed_(std::min(inputs.NumChannels(), object.NumSignalInlets())),
          isAmbisonic_(IsAmbisonic(object)),
          chain_(object, rateHz_, options.vector),
          actions_(actions) {
        actions.Attach(chain_);
        for (std::size_t k = 0; k < numFed_; ++k) chain_.SetConnected(k, true);
        RefuseUnknownInlets();
        RefuseLayoutsOfOtherSizes(script, object);
        OpenOutputs();
        if (options.oscPort != 0) network_.emplace(options.oscPort);
        Advise();
    }

    void Play() {
        while (next_ < script_.statements.size() && !script_.statements[next_].timed)
            actions_.Execute(script_.statements[next_++]);
        actions_.RunPutOffWork();
        chain_.Begin();
        if (options_.settled) Settle();
        PlayVectors();
        actions_.RunPutOffWork();
        if (numFrames_ == 0) RecordPositions(0);
        NoteUnsentStatements();
        chain_.Stop();
        const CoverageMap coverage = FinalCoverage();
        object_.Free();
        if (output_) output_->Close();
        if (!recorder_ || !picture_) return;
        Scene scene = recorder_->Finish();
        scene.coverage = coverage;
        picture_->Stream() << DrawScene(scene);
        picture_->Close();
    }

private:
    void RefuseUnknownInlets() const {
        for (const Statement& statement : script_.statements) {
            if (!statement.Says("connect")) continue;
            if (AtomNumber(statement.atoms[0]) > static_cast<double>(object_.NumSignalInlets()))
                throw ScriptFault(
                    script_.name, statement.line,
                    "host connect: the object has no inlet " + AtomSpelling(statement.atoms[0]));
        }
    }

    void OpenOutputs() {
        const std::size_t numOutlets = object_.NumSignalOutlets();
        if (options_.ambix)
            ambix_.emplace(object_);
        else
            plain_ = PlainChannels(numOutlets);
        if (!options_.output.empty()) {
            if (numOutlets == 0)
                throw Fault(ExitStatus::WrongInput,
                            options_.output + ": the object has no signal outlet");
            output_.emplace(PathOf(options_.output), static_cast<unsigned>(FileChannels().size()),
                            rateHz_);
            if (!options_.ambix) output_->SetChannelMask(ChannelMaskOf(script_));
        }
        if (options_.picture.empty()) return;
        picture_.emplace(options_.picture);
        Scene scene;
        for (const Atom& atom : script_.box)
            scene.title += (scene.title.empty() ? "" : " ") + AtomSpelling(atom);
        scene.rateHz = rateHz_;
        scene.vector = options_.vector;
        scene.numInlets = object_.NumSignalInlets();
        recorder_.emplace(std::move(scene), numOutlets, numFrames_);
    }

    void Note(const std::string& text) const {
        if (!options_.quiet) std::cerr << "quilo-host: note: " << text << '\n';
    }

    void Advise() const {
        for (const std::string& note : inputs_.Notes()) Note(note);
        if (inputs_.NumChannels() > numFed_)
            Note("the object has no inlet for " + std::to_string(inputs_.NumChannels() - numFed_) +
                 " of the input channels");
        if (inputs_.NumChannels() > 0 && inputs_.SampleRate() != rateHz_)
            Note("inputs of " + AtomSpelling(inputs_.SampleRate()) + " Hz are played at " +
                 AtomSpelling(rateHz_) + " Hz");
    }

    void NoteUnsentStatements() const {
        if (next_ < script_.statements.size())
            Note("the run ended before the script did, from line " +
                 std::to_string(script_.statements[next_].line) + " on");
    }

    /// Runs silence before the run, so that glides end. Nothing is recorded, and the time of the
    /// script has not begun.
    void Settle() {
        const auto frames = NumFrames(kSettlingSeconds, rateHz_);
        for (std::uint64_t frame = 0; frame < frames && !interrupted; frame += chain_.Vector()) {
            for (std::size_t k = 0; k < object_.NumSignalInlets(); ++k)
                std::ranges::fill(chain_.Input(k), 0.0);
            chain_.Run();
            HostApi::AdvanceClocks(1000 * chain_.Vector() / rateHz_);
            actions_.RunPutOffWork();
        }
    }

    /// Coverage for the picture. With `host fail` in the script there is none, because the calls of
    /// the copied object would count among those that fail.
    CoverageMap FinalCoverage() const {
        if (!recorder_ || script_.Says("fail")) return {};
        return MapOf(MeasureCoverage(object_, actions_.HiddenSettings()));
    }

    void PlayVectors() {
        const auto start = std::chrono::steady_clock::now();
        const bool watched = !options_.quiet && StandardErrorIsTerminal();
        Progress progress(watched, static_cast<double>(numFrames_) / rateHz_);
        for (std::uint64_t frame = 0; frame < numFrames_; frame += chain_.Vector()) {
            const double seconds = static_cast<double>(frame) / rateHz_;
            if (options_.realtime)
                std::this_thread::sleep_until(start + std::chrono::duration<double>(seconds));
            if (interrupted && options_.realtime) return;
            if (interrupted) throw Fault(ExitStatus::HostFailed, "interrupted");
            progress.Show(seconds);
            if (network_)
                network_->Receive([this](auto packet) { actions_.SendFromNetwork(packet); });
            SendDueStatements(frame);
            actions_.RunPutOffWork();
            PlayVector(frame);
            HostApi::AdvanceClocks(1000 * chain_.Vector() / rateHz_);
        }
    }

    /// Executes the statements whose time is in the next vector. A statement may change the size of
    /// that vector, and so which others are due.
    void SendDueStatements(std::uint64_t frame) {
        while (next_ < script_.statements.size()) {
            const Statement& statement = script_.statements[next_];
            const double end = static_cast<double>(frame + chain_.Vector());
            if (FrameAt(statement.seconds, rateHz_) >= end) return;
            actions_.Execute(statement);
            ++next_;
        }
    }

    void RecordPositions(std::uint64_t frame) {
        if (recorder_ && recorder_->WantsPositions(frame))
            recorder_->AddPositions(frame, object_.AttributeNumbers("sourcespositions"),
                                    isAmbisonic_ ? std::vector<float>()
                                                 : object_.AttributeNumbers("speakerspositions"));
    }

    void PlayVector(std::uint64_t frame) {
        RecordPositions(frame);
        for (std::size_t k = 0; k < numFed_; ++k) inputs_.Read(k, frame, chain_.Input(k));
        chain_.Run();
        const auto kept =
            static_cast<std::size_t>(std::min<std::uint64_t>(chain_.Vector(), numFrames_ - frame));
        if (recorder_)
            for (std::size_t k = 0; k < object_.NumSignalOutlets(); ++k)
                recorder_->AddSamples(k, frame, chain_.Output(k).first(kept));
        if (output_) WriteVector(*output_, kept);
    }

    std::span<const tav::AmbixChannel> FileChannels() const {
        return ambix_ ? ambix_->Channels() : plain_;
    }

    void WriteVector(tav::WavFileWriter& output, std::size_t numFrames) {
        if (ambix_) ambix_->Follow(object_);
        const std::span<const tav::AmbixChannel> channels = FileChannels();
        samples_.assign(channels.size() * numFrames, 0.f);
        channels_.resize(channels.size());
        for (std::size_t k = 0; k < channels.size(); ++k) {
            float* samples = samples_.data() + k * numFrames;
            channels_[k] = samples;
            const std::optional<unsigned> outlet = channels[k].source;
            if (!outlet) continue;
            std::ranges::transform(chain_.Output(*outlet).first(numFrames), samples,
                                   [gain = channels[k].gain](double sample) {
                                       return static_cast<float>(gain * sample);
                                   });
        }
        output.Write(channels_.data(), numFrames);
    }

    const Options& options_;
    const Script& script_;
    const Inputs& inputs_;
    Object& object_;
    double rateHz_;            // of the run and its output file
    std::uint64_t numFrames_;  // likewise
    std::size_t numFed_;       // inlets with an input file
    bool isAmbisonic_;         // the outlets are no loudspeaker signals
    Chain chain_;
    Actions& actions_;
    std::size_t next_ = 0;                  // index of the next statement
    std::optional<AmbixOutlets> ambix_;     // with --ambix
    std::vector<tav::AmbixChannel> plain_;  // without --ambix
    std::optional<tav::WavFileWriter> output_;
    std::optional<OutputFile> picture_;
    std::optional<SceneRecorder> recorder_;  // with --picture
    std::optional<UdpPort> network_;         // with --osc
    std::vector<float> samples_;             // of one vector, for the file
    std::vector<const float*> channels_;
};

}  // namespace

double RunRate(const Options& options, const Inputs& inputs) {
    if (options.rate) return *options.rate;
    return inputs.NumChannels() > 0 ? inputs.SampleRate() : 48000;
}

void Render(const Options& options,
            const Script& script,
            const Inputs& inputs,
            Object& object,
            Actions& actions) {
    Run(options, script, inputs, object, actions).Play();
}

void InterruptRender() { interrupted = true; }

}  // namespace Quilo::Host
