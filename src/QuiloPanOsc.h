// SPDX-License-Identifier: MIT
// OSC for one quilo.pan~ object: packets of network objects, addresses as messages, and what they
// set beyond the engine.
//
//   what arrives                 goes
//   positions, spreads, mutes    through the queue of the engine to the next block of audio
//   what takes long, or calls    as errands to the main thread, in their order: files, rates,
//     Max                        loudspeakers, attributes, presets; the long part of these is
//                                computed in a thread of its own (Door::CarryOut)
//   in the audio interrupt       short packets straight to the queue; others are kept as letters
//   anything while audio is off  is carried out where it arrives
//   what no block of audio takes by the reminder of the door, in the scheduler or the main thread
#pragma once

#include "max/VelkMaxHandlers.h"
#include "osc/VelkDspOscMessage.h"
#include "pan/QuiloPanOSC.h"
#include "processors/VelkDspControlLock.h"
#include "text/VelkDspException.h"

#include <atomic>
#include <deque>
#include <optional>
#include <vector>

namespace Quilo {

class PanObject;

class PanOsc final : public PanOscExtension {
public:
    /// @param object  has its engine and outlives this
    explicit PanOsc(PanObject& object);

    /// Takes a copy of what it needs.  Thread: any, outside the door.
    /// Throws: tav::Exception for a faulty packet, which changes nothing.
    void Receive(std::span<const std::byte> packet);

    /// Some 100 ms after a packet: carries out what waits for a block of audio that does not come,
    /// and announces what has taken effect meanwhile.
    static void LookAfter(void* record) noexcept;

    bool Owns(std::string_view address) const noexcept override;
    void PutOff(const tav::OscMessageView& message) override;
    bool ProcessOwn(const tav::OSCMessage& message) override;
    bool AcceptsOwn(const tav::OSCMessage& message) const override;
    void CarryOutLong(std::function<void()> work) override;
    void CarryOutPreset(std::vector<tav::OSCMessage> messages) override;
    /// In the search path, too.
    std::filesystem::path FindFile(const std::string& name) const override;
    void DocumentOwn(std::vector<tav::OscDocumentation::Entry>& entries) const override;
    void AddOwnState(tav::OSCBundle& state) const override;

private:
    static constexpr std::size_t kMostErrands = 64;

    /// A preset that is being carried out.
    struct Preset {
        std::vector<tav::OSCMessage> messages;         // that are left
        std::optional<tav::Exception> firstRefusal{};  // of those that are not
    };

    static void RunErrands(void* x, t_symbol*, VelkMax::Atoms) noexcept;
    static void RunPreset(void* x, t_symbol*, VelkMax::Atoms) noexcept;
    void GoOnWithPreset();
    static void ReceiveKept(void* x, t_symbol*, VelkMax::Atoms words) noexcept;
    std::optional<tav::OSCMessage> TakeErrand();
    void ReceiveInAudio(std::span<const std::byte> packet);
    void Announce(OscChanges changes);
    void AnnounceLater(OscChanges changes) noexcept;

    PanObject& object_;
    std::vector<t_symbol*> attributes_;    // of each bit of OscChanges; null for none
    std::atomic<OscChanges> waiting_ = 0;  // to be announced by LookAfter
    tav::ControlLock lock_;
    std::deque<tav::OSCMessage> errands_ TAV_GUARDED_BY(lock_);
    Preset preset_;  // used by the main thread only
};

// ---- Messages

/// `FullPacket SIZE ADDRESS`: a packet in memory, as udpreceive passes it.
t_max_err RegisterFullPacket(t_class* type, const char* name);
/// Any selector that begins with "/"; for others the object says that it does not understand.
t_max_err RegisterAnything(t_class* type, const char* name);
/// Posts a line for every address.
void PostOscMessage(PanObject& object);

/// All addresses for the reference page.
const char* OscAddressesHelp();

}  // namespace Quilo
