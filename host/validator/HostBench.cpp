// SPDX-License-Identifier: MIT
#include "validator/HostBench.h"

#include "HostAtoms.h"
#include "HostFault.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

namespace Quilo::Host {

namespace {

constexpr double kRateHz = 48000;
constexpr unsigned kVector = 64;
constexpr double kOldData = 777.0;  // the value with which HostChain fills output vectors

bool IsSettable(const HostApi::AttributeInfo& attribute) {
    const auto invisible = Property(attribute, "invisible");
    return (attribute.flags & (ATTR_SET_OPAQUE | ATTR_SET_OPAQUE_USER)) == 0 &&
           (invisible.empty() || atom_getlong(invisible.data()) == 0);
}

t_atom LongAtom(t_atom_long value) {
    t_atom atom{};
    atom_setlong(&atom, value);
    return atom;
}

t_atom FloatAtom(double value) {
    t_atom atom{};
    atom_setfloat(&atom, value);
    return atom;
}

}  // namespace

Bench::Bench(std::vector<Atom> box) : box_(std::move(box)) {
    HostApi::SetConsoleSink([this](HostApi::PostKind kind, std::string_view text, t_object* from) {
        constexpr const char* kHeads[] = {"post: ", "error: ", "warn: ", "bug: "};
        heard_.push_back(kHeads[static_cast<int>(kind)] + std::string(text));
        // Reports of the API itself have no object.
        if (kind == HostApi::PostKind::Bug && !from && misuse_.empty()) misuse_ = text;
    });
    ListenToOutlets();
    object_.Make(box_);
    chain_ = std::make_unique<Chain>(object_, kRateHz, kVector);
    for (std::size_t k = 0; k < object_.NumSignalInlets(); ++k) chain_->SetConnected(k, true);
    chain_->Start();
}

Bench::~Bench() {
    chain_->Stop();
    object_.Free();
    HostApi::SetConsoleSink({});
    HostApi::SetOutletSink({});
}

void Bench::ListenToOutlets() {
    HostApi::SetOutletSink([this](const HostApi::OutletMessage& message) {
        heard_.push_back("outlet: " + std::string(message.selector->s_name) + " " +
                         HostApi::AtomText(message.atoms));
    });
}

void Bench::Remake() {
    object_.Free();
    object_.Make(box_);
    chain_->Refresh();
}

bool Bench::MakeAndFree() {
    object_.Free();
    try {
        object_.Make(box_);
    } catch (const Fault&) {
        return false;  // creation failed as planned, without an exception
    } catch (const std::exception&) {
        return true;
    }
    object_.Free();
    RunDueWork();
    return false;
}

void Bench::Send(const std::string& words) {
    const auto atoms = ReadAtoms(words);
    if (!atoms || atoms->empty()) return;
    object_.Send(*atoms);
    RunDueWork();
}

void Bench::Send(const std::string& selector, std::span<const t_atom> atoms) {
    HostApi::DeliverMessage(Get(), 0, gensym(selector.c_str()), atoms);
    RunDueWork();
}

t_max_err Bench::Set(const std::string& attribute, std::vector<t_atom> values) {
    return object_attr_setvalueof(Get(), gensym(attribute.c_str()),
                                  static_cast<max_long>(values.size()), values.data());
}

std::vector<std::string> Bench::Take() { return std::exchange(heard_, {}); }

std::string Bench::TakeMisuse() { return std::exchange(misuse_, {}); }

std::string Bench::TakeFirst(const std::string& head) {
    const std::vector<std::string> lines = Take();
    const auto found = std::ranges::find_if(
        lines, [&head](const std::string& line) { return line.starts_with(head); });
    return found == lines.end() ? "" : *found;
}

Sound Bench::Play(unsigned vectors, std::uint64_t seed) {
    Sound sound;
    Random noise(seed);
    for (unsigned n = 0; n < vectors; ++n) {
        for (std::size_t k = 0; k < object_.NumSignalInlets(); ++k)
            for (double& sample : chain_->Input(k)) sample = noise.Between(-0.5, 0.5);
        chain_->Run();
        for (std::size_t k = 0; k < object_.NumSignalOutlets(); ++k) {
            for (const double sample : chain_->Output(k)) {
                sound.isWhole &= sample != kOldData;
                sound.isFinite &= std::isfinite(sample);
                sound.peak = std::max(sound.peak, std::abs(sample));
                sound.samples.push_back(static_cast<float>(sample));
            }
        }
        RunDueWork();
        HostApi::AdvanceClocks(1000 * chain_->Vector() / chain_->Rate());
    }
    return sound;
}

bool Bench::Understands(const std::string& message) const {
    const auto messages = HostApi::Messages(object_class(Get()));
    return std::ranges::find(messages, gensym(message.c_str()), &HostApi::MessageInfo::name) !=
           messages.end();
}

std::vector<std::string> Bench::Messages() const {
    std::vector<std::string> names;
    for (const HostApi::MessageInfo& message : HostApi::Messages(object_class(Get()))) {
        const bool isPrivate = !message.types.empty() && message.types[0] == A_CANT;
        const std::string name = message.name->s_name;
        if (!isPrivate && name != "generatexml") names.push_back(name);
    }
    return names;
}

std::vector<HostApi::AttributeInfo> Bench::Settable() const {
    std::vector<HostApi::AttributeInfo> found = HostApi::Attributes(Get());
    std::erase_if(found, [](const auto& attribute) { return !IsSettable(attribute); });
    return found;
}

Values Bench::Read() const {
    Values values;
    for (const HostApi::AttributeInfo& attribute : Settable())
        values[attribute.name->s_name] = HostApi::AttributeValue(Get(), attribute.name->s_name);
    return values;
}

std::vector<t_atom> Property(const HostApi::AttributeInfo& attribute, const char* name) {
    for (const HostApi::PropertyInfo& property : attribute.properties)
        if (property.name == gensym(name)) return property.values;
    return {};
}

std::vector<t_atom> LegalValues(const HostApi::AttributeInfo& attribute,
                                std::span<const t_atom> now,
                                Random& random) {
    const std::vector<t_atom> choices = Property(attribute, "enumvals");
    const std::vector<t_atom> lowest = Property(attribute, "min");
    const std::vector<t_atom> highest = Property(attribute, "max");
    const double low = lowest.empty() ? (highest.empty() ? -5 : 0) : atom_getfloat(lowest.data());
    const double high = highest.empty() ? low + 10 : atom_getfloat(highest.data());
    std::vector<t_atom> values(now.begin(), now.end());
    for (t_atom& value : values) {
        if (!choices.empty()) {
            const std::size_t choice = random.Below(choices.size());
            const bool isIndex = value.a_type == A_LONG && choices[0].a_type == A_SYM;
            value = isIndex ? LongAtom(static_cast<t_atom_long>(choice)) : choices[choice];
        } else if (value.a_type == A_LONG) {
            value = LongAtom(static_cast<t_atom_long>(std::round(random.Between(low, high))));
        } else if (value.a_type == A_FLOAT) {
            const double drawn =
                random.Once(8) ? (random.Once(2) ? low : high) : random.Between(low, high);
            value = FloatAtom(static_cast<double>(static_cast<float>(drawn)));
        }
    }
    return values;
}

std::string Difference(const Values& a, const Values& b) {
    if (a.size() != b.size()) return "other attributes";
    for (const auto& [name, values] : a) {
        const auto other = b.find(name);
        if (other == b.end()) return name + " is missing";
        const std::string x = HostApi::AtomText(values), y = HostApi::AtomText(other->second);
        if (x != y) return std::string(name).append(" is ").append(y).append(", was ").append(x);
    }
    return "";
}

std::string Difference(const Sound& a, const Sound& b, double tolerance) {
    if (a.samples.size() != b.samples.size()) return "other lengths";
    for (std::size_t k = 0; k < a.samples.size(); ++k) {
        const double difference =
            std::abs(static_cast<double>(a.samples[k]) - static_cast<double>(b.samples[k]));
        if (!(difference <= tolerance))
            return "sample " + std::to_string(k) + " differs by " + std::to_string(difference);
    }
    return "";
}

}  // namespace Quilo::Host
