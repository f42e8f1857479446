// SPDX-License-Identifier: MIT
// Levels 1 to 5: sound, attributes and messages of a single object.
#include "validator/HostValidator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Quilo::Host {

namespace {

t_atom Number(double value) {
    t_atom atom{};
    atom_setfloat(&atom, value);
    return atom;
}

std::string TypeOf(const Bench& bench) {
    return HostApi::AtomText(HostApi::AttributeValue(bench.Get(), "type"));
}

/// "" if the attribute stays in its range when it is set to values beyond it; else the fault.
std::string ClipFault(Bench& bench, const HostApi::AttributeInfo& attribute) {
    const std::string name = attribute.name->s_name;
    const auto low = Property(attribute, "min"), high = Property(attribute, "max");
    const std::vector<t_atom> before = HostApi::AttributeValue(bench.Get(), name);
    for (const double beyond : {-1e9, 1e9, std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::quiet_NaN()}) {
        bench.Set(name, std::vector<t_atom>(before.size(), Number(beyond)));
        for (const t_atom& atom : HostApi::AttributeValue(bench.Get(), name)) {
            const double value = atom_getfloat(&atom);
            const bool isIn = (low.empty() || value >= atom_getfloat(low.data())) &&
                              (high.empty() || value <= atom_getfloat(high.data()));
            if (!isIn || !std::isfinite(value)) return "holds " + HostApi::AtomText(atom);
        }
    }
    bench.Set(name, before);
    return "";
}

std::string AnswerFault(Bench& bench, const HostApi::AttributeInfo& attribute) {
    const std::string name = attribute.name->s_name;
    const std::string text = HostApi::AtomText(HostApi::AttributeValue(bench.Get(), name));
    bench.Take();
    bench.Send("get" + name);
    const std::string answer = bench.TakeFirst("outlet: ");
    return answer == "outlet: " + name + " " + text ? "" : "answers '" + answer + "'";
}

/// "" if the getter fills memory that is larger than needed, and does not write to memory that is
/// too small; else the fault.
std::string BufferFault(const Bench& bench, t_symbol* name) {
    t_atom mark{};
    atom_setsym(&mark, gensym("untouched"));
    const std::vector<t_atom> value = HostApi::AttributeValue(bench.Get(), name->s_name);
    const auto isMark = [](const t_atom& atom) {
        return atom_getsym(&atom) == gensym("untouched");
    };
    for (const std::size_t room : {value.size() + 3, value.size() - 1}) {
        if (value.empty() || room == 0) continue;
        const bool isEnough = room >= value.size();
        std::vector<t_atom> memory(value.size() + 3, mark);
        auto argc = static_cast<max_long>(room);
        t_atom* argv = memory.data();
        const t_max_err error = object_attr_getvalueof(bench.Get(), name, &argc, &argv);
        const std::string what = isEnough ? "memory for more: " : "memory for less: ";
        if (argv != memory.data()) return what + "answers elsewhere";
        if (isEnough != (error == MAX_ERR_NONE)) return what + "says " + std::to_string(error);
        if (isEnough && argc != static_cast<max_long>(value.size()))
            return what + "counts " + std::to_string(argc);
        const std::span rest = std::span(memory).subspan(isEnough ? value.size() : room);
        if (!std::ranges::all_of(rest, isMark)) return what + "writes beyond it";
    }
    return "";
}

std::vector<t_atom> AnyAtoms(Random& random) {
    static const auto kAtoms = HostApi::ParseAtoms(
        "0 1 2 -1 3 250 251 100000000000 -9223372036854775808 0. 0.5 -0.5 1e-40 1e30 -1e300 aed "
        "xyz azim spread \"\" on nan \"two words\" \xC3\xA9 @type 1.5");
    std::vector<t_atom> atoms(random.Below(random.Once(20) ? 800 : 8));
    for (t_atom& atom : atoms) {
        atom = kAtoms[random.Below(kAtoms.size())];
        if (random.Once(30)) atom = Number(std::numeric_limits<double>::quiet_NaN());
        if (random.Once(30)) atom = Number(-std::numeric_limits<double>::infinity());
    }
    return atoms;
}

/// What would be the size and the address of a packet becomes that of these bytes: an address is
/// trusted, in Max as well.
void PointTo(const std::string& bytes, std::vector<t_atom>& atoms) {
    if (atoms.size() < 2 || atoms[1].a_type != A_LONG) return;
    atom_setlong(&atoms[0], static_cast<t_atom_long>(bytes.size()));
    atom_setlong(&atoms[1],
                 static_cast<t_atom_long>(reinterpret_cast<std::intptr_t>(bytes.data())));
}

}  // namespace

void CheckThatItSounds(Validation& v) {
    v.report.Refute("is made without a bug", v.bench.TakeFirst("bug: "));
    const Sound sound = v.bench.Play(100);
    v.report.Check(sound.isWhole, "writes every sample");
    v.report.Check(sound.isFinite, "gives numbers");
    const bool isMute = TypeOf(v.bench) == "null" || v.bench.TheObject().NumSignalOutlets() == 0;
    if (isMute) {
        v.report.Check(sound.peak == 0, "an object of the null type is silent");
    } else {
        v.report.Check(sound.peak > 0, "noise in, something out");
    }
    v.bench.Remake();
    v.report.Refute("is freed and made again while audio runs", v.Faults(10));
    const auto count = [&v] {
        v.bench.Remake();
        v.bench.Play(2);
        v.bench.Take();
        HostApi::CheckFreedMemory();
        return std::array{HostApi::CountObjects(), HostApi::CountBlocks()};
    };
    count();
    const auto before = count();
    for (int k = 0; k < 20; ++k) count();
    v.report.Check(count() == before, "leaves nothing behind");
}

void CheckAssistance(Validation& v) {
    t_object* const object = v.bench.Get();
    const auto inlets = HostApi::InletTypes(object), outlets = HostApi::OutletTypes(object);
    using Assist = void(t_object*, void*, max_long, max_long, char*);
    const method found = object_getmethod(object, gensym("assist"));
    v.report.Check(found != MaxApi::ToMethod(method_false), "has help texts");
    for (const bool isInlet : {true, false}) {
        std::string missing;
        const std::size_t count = isInlet ? inlets.size() : outlets.size();
        for (std::size_t k = 0; k < count; ++k) {
            std::array<char, 513> text{};
            text[512] = 'x';
            MaxApi::FromMethod<Assist>(found)(object, nullptr,
                                              isInlet ? ASSIST_INLET : ASSIST_OUTLET,
                                              static_cast<max_long>(k), text.data());
            const auto length = std::ranges::find(text, '\0') - text.begin();
            if (length == 0 || length >= ASSIST_MAX_STRING_LEN) missing = std::to_string(k + 1);
        }
        v.report.Check(missing.empty(), isInlet ? "every inlet" : "every outlet",
                       "number " + missing);
    }
    const bool hasDump = !outlets.empty() && outlets.back() != "signal";
    v.report.Check(hasDump, "the rightmost outlet takes messages");
    const bool rest = std::all_of(outlets.begin(), outlets.end() - (hasDump ? 1 : 0),
                                  [](const std::string& type) { return type == "signal"; });
    v.report.Check(rest, "all others take signals");
    v.report.Refute("plays on", v.Faults(2));
}

void CheckAttributes(Validation& v) {
    for (const HostApi::AttributeInfo& attribute : HostApi::Attributes(v.bench.Get())) {
        if (attribute.flags & (ATTR_GET_OPAQUE | ATTR_GET_OPAQUE_USER)) continue;
        const std::string name = attribute.name->s_name;
        v.report.Refute(name + " answers", AnswerFault(v.bench, attribute));
        v.report.Refute(name + " answers into", BufferFault(v.bench, attribute.name));
    }
    for (const HostApi::AttributeInfo& attribute : v.bench.Settable()) {
        const std::string name = attribute.name->s_name;
        const auto now = HostApi::AttributeValue(v.bench.Get(), name);
        if (now.empty()) continue;
        const bool isNumber = now[0].a_type == A_LONG || now[0].a_type == A_FLOAT;
        if (isNumber && Property(attribute, "enumvals").empty())
            v.report.Refute(name + " keeps to its range", ClipFault(v.bench, attribute));
        for (int k = 0; k < 4; ++k) {
            v.bench.Set(name, LegalValues(attribute, now, v.random));
            const Values once = v.bench.Read();
            v.bench.Take();
            v.bench.Set(name, once.at(name));
            // Words that the object prints but does not accept are refused; then all must be
            // unchanged.
            const std::string other = Difference(once, v.bench.Read());
            if (k == 3 || !other.empty()) v.report.Refute(name + " is what it says", other);
            if (!other.empty()) break;
        }
        v.bench.Set(name, now);
        const Values before = v.bench.Read();
        v.bench.Set(name, {});
        v.bench.Set(name, now);
        v.report.Refute(name + " without values", Difference(before, v.bench.Read()));
    }
    v.report.Refute("plays on", v.Faults(20));
}

void CheckMessages(Validation& v) {
    for (const std::string& name : v.bench.Messages()) {
        v.bench.Send(v.Sensible(name));
        std::string why = v.Faults(3);
        for (int k = 0; k < 60 && why.empty(); ++k) {
            std::vector<t_atom> atoms = AnyAtoms(v.random);
            std::string bytes(v.random.Below(300), '/');
            for (char& byte : bytes) byte = static_cast<char>(v.random.Below(256));
            if (name == "FullPacket") PointTo(bytes, atoms);
            v.bench.Send(name, atoms);
            why = v.Faults(1);
            if (!why.empty()) why += " after " + HostApi::AtomText(atoms).substr(0, 200);
        }
        v.bench.Send("enable 1");
        v.report.Refute(name, why);
    }
    v.bench.Take();
    v.bench.Send("no-such-message 1 2 3");
    v.report.Check(v.bench.TakeFirst("error: ") == "error: doesn't understand \"no-such-message\"",
                   "an unknown message is refused");
    v.bench.Remake();
}

void CheckChain(Validation& v) {
    Chain& chain = v.bench.TheChain();
    for (const double rate : {8000.0, 44100.0, 48000.0, 96000.0, 192000.0, 384000.0}) {
        chain.SetRate(rate);
        v.report.Refute(std::to_string(static_cast<int>(rate)) + " Hz", v.Faults(20));
    }
    for (const unsigned frames : {1U, 2U, 16U, 512U, 4096U, 64U}) {
        chain.SetVector(frames);
        v.report.Refute("vectors of " + std::to_string(frames), v.Faults(6));
    }
    chain.SetRate(48000);
    const std::size_t numInlets = v.bench.TheObject().NumSignalInlets();
    for (std::size_t k = 0; k < std::min<std::size_t>(numInlets, 8); ++k) {
        chain.SetConnected(k, false);
        const std::string cut = v.Faults(4);
        chain.SetConnected(k, true);
        v.report.Refute("inlet " + std::to_string(k + 1) + " is cut and connected",
                        cut.empty() ? v.Faults(4) : cut);
    }
    chain.Stop();
    v.Walk();
    chain.Start();
    v.report.Refute("attributes are set while audio is off", v.Faults(10));
    v.bench.Send("enable 0");
    v.report.Check(v.bench.Play(2).peak == 0, "silent while its patcher is muted");
    v.bench.Send("enable 1");
    v.bench.Remake();
    v.report.Refute("plays on", v.Faults(10));
}

}  // namespace Quilo::Host
