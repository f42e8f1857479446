// SPDX-License-Identifier: MIT
#include "pan/QuiloPanOSC.h"

#include "osc/VelkDspOscInputStream.h"
#include "osc/VelkDspOscOutputStream.h"
#include "pan/QuiloDbapPanning.h"
#include "pan/QuiloKnnPanning.h"
#include "pan/QuiloPan.h"
#include "pan/QuiloPanOscResolver.h"
#include "pan/QuiloPanOscRoutes.h"
#include "pan/QuiloRecursivePanning.h"
#include "text/VelkDspException.h"

#include <string>
#include <utility>

namespace Quilo {

using tav::ControlGuard;
using tav::OscCommand;
using tav::OSCMessage;
using tav::OscMessageView;
using tav::OscQueue;

namespace {

constexpr tav::SourceSite kSite{"libquilo/src/pan/QuiloPanOSC", 0};
constexpr std::size_t kCommandsPerFrame = 16;
/// Patterns of one packet of 64 kB could stand for millions.
constexpr std::size_t kMostCommands = 65536;

OscChanges BitOf(const OscCommand& command) { return OscChanges{1} << command.route; }

[[noreturn]] void ThrowBadSource(std::string_view part) {
    throw tav::Exception("invalid /source index : " + std::string(part), kSite);
}

/// Everything in one packet, in its order.
struct Gathered {
    tav::OscCommandList commands;
    std::vector<OscMessageView> errands;

    void Command(const OscCommand& command) {
        if (commands.All().size() == kMostCommands) {
            throw tav::Exception("OSC packet stands for more than 65536 messages", kSite);
        }
        commands.Add(command);
    }
    bool Errand(const PanOscRoute&, PanOscRoute::Format, const OscMessageView& message) {
        // An errand looks at its address itself; a pattern may lead to it by several ways.
        if (errands.empty() || errands.back().address.data() != message.address.data()) {
            errands.push_back(message);
        }
        return true;
    }
};

/// Whether a packet can be enqueued in the audio thread.
struct Shortness {
    bool isShort = true;

    void Command(const OscCommand&) noexcept {}
    bool Errand(const PanOscRoute&, PanOscRoute::Format, const OscMessageView&) noexcept {
        return isShort = false;
    }
};

struct IntoBox {
    tav::OscBox& box;
    OscChanges& changes;
    unsigned numLost = 0;

    void Command(const OscCommand& command) noexcept TAV_NONBLOCKING {
        if (box.Put(command) != tav::OscBox::Outcome::Kept) ++numLost;
        changes |= BitOf(command);
    }
    bool Errand(const PanOscRoute&, PanOscRoute::Format, const OscMessageView&) noexcept {
        return false;
    }
};

}  // namespace

PanOSCReceiver::PanOSCReceiver(Pan& pan) : pan_(pan) {
    PanOscTree::Shared();  // made here rather than by a message in the audio thread
}

PanOSCReceiver::~PanOSCReceiver() { delete queue_.load(); }

std::string_view PanOSCReceiver::Attribute(unsigned k) { return PanOscRoutes()[k].attribute; }
unsigned PanOSCReceiver::NumAttributes() { return static_cast<unsigned>(PanOscRoutes().size()); }

// ---- Now

namespace {

/// The address of an errand's row with the format in the place of the F: one without patterns.
std::string PlainAddress(const PanOscRoute& route, PanOscRoute::Format format) {
    std::string address(route.address);
    if (address.ends_with("/F")) {
        address.pop_back();
        address.append(tav::Coordinates::FormatText(format));
    }
    return address;
}

struct AtOnce {
    Pan& pan;
    PanOSCReceiver& receiver;
    tav::ControlLock& lock;
    PanOscExtension* extension = nullptr;
    bool takesCommands = true;

    void Command(const OscCommand& command) {
        if (!takesCommands) return;
        const ControlGuard guard(lock);
        PanOscRoutes()[command.route].run(pan, receiver, command);
        ComputeMovedSources(pan);
    }
    bool Errand(const PanOscRoute& route,
                PanOscRoute::Format format,
                const OscMessageView& message) {
        const std::string address = PlainAddress(route, format);
        const OscMessageView plain{address, message.tags, message.arguments};
        const bool isOwn = extension != nullptr && extension->Owns(address);
        if (isOwn) return extension->ProcessOwn(CopyOf(plain));
        return route.runErrand != nullptr && route.runErrand(pan, plain);
    }
};

}  // namespace

/// @return whether a row took it.  Throws: tav::Exception for a source that does not exist.
template <class Sink>
bool PanOSCReceiver::Resolve(const OSCMessage& message, Sink& sink) const {
    tav::OSCOutputStream stream;
    stream.WriteMessage(message);
    tav::OscReader reader(stream.Bytes());
    OscMessageView view;
    if (!reader.ReadMessage(view)) return false;
    PanOscResolver<true, Sink> resolver(view, pan_.NumInputs(), sink);
    if (const auto part = resolver.BadSource()) ThrowBadSource(*part);
    return resolver.Resolve();
}

bool PanOSCReceiver::IsOwned(std::string_view address) const noexcept {
    return extension_ != nullptr && extension_->Owns(address);
}

bool PanOSCReceiver::Process(const OSCMessage& message) { return Process(message, true); }
void PanOSCReceiver::ProcessErrand(const OSCMessage& message) { Process(message, false); }

bool PanOSCReceiver::Process(const OSCMessage& message, bool takesCommands) {
    if (IsOwned(message.AddressText())) return extension_->ProcessOwn(message);
    AtOnce sink{pan_, *this, pan_.controlLock_, extension_, takesCommands};
    return Resolve(message, sink);
}

namespace {

struct Checking {
    const Pan& pan;
    const PanOscExtension* extension = nullptr;
    bool isTaken = false;

    void Command(const OscCommand& command) { Look(PanOscRoutes()[command.route], {}); }
    bool Errand(const PanOscRoute& route,
                PanOscRoute::Format format,
                const OscMessageView& message) {
        if (route.address.starts_with("/preset/")) return true;
        const std::string address = PlainAddress(route, format);
        const OscMessageView plain{address, message.tags, message.arguments};
        if (extension != nullptr && extension->Owns(address)) {
            isTaken = extension->AcceptsOwn(CopyOf(plain)) || isTaken;
        } else if (route.runErrand != nullptr) {
            Look(route, plain);
        }
        return true;
    }
    void Look(const PanOscRoute& route, const OscMessageView& message) {
        isTaken = isTaken || route.accepts == nullptr || route.accepts(pan, message);
    }
};

}  // namespace

bool PanOSCReceiver::Accepts(const OSCMessage& message) const {
    if (IsOwned(message.AddressText())) return extension_->AcceptsOwn(message);
    Checking sink{pan_, extension_};
    return Resolve(message, sink) && sink.isTaken;
}

bool PanOSCReceiver::IsPrompt(const OSCMessage& message) const {
    Shortness sink;
    return !IsOwned(message.AddressText()) && Resolve(message, sink) && sink.isShort;
}

void PanOSCReceiver::CarryOutLong(std::function<void()> work) {
    if (extension_ == nullptr) return work();
    extension_->CarryOutLong(std::move(work));
}

void PanOSCReceiver::LoadPreset(const std::string& name) {
    CarryOut();  // what was sent before comes before
    if (extension_ == nullptr) return pan_.LoadPreset(std::u8string(name.begin(), name.end()));
    extension_->CarryOutPreset(pan_.ReadPreset(extension_->FindFile(name)));
}

// ---- Soon

OscChanges PanOSCReceiver::Enqueue(std::span<const std::byte> packet) {
    Gathered gathered;
    tav::OscReader reader(packet);
    const bool isRead = reader.ReadPacket([&](const OscMessageView& message) {
        if (IsOwned(message.address)) {
            gathered.errands.push_back(message);
            return;
        }
        PanOscResolver<true, Gathered> resolver(message, pan_.NumInputs(), gathered);
        if (const auto part = resolver.BadSource()) ThrowBadSource(*part);
        resolver.Resolve();
    });
    if (!isRead) {
        throw tav::Exception(tav::OscFaultText(reader.Fault(), reader.UnknownTag()), kSite);
    }
    OscQueue* queue = queue_.load(std::memory_order_acquire);
    if (queue == nullptr) {
        auto made = std::make_unique<OscQueue>();
        if (queue_.compare_exchange_strong(queue, made.get())) queue = made.release();
    }
    const auto commands = gathered.commands.All();
    const unsigned numLost = commands.empty() ? 0 : queue->Put(commands);
    if (numLost > 0) numLost_ += numLost;
    OscChanges changes = 0;
    for (const OscCommand& command : commands) changes |= BitOf(command);
    for (const OscMessageView& errand : gathered.errands) {
        if (extension_ != nullptr) {
            extension_->PutOff(errand);
        } else {
            ProcessErrand(CopyOf(errand));
        }
    }
    return changes;
}

bool PanOSCReceiver::EnqueueInAudio(std::span<const std::byte> packet,
                                    OscChanges& changes) noexcept TAV_NONBLOCKING {
    OscQueue* const queue = queue_.load(std::memory_order_acquire);
    if (queue == nullptr) return false;
    Shortness shortness;
    tav::OscReader reader(packet);
    const bool isRead = reader.ReadPacket([&](const OscMessageView& message) noexcept {
        PanOscResolver<false, Shortness> resolver(message, pan_.NumInputs(), shortness);
        if (IsOwned(message.address) || resolver.HasPatterns() || resolver.BadSource())
            shortness.isShort = false;
        resolver.Resolve();
    });
    if (!isRead || !shortness.isShort) return false;
    return queue->PutInAudio([&](tav::OscBox& box) noexcept {
        IntoBox sink{box, changes};
        tav::OscReader again(packet);
        again.ReadPacket([&](const OscMessageView& message) noexcept {
            PanOscResolver<false, IntoBox>(message, pan_.NumInputs(), sink).Resolve();
        });
        if (sink.numLost > 0) numLost_ += sink.numLost;
    });
}

// The one door through which work of the control side enters the audio thread. What it calls takes
// no memory, which the tests of all panners see to.
void PanOSCReceiver::TakeInAudio(unsigned frames) noexcept TAV_NONBLOCKING TAV_UNCHECKED {
    OscQueue* const queue = queue_.load(std::memory_order_acquire);
    if (queue == nullptr) return;
    numBlocks_.store(numBlocks_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    if (!queue->IsWaiting() || !pan_.controlLock_.TryLock()) return;
    pan_.isInAudio_ = true;
    queue->RunInAudio(kCommandsPerFrame * frames, [this](const OscCommand& command) noexcept {
        PanOscRoutes()[command.route].run(pan_, *this, command);
    });
    ComputeMovedSources(pan_);
    pan_.isInAudio_ = false;
    pan_.controlLock_.Unlock();
}

void PanOSCReceiver::CarryOut() {
    OscQueue* const queue = queue_.load(std::memory_order_acquire);
    if (queue == nullptr) return;
    const ControlGuard guard(pan_.controlLock_);
    queue->RunAll([this](const OscCommand& command) {
        PanOscRoutes()[command.route].run(pan_, *this, command);
    });
    ComputeMovedSources(pan_);
}

bool PanOSCReceiver::CarryOutIfStill() {
    const unsigned numBlocks = numBlocks_.load(std::memory_order_relaxed);
    if (numBlocksSeen_.exchange(numBlocks) != numBlocks || !IsWaiting()) return false;
    CarryOut();
    return true;
}

bool PanOSCReceiver::IsWaiting() const noexcept TAV_NONBLOCKING {
    const OscQueue* const queue = queue_.load(std::memory_order_acquire);
    return queue != nullptr && queue->IsWaiting();
}

// ---- Documentation and state

void DocumentPanOsc(std::vector<tav::OscDocumentation::Entry>& entries) {
    for (const PanOscRoute& route : PanOscRoutes()) {
        entries.push_back(
            {std::string(route.address), std::string(route.help), std::string(route.hint)});
    }
}

void PanOSCReceiver::Document(std::vector<tav::OscDocumentation::Entry>& entries) const {
    DocumentPanOsc(entries);
    if (extension_ != nullptr) extension_->DocumentOwn(entries);
}

void PanOSCReceiver::AddState(tav::OSCBundle& state) const {
    if (extension_ != nullptr) extension_->AddOwnState(state);
    const auto add = [&](const std::string& address, const auto&... values) {
        state.Add(OSCMessage(address, values...));
    };
    const tav::CartesianArray speakers = pan_.SpeakersPositions();
    if (speakers.Size() > 0) {
        OSCMessage layout("/speakers/xyz");
        for (const auto& p : speakers) {
            for (const float part : {p.x, p.y, p.z}) layout.Add(tav::OSCArgument(part));
        }
        state.Add(std::move(layout));
    }
    // A layout brings corners of its own.
    if (const auto* const panr = dynamic_cast<const RecursivePanning*>(&pan_)) {
        const auto corners = panr->Corners();
        add("/corners", corners[0], corners[1], corners[2], corners[3]);
    }
    const auto* const knn = dynamic_cast<const KnnPanning*>(&pan_);
    const auto* const dbap = dynamic_cast<const DbapPanning*>(&pan_);
    for (unsigned k = 0; k < pan_.NumInputs(); ++k) {
        const std::string source = "/source/" + std::to_string(k + 1);
        const tav::CartesianVector p = pan_.SourcePosition(k);
        add(source + "/xyz", p.x, p.y, p.z);
        if (pan_.SupportsSpread()) add(source + "/spread", pan_.SourceSpread(k));
        if (dbap != nullptr) {
            const auto xyz = dbap->SourceSpreadByDirection(k);
            add(source + "/spreadxyz", xyz[0], xyz[1], xyz[2]);
        }
        if (knn != nullptr) {
            add(source + "/numneighbors", static_cast<std::int32_t>(knn->NumNeighbors(k)));
        }
        add(source + "/mute", pan_.SourceMute(k));
    }
    // The time switches the inspection on; so it comes first.
    add("/dsp/automute/attack", pan_.AutoMuteTime());
    add("/dsp/automute/active", pan_.AutoMute());
    add("/dsp/mute", pan_.Mute());
    add("/dsp/bypass", pan_.Bypass());
    const ControlGuard guard(pan_.controlLock_);
    add("/adm/config/dmax", admMetres_);
}

}  // namespace Quilo
