// SPDX-License-Identifier: MIT
#include "QuiloPanOsc.h"

#include "QuiloPanHeadphones.h"
#include "QuiloPanObject.h"
#include "QuiloPanOscState.h"
#include "QuiloPanTexts.h"
#include "math/VelkDspCoordinates.h"
#include "max/VelkMaxFiles.h"
#include "max/VelkMaxMaxAttribute.h"
#include "max/VelkMaxRestoring.h"
#include "max/VelkMaxStateTexts.h"
#include "osc/VelkDspOscInputStream.h"
#include "pan/QuiloPanOscTree.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

namespace Quilo {

using VelkMax::Atoms;
using VelkMax::Door;
using VelkMax::Error;
using VelkMax::Guarded;
using VelkMax::Letter;

namespace {

constexpr std::string_view kAttributePrefix = "/attribute/";

/// Addresses of the engine that stand for a message of the object, with the same arguments. With an
/// F the coordinate format is the first of them.
struct OwnRow {
    std::string_view address;
    const char* message;
    std::string_view arguments;  // type tags; "*": any number of numbers; "?": anything
    bool (*accepts)(const PanObject&, Atoms);
};
// clang-format off
constexpr OwnRow kOwnRows[] = {
    // address          message           arguments  whether it is taken
    {"/load",           "load",           "s",       AcceptsHrtfFile},
    {"/speakers/F",     "speakers",       "*",       AcceptsSpeakers},
    {"/listener/F",     "listener",       "*",       AcceptsListener},
    {"/crossfadetype",  "crossfadetype",  "s",       AcceptsCrossfadeType},
    {"/implementation", "implementation", "?",       AcceptsImplementation},
};
// clang-format on

/// Max has no atoms for them.
bool HasBlobs(const tav::OSCMessage& message) {
    return message.TypeTags().find('b') != std::string::npos;
}

bool ArgumentsFit(const OwnRow& row, const tav::OSCMessage& message) {
    const std::string tags = message.TypeTags();
    if (row.arguments == "*") return tags.find_first_not_of("fih") == std::string::npos;
    return row.arguments == "?" || row.arguments == tags;
}

/// Positions without any number: they change nothing.
bool IsEmptyLayout(const OwnRow& row, const tav::OSCMessage& message) {
    return row.arguments == "*" && message.Arguments().empty();
}

/// The word in the place of the F; empty where the row has none, nothing when it does not fit.
std::optional<std::string_view> FormatIn(std::string_view address, const OwnRow& row) noexcept {
    if (!row.address.ends_with("/F")) {
        if (address.ends_with('/')) address.remove_suffix(1);
        return address == row.address ? std::optional(std::string_view()) : std::nullopt;
    }
    const std::string_view head = row.address.substr(0, row.address.size() - 1);
    if (!address.starts_with(head)) return std::nullopt;
    address.remove_prefix(head.size());
    address = address.substr(0, address.find('/'));
    if (!tav::Coordinates::ParseFormat(address)) return std::nullopt;
    return address;
}

t_atom AtomOf(const tav::OSCArgument& argument) {
    t_atom atom{};
    switch (argument.Tag()) {
        case 'i':
        case 'h': atom_setlong(&atom, argument.Int64()); break;
        case 'f': atom_setfloat(&atom, static_cast<double>(argument.Float())); break;
        case 's': atom_setsym(&atom, gensym(argument.String().c_str())); break;
        default: atom_setlong(&atom, argument.Boolean() ? 1 : 0); break;
    }
    return atom;
}

std::vector<t_atom> AtomsOf(const tav::OSCMessage& message, std::string_view format) {
    std::vector<t_atom> atoms;
    if (!format.empty()) atoms.push_back(AtomOf(tav::OSCArgument(std::string(format))));
    for (const tav::OSCArgument& argument : message.Arguments()) atoms.push_back(AtomOf(argument));
    return atoms;
}

// ---- Packets of messages: written without memory, so that the audio thread can do it

class PacketWriter {
public:
    void Write(const char* text) noexcept { WriteBytes(text, std::strlen(text) + 1); }
    void WriteTags(Atoms atoms) noexcept {
        Put(',');
        for (const t_atom& atom : atoms.Span()) Put(TagOf(atom));
        Put('\0');
        Pad();
    }
    void Write(const t_atom& atom) noexcept {
        switch (TagOf(atom)) {
            case 'f': return WriteWord(std::bit_cast<std::uint32_t>(atom_getfloat32(atom)));
            case 'i': return WriteWord(static_cast<std::uint32_t>(atom_getlong(&atom)));
            case 'h':
                WriteWord(static_cast<std::uint32_t>(
                    static_cast<std::uint64_t>(atom_getlong(&atom)) >> 32));
                return WriteWord(static_cast<std::uint32_t>(atom_getlong(&atom)));
            default: return Write(atom_getsym(&atom)->s_name);
        }
    }
    /// Empty when something did not fit.
    std::span<const std::byte> Bytes() const noexcept {
        return std::span(bytes_).first(isWhole_ ? count_ : 0);
    }

private:
    static float atom_getfloat32(const t_atom& atom) noexcept {
        return static_cast<float>(atom_getfloat(&atom));
    }
    static char TagOf(const t_atom& atom) noexcept {
        if (atom_gettype(&atom) == A_FLOAT) return 'f';
        if (atom_gettype(&atom) != A_LONG) return 's';
        const t_atom_long value = atom_getlong(&atom);
        return value == static_cast<std::int32_t>(value) ? 'i' : 'h';
    }
    void Put(char c) noexcept {
        isWhole_ = isWhole_ && count_ < bytes_.size();
        if (isWhole_) bytes_[count_++] = static_cast<std::byte>(c);
    }
    void Pad() noexcept {
        while (count_ % 4 != 0) Put('\0');
    }
    void WriteBytes(const char* bytes, std::size_t count) noexcept {
        for (std::size_t k = 0; k < count; ++k) Put(bytes[k]);
        Pad();
    }
    void WriteWord(std::uint32_t word) noexcept {
        for (int shift = 24; shift >= 0; shift -= 8) Put(static_cast<char>((word >> shift) & 0xFF));
    }

    // Room for three numbers of each of 250 sources or loudspeakers, with their tags.
    std::array<std::byte, 8192> bytes_{};
    std::size_t count_ = 0;
    bool isWhole_ = true;
};

/// Equal for packets about the same, as far as the first address tells.
t_atom_long SubjectOf(std::span<const std::byte> packet) noexcept {
    // The hash of Fowler, Noll and Vo over the packet's first string that begins with "/".
    std::uint64_t hash = 14695981039346656037u;
    bool isAddress = false;
    for (const std::byte byte : packet) {
        isAddress = isAddress || byte == std::byte{'/'};
        if (isAddress && byte == std::byte{0}) break;
        if (isAddress) hash = (hash ^ std::to_integer<std::uint64_t>(byte)) * 1099511628211u;
    }
    return static_cast<t_atom_long>(hash ^ packet.size());
}

}  // namespace

// ---- Coming in

PanOsc::PanOsc(PanObject& object) : object_(object) {
    for (unsigned k = 0; k < PanOSCReceiver::NumAttributes(); ++k) {
        const std::string name(PanOSCReceiver::Attribute(k));
        attributes_.push_back(name.empty() ? nullptr : gensym(name.c_str()));
    }
}

void PanOsc::Receive(std::span<const std::byte> packet) {
    if (systhread_isaudiothread() != 0) return ReceiveInAudio(packet);
    PanOSCReceiver& receiver = object_.Engine()->Osc();
    const OscChanges changes = receiver.Enqueue(packet);
    if (sys_getdspstate() == 0 || object_.IsDisabled()) receiver.CarryOut();
    if (receiver.IsWaiting()) AnnounceLater(changes);
    const Door::Visit inside(object_.TheDoor());
    Announce(changes);
}

void PanOsc::ReceiveInAudio(std::span<const std::byte> packet) {
    OscChanges changes = 0;
    // A short packet overtakes no long one that was kept before it.
    if (!object_.TheDoor().HasLetters() &&
        object_.Engine()->Osc().EnqueueInAudio(packet, changes)) {
        AnnounceLater(changes);
        const Door::Visit inside(object_.TheDoor(), Door::Patience::WaitsOutsideAudio);
        if (inside) Announce(changes);
        return;
    }
    // A letter of whole words: the subject, the size in bytes, the bytes.
    std::array<t_atom, 1024> letter{};
    const std::size_t numWords = (packet.size() + sizeof(t_atom_long) - 1) / sizeof(t_atom_long);
    if (numWords + 2 > letter.size()) return object_.TheDoor().CountOutrun(1);
    atom_setlong(&letter[0], SubjectOf(packet));
    atom_setlong(&letter[1], static_cast<t_atom_long>(packet.size()));
    for (std::size_t k = 0; k < numWords; ++k) {
        const auto part = packet.subspan(k * sizeof(t_atom_long));
        t_atom_long word = 0;
        std::memcpy(&word, part.data(), std::min(part.size(), sizeof word));
        atom_setlong(&letter[k + 2], word);
    }
    object_.TheDoor().Enter({&ReceiveKept, Letter::Pace::Outside, nullptr,
                             Atoms(std::span(letter).first(numWords + 2)), 1});
}

void PanOsc::ReceiveKept(void* x, t_symbol*, Atoms words) noexcept {
    PanObject& object = PanObject::Of(x);
    Guarded(object, &object_error, [&] {
        std::vector<t_atom_long> bytes;
        for (std::size_t k = 2; k < words.Size(); ++k) bytes.push_back(words.Long(k));
        const auto size = static_cast<std::size_t>(words.Long(1));
        object.Osc()->Receive(std::as_bytes(std::span(bytes)).first(size));
    });
}

void PanOsc::Announce(OscChanges changes) {
    for (std::size_t k = 0; k < attributes_.size(); ++k) {
        if ((changes >> k) % 2 == 0 || attributes_[k] == nullptr) continue;
        object_.TheDoor().Changed(attributes_[k]);
    }
    const unsigned numLost = object_.Engine()->Osc().TakeNumLost();
    if (numLost > 0) object_.TheDoor().CountOutrun(static_cast<int>(numLost));
}

void PanOsc::AnnounceLater(OscChanges changes) noexcept {
    waiting_ |= changes;
    object_.TheDoor().Remind();
}

void PanOsc::LookAfter(void* record) noexcept {
    PanObject& object = PanObject::Of(record);
    Guarded(object, &object_error, [&] {
        PanOSCReceiver& receiver = object.Engine()->Osc();
        receiver.CarryOutIfStill();
        if (receiver.IsWaiting()) return object.TheDoor().Remind();
        const Door::Visit inside(object.TheDoor());
        object.Osc()->Announce(object.Osc()->waiting_.exchange(0));
    });
}

// ---- Errands

bool PanOsc::Owns(std::string_view address) const noexcept {
    if (address.starts_with(kAttributePrefix)) return true;
    return std::ranges::any_of(
        kOwnRows, [&](const OwnRow& row) { return FormatIn(address, row).has_value(); });
}

namespace {

/// Whether nothing is left of an earlier layout after a later one. One that may be refused replaces
/// none.
bool IsReplacedBy(const tav::OSCMessage& earlier, const tav::OSCMessage& later) {
    constexpr std::string_view kLayout = "/speakers/";
    const std::string_view address = later.AddressText();
    if (address != earlier.AddressText() || !address.starts_with(kLayout)) return false;
    const auto format = tav::Coordinates::ParseFormat(address.substr(kLayout.size()));
    return format && PanOscTree::IsWhole(*format) &&
           later.Arguments().size() == earlier.Arguments().size() &&
           std::ranges::all_of(later.Arguments(), [](const tav::OSCArgument& argument) {
               return argument.IsNumber() && std::abs(argument.Number()) <= 1e18;
           });
}

}  // namespace

void PanOsc::PutOff(const tav::OscMessageView& message) {
    tav::OSCMessage copy = CopyOf(message);
    {
        const tav::ControlGuard guard(lock_);
        if (!errands_.empty() && IsReplacedBy(errands_.back(), copy)) {
            errands_.back() = std::move(copy);
            return;
        }
        const auto same = std::find_if(
            errands_.rbegin(), errands_.rend(),
            [&](const auto& waiting) { return waiting.AddressText() == copy.AddressText(); });
        const bool isFull = errands_.size() >= kMostErrands;
        if (isFull) object_.TheDoor().CountOutrun(1);
        if (isFull && same == errands_.rend()) return;
        if (isFull) {
            *same = std::move(copy);
        } else {
            errands_.push_back(std::move(copy));
        }
        if (isFull) return;
    }
    object_.TheDoor().SendToMain({&RunErrands, Letter::Pace::InMain});
}

std::optional<tav::OSCMessage> PanOsc::TakeErrand() {
    const tav::ControlGuard guard(lock_);
    if (errands_.empty()) return std::nullopt;
    std::optional message(std::move(errands_.front()));
    errands_.pop_front();
    return message;
}

void PanOsc::RunErrands(void* x, t_symbol*, Atoms) noexcept {
    PanObject& object = PanObject::Of(x);
    Guarded(object, &object_error, [&] {
        const auto message = object.Osc()->TakeErrand();
        if (message) object.Engine()->Osc().ProcessErrand(*message);
    });
}

void PanOsc::CarryOutLong(std::function<void()> work) {
    const Door::Visit inside(object_.TheDoor());
    object_.TheDoor().CarryOut(std::make_unique<VelkMax::PlainWork>(std::move(work)));
}

void PanOsc::CarryOutPreset(std::vector<tav::OSCMessage> messages) {
    preset_ = {std::move(messages)};
    GoOnWithPreset();
}

void PanOsc::GoOnWithPreset() {
    // A stored state may hold words that are only printed.
    const VelkMax::RestoringState restoring(VelkMax::RestoringState::By::Message);
    PanOSCReceiver& receiver = object_.Engine()->Osc();
    for (tav::OSCMessage& message : std::exchange(preset_.messages, {})) {
        // A layout is in force before what follows it, such as corners, is set. Sources need no
        // layout: what is sent after the preset finds them placed.
        try {
            if (object_.TheDoor().HasLongWork() && !receiver.IsPrompt(message)) {
                preset_.messages.push_back(std::move(message));
            } else {
                receiver.Process(message);
            }
        } catch (const tav::Exception& refusal) {
            if (!preset_.firstRefusal) preset_.firstRefusal = refusal;
        }
    }
    if (!preset_.messages.empty()) return object_.TheDoor().SendNext({&RunPreset});
    if (preset_.firstRefusal) throw tav::Exception(*preset_.firstRefusal);
}

void PanOsc::RunPreset(void* x, t_symbol*, Atoms) noexcept {
    PanObject& object = PanObject::Of(x);
    Guarded(object, &object_error, [&] { object.Osc()->GoOnWithPreset(); });
}

bool PanOsc::ProcessOwn(const tav::OSCMessage& message) {
    const std::string& address = message.AddressText();
    t_object* const x = MaxObjectOf(object_);
    if (HasBlobs(message)) return false;
    if (address.starts_with(kAttributePrefix)) {
        t_symbol* const name = gensym(address.c_str() + kAttributePrefix.size());
        if (!HasAttribute(object_, name)) {
            Error(object_, VelkMax::kNoAttribute, name->s_name);
            return false;
        }
        std::vector<t_atom> atoms = AtomsOf(message, {});
        if (atoms.empty()) return false;
        VelkMax::SetAttribute(x, name, atoms);
        return true;
    }
    for (const OwnRow& row : kOwnRows) {
        const auto format = FormatIn(address, row);
        if (!format) continue;
        if (!ArgumentsFit(row, message)) return false;
        if (IsEmptyLayout(row, message)) return true;
        std::vector<t_atom> atoms = AtomsOf(message, *format);
        t_atom result{};
        return object_method_typed(x, gensym(row.message), static_cast<max_long>(atoms.size()),
                                   atoms.data(), &result) == MAX_ERR_NONE;
    }
    return false;
}

bool PanOsc::AcceptsOwn(const tav::OSCMessage& message) const {
    // Only presets ask; they may hold words that are only printed.
    const VelkMax::RestoringState asStored(VelkMax::RestoringState::By::Message);
    const VelkMax::WithoutWarnings onlyLooking;
    const std::string& address = message.AddressText();
    if (HasBlobs(message)) return false;
    if (address.starts_with(kAttributePrefix)) {
        t_symbol* const name = gensym(address.c_str() + kAttributePrefix.size());
        return AcceptsAttribute(object_, name, Atoms(AtomsOf(message, {})));
    }
    for (const OwnRow& row : kOwnRows) {
        const auto format = FormatIn(address, row);
        if (!format) continue;
        if (IsEmptyLayout(row, message)) return true;
        return ArgumentsFit(row, message) && row.accepts(object_, Atoms(AtomsOf(message, *format)));
    }
    return false;
}

std::filesystem::path PanOsc::FindFile(const std::string& name) const {
    if (const auto place = VelkMax::LocateFile(name.c_str())) return VelkMax::SystemPath(*place);
    return std::u8string(name.begin(), name.end());
}

// ---- Documentation and state

void PanOsc::DocumentOwn(std::vector<tav::OscDocumentation::Entry>& entries) const {
    for (const auto& attribute : VelkMax::ListAttributes(MaxObjectOf(object_))) {
        const bool isWord = std::string_view(attribute.TypeText()) == "symbol";
        const std::string hint = isWord ? "[string]" : "[number]";
        entries.push_back({std::string(kAttributePrefix) + attribute.Text(),
                           "sets the attribute: " + attribute.Property("label").GetValueOf(),
                           attribute.NumAtoms() > 1 ? hint + "..." : hint});
    }
}

void PanOsc::AddOwnState(tav::OSCBundle& state) const { AddObjectState(object_, state); }

// ---- Messages

namespace {

void TakeFullPacket(void* x, t_symbol*, max_long argc, t_atom* argv) noexcept {
    // Nothing is bigger than a packet of UDP; what says so is no packet.
    constexpr t_atom_long kMostBytes = 65535;
    PanObject& object = PanObject::Of(x);
    Guarded(object, &object_error, [&] {
        const Atoms atoms(argc, argv);
        const t_atom_long size = atoms.Long(0);
        // Max gives the address as a number; the bytes are valid during this call only.
        const auto* const bytes =
            reinterpret_cast<const std::byte*>(  // NOLINT(performance-no-int-to-ptr)
                static_cast<std::intptr_t>(atoms.Long(1)));
        if (atoms.Size() != 2 || !atoms.IsLong(0) || !atoms.IsLong(1) || bytes == nullptr ||
            size < 0 || size > kMostBytes) {
            return VelkMax::Reject(object, kInvalidFullPacket, atoms);
        }
        if (object.Osc() == nullptr) return;
        object.Osc()->Receive({bytes, static_cast<std::size_t>(size)});
    });
}

void TakeAnything(void* x, t_symbol* selector, max_long argc, t_atom* argv) noexcept {
    PanObject& object = PanObject::Of(x);
    if (selector->s_name[0] != '/') return Error(object, kNotUnderstood, selector->s_name);
    if (object.Osc() == nullptr) return;
    Guarded(object, &object_error, [&] {
        PacketWriter writer;
        const Atoms atoms(argc, argv);
        writer.Write(selector->s_name);
        writer.WriteTags(atoms);
        for (const t_atom& atom : atoms.Span()) writer.Write(atom);
        if (writer.Bytes().empty()) return Error(object, kTooLong, selector->s_name);
        object.Osc()->Receive(writer.Bytes());
    });
}

std::string LineOf(const tav::OscDocumentation::Entry& entry) {
    return entry.address + (entry.hint.empty() ? "" : " " + entry.hint) + " : " + entry.help;
}

}  // namespace

t_max_err RegisterFullPacket(t_class* type, const char* name) {
    return class_addmethod(type, VelkMax::AsMethod(&TakeFullPacket), name, A_GIMME, 0);
}

t_max_err RegisterAnything(t_class* type, const char* name) {
    return class_addmethod(type, VelkMax::AsMethod(&TakeAnything), name, A_GIMME, 0);
}

void PostOscMessage(PanObject& object) {
    if (object.Engine() == nullptr) return;
    std::vector<tav::OscDocumentation::Entry> entries;
    object.Engine()->DocumentOsc(entries);
    for (const auto& entry : entries) VelkMax::Post(object, VelkMax::kLine, LineOf(entry).c_str());
}

const char* OscAddressesHelp() {
    static const std::string text = [] {
        std::string lines =
            "Messages whose first word begins with a slash, such as those of the object "
            "<m>udpreceive</m>, are taken as OSC messages. Sources are counted from 1 in the place "
            "of N; F is a coordinate format. Address patterns are understood. <br/> ";
        std::vector<tav::OscDocumentation::Entry> entries;
        DocumentPanOsc(entries);
        entries.push_back({"/attribute/NAME", "sets an attribute", "[value]..."});
        for (const auto& entry : entries) lines += LineOf(entry) + "<br/> ";
        return lines;
    }();
    return text.c_str();
}

}  // namespace Quilo
