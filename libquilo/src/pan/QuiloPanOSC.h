// SPDX-License-Identifier: MIT
// The OSC addresses of a panner, and the way of their messages to the audio thread.
//
// Where a packet arrives it is read, checked and resolved, address patterns included: every message
// becomes commands for the audio thread, or an errand when it takes long (loudspeakers, files,
// rates). What can fail fails there, and a faulty packet changes nothing at all.
//
//   who                        may
//   control threads            Enqueue, Process, CarryOut
//   a message in the audio     EnqueueInAudio: the same without memory, for what is short
//     interrupt
//   audio, at block start      TakeInAudio: runs commands while nobody holds the panner's lock
#pragma once

#include "osc/VelkDspOscInterface.h"
#include "text/VelkDspNonblocking.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tav {
class OscQueue;
struct OscMessageView;
}  // namespace tav

namespace Quilo {

class Pan;

/// What the owner of a panner adds to its addresses, such as settings of its own.
class PanOscExtension {
public:
    /// Whether messages to this address are for the owner instead of the panner.
    virtual bool Owns(std::string_view address) const noexcept = 0;
    /// Keeps a copy of an errand, to call ProcessErrand with it soon, in another thread.
    /// Thread: that of Enqueue.
    virtual void PutOff(const tav::OscMessageView& message) = 0;
    /// Carries out a message that the owner owns.
    /// @return false: its arguments do not fit.  Thread: that of Process.
    virtual bool ProcessOwn(const tav::OSCMessage& message) = 0;
    /// Whether ProcessOwn would take it.
    virtual bool AcceptsOwn(const tav::OSCMessage& message) const = 0;
    /// Carries out what takes long and concerns the panner alone, now or soon.  Thread: that of
    /// Process.
    virtual void CarryOutLong(std::function<void()> work) = 0;
    /// Carries out the messages of a preset, which the panner accepts, now or soon.
    /// Thread: that of Process.  Throws: as OscInterface::LoadPreset, or says so later.
    virtual void CarryOutPreset(std::vector<tav::OSCMessage> messages) = 0;
    /// Where a file is that a message names.
    virtual std::filesystem::path FindFile(const std::string& name) const = 0;
    virtual void DocumentOwn(std::vector<tav::OscDocumentation::Entry>& entries) const = 0;
    virtual void AddOwnState(tav::OSCBundle& state) const = 0;

protected:
    ~PanOscExtension() = default;
};

/// Which settings a packet changes: bit k stands for Attribute(k).
using OscChanges = std::uint32_t;

/// Appends the addresses that every panner has.
void DocumentPanOsc(std::vector<tav::OscDocumentation::Entry>& entries);

class PanOSCReceiver {
public:
    explicit PanOSCReceiver(Pan& pan);
    ~PanOSCReceiver();
    PanOSCReceiver(const PanOSCReceiver&) = delete;
    PanOSCReceiver& operator=(const PanOSCReceiver&) = delete;

    /// Without one, errands are carried out by whoever enqueues them.
    /// Thread: control, before the first packet.
    void SetExtension(PanOscExtension* extension) { extension_ = extension; }

    /// Carries out one message now.  @return false: no such address, or other arguments
    /// Throws: tav::Exception for a source that does not exist; what setters throw.
    /// Thread: control.
    bool Process(const tav::OSCMessage& message);
    /// Carries out an errand that was put off. What its pattern stands for besides has been
    /// enqueued when it came.  Throws and Thread: as Process.
    void ProcessErrand(const tav::OSCMessage& message);
    /// Whether it is carried out at once: neither it nor anything that its pattern stands for is
    /// an errand.  Throws and Thread: as Process.
    bool IsPrompt(const tav::OSCMessage& message) const;
    /// Whether Process would take it, and this panner has what it sets. Presets are not accepted
    /// inside of presets.  Throws: as Process.  Thread: control.
    bool Accepts(const tav::OSCMessage& message) const;

    /// What takes long of an errand; the owner may do it later.
    void CarryOutLong(std::function<void()> work);
    /// Loads a preset from a file that a message names; the owner may carry it out later.
    /// Throws: as OscInterface::LoadPreset.
    void LoadPreset(const std::string& name);

    /// Queues a packet for the next block. Messages to unknown addresses, or with arguments of
    /// other types, are skipped.
    /// Throws: tav::Exception for a faulty packet; nothing is queued then.  Thread: control.
    OscChanges Enqueue(std::span<const std::byte> packet);
    /// The same in the audio thread.
    /// @return false: it has to be enqueued by another thread, for a fault, an errand or an address
    /// pattern, since nobody has enqueued anything yet, or since somebody is enqueuing just now;
    /// nothing is queued then
    bool EnqueueInAudio(std::span<const std::byte> packet,
                        OscChanges& changes) noexcept TAV_NONBLOCKING;
    /// The name of the attribute that shows setting k; empty for none.
    static std::string_view Attribute(unsigned k);
    static unsigned NumAttributes();

    /// Commands lost in a flood since the last call.  Thread: any.
    unsigned TakeNumLost() noexcept { return numLost_.exchange(0); }

    /// At most 16 commands for every frame of the block: of 333 ns each, a quarter of the block at
    /// 48 kHz.  Thread: audio.
    void TakeInAudio(unsigned frames) noexcept TAV_NONBLOCKING;
    /// Runs all that waits now.  Thread: control.
    void CarryOut();
    /// Runs all that waits, unless a block of audio has begun since the last call: nobody else does
    /// while audio stands still or the object is not part of it.
    /// @return whether anything was run.  Thread: control.
    bool CarryOutIfStill();
    /// Whether anything waits for the next block.  Thread: any.
    bool IsWaiting() const noexcept TAV_NONBLOCKING;

    void Document(std::vector<tav::OscDocumentation::Entry>& entries) const;
    void AddState(tav::OSCBundle& state) const;

private:
    friend class PanOscActions;

    template <class Sink>
    bool Resolve(const tav::OSCMessage& message, Sink& sink) const;
    bool Process(const tav::OSCMessage& message, bool takesCommands);
    bool IsOwned(std::string_view address) const noexcept;

    Pan& pan_;
    PanOscExtension* extension_ = nullptr;
    std::atomic<tav::OscQueue*> queue_ = nullptr;  // owned; made by the first packet
    std::atomic<unsigned> numLost_ = 0;
    std::atomic<unsigned> numBlocks_ = 0;      // that have begun; only audio writes it
    std::atomic<unsigned> numBlocksSeen_ = 0;  // by CarryOutIfStill
    float admMetres_ = 1.f;                    // of a distance of 1; guarded by the panner's lock
};

}  // namespace Quilo
