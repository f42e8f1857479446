// SPDX-License-Identifier: MIT
// Levels 6 to 8: stored states restored to another object, threads, changing attributes while audio
// runs.
#include "HostOutputFile.h"
#include "validator/HostValidator.h"

#include <chrono>
#include <filesystem>

namespace Quilo::Host {

namespace {

constexpr unsigned kSettled = 400;  // number of vectors after which every glide has ended

std::filesystem::path TemporaryFile() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return std::filesystem::temp_directory_path() /
           ("quilo-validate-" + std::to_string(now) + ".json");
}

std::string Utf8(const std::filesystem::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

/// The state of one object in the four forms in which patchers store it.
class Saved {
public:
    explicit Saved(Bench& bench) : bench_(bench), file_(TemporaryFile()) {
        max_long argc = 0;
        t_atom* argv = nullptr;
        if (object_getvalueof(bench.Get(), &argc, &argv) == MAX_ERR_NONE && argv)
            pattr_.assign(argv, argv + argc);
        sysmem_freeptr(argv);
        if (bench.Understands("preset")) preset_ = HostApi::StorePreset(bench.Get());
        HostApi::AnswerDialog(HostApi::Dialog::SaveAs, file_);
        if (bench.Understands("exportdict")) bench.Send("exportdict");
        if (bench.Understands("dumpdict")) SaveDictionary();
    }
    ~Saved() {
        std::error_code error;
        std::filesystem::remove(file_, error);
        if (dictionary_) object_free(dictionary_);
    }
    Saved(const Saved&) = delete;
    Saved& operator=(const Saved&) = delete;

    void RestorePattr() {
        object_setvalueof(bench_.Get(), static_cast<max_long>(pattr_.size()), pattr_.data());
    }
    void RestorePreset() {
        for (const HostApi::PresetRecord& record : preset_)
            if (record.size() >= 3)
                bench_.Send(atom_getsym(&record[2])->s_name, std::span(record).subspan(3));
    }
    void RestoreDictionary() {
        t_atom name{};
        atom_setsym(&name, gensym("validated"));
        bench_.Send("dictionary", {&name, 1});
    }
    void RestoreFile() {
        t_atom name{};
        atom_setsym(&name, gensym(Utf8(file_).c_str()));
        bench_.Send("readdict", {&name, 1});
    }

private:
    void SaveDictionary() {
        HostApi::SetOutletSink([this](const HostApi::OutletMessage& message) {
            if (message.selector != gensym("dictionary") || message.atoms.empty()) return;
            t_symbol* name = gensym("validated");
            t_dictionary* const copy =
                dictobj_findregistered_clone(atom_getsym(message.atoms.data()));
            if (copy) dictionary_ = dictobj_register(copy, &name);
        });
        bench_.Send("dumpdict");
        bench_.ListenToOutlets();
    }

    Bench& bench_;
    std::filesystem::path file_;
    std::vector<t_atom> pattr_;
    std::vector<HostApi::PresetRecord> preset_;
    t_dictionary* dictionary_ = nullptr;
};

struct FormRow {
    const char* name;
    const char* saves;
    const char* restores;
    void (Saved::*restore)();
};

constexpr FormRow kForms[] = {
    {"pattr", "getvalueof", "setvalueof", &Saved::RestorePattr},
    {"preset", "preset", "recallpreset", &Saved::RestorePreset},
    {"dictionary", "dumpdict", "dictionary", &Saved::RestoreDictionary},
    {"JSON file", "exportdict", "readdict", &Saved::RestoreFile},
};

}  // namespace

void CheckState(Validation& v) {
    constexpr int kRounds = 6;
    for (const FormRow& form : kForms) {
        if (!v.bench.Understands(form.saves) || !v.bench.Understands(form.restores)) {
            v.report.Skip(form.name, "the object has no such message");
            continue;
        }
        std::string why;
        for (int round = 0; round < kRounds && why.empty(); ++round) {
            v.bench.Remake();
            if (round > 0) v.Walk();
            const Values values = v.bench.Read();
            v.bench.Take();
            Saved saved(v.bench);
            v.bench.Play(kSettled, 5);
            const Sound sound = v.bench.Play(20, 6);
            v.bench.Remake();
            v.bench.Take();
            (saved.*form.restore)();
            why = Difference(values, v.bench.Read());
            v.bench.Play(kSettled, 5);
            // Glides that took different paths may end with slightly different samples.
            if (why.empty()) why = Difference(sound, v.bench.Play(20, 6), 1e-4);
        }
        v.report.Refute(std::string(form.name) + ", " + std::to_string(kRounds) + " states", why);
    }
    v.bench.Remake();
    v.report.Refute("plays on", v.Faults(10));
}

void CheckThreads(Validation& v) {
    constexpr HostApi::ThreadKind kKinds[] = {
        HostApi::ThreadKind::Main, HostApi::ThreadKind::Scheduler, HostApi::ThreadKind::Audio};
    const Random start = v.random;
    Values expected;
    for (const HostApi::ThreadKind kind : kKinds) {
        v.random = start;
        v.bench.Remake();
        v.bench.Take();
        for (int k = 0; k < 30; ++k) {
            {
                const HostApi::ThreadScope elsewhere(kind);
                for (const char* message : {"source", "speakers", "clear"}) {
                    const auto words = HostApi::ParseAtoms(v.Sensible(message));
                    HostApi::DeliverMessage(v.bench.Get(), 0, atom_getsym(words.data()),
                                            std::span(words).subspan(1));
                }
            }
            RunDueWork();  // a flood in the audio thread would lose messages
        }
        {
            const HostApi::ThreadScope elsewhere(kind);
            v.Walk();
        }
        const std::string bug = v.bench.TakeMisuse();
        RunDueWork();
        const Values reached = v.bench.Read();
        if (kind == HostApi::ThreadKind::Main) expected = reached;
        const char* const name = kind == HostApi::ThreadKind::Main        ? "main"
                                 : kind == HostApi::ThreadKind::Scheduler ? "scheduler"
                                                                          : "audio";
        v.report.Refute(std::string("messages of the ") + name + " thread",
                        bug.empty() ? Difference(expected, reached) : bug);
        v.report.Refute("plays on", v.Faults(10));
    }
    for (const char* message : {"read", "load", "implementation", "dumpdict", "exportdict"}) {
        const HostApi::ThreadScope elsewhere(HostApi::ThreadKind::Scheduler);
        if (v.bench.Understands(message))
            HostApi::DeliverMessage(v.bench.Get(), 0, gensym(message), {});
    }
    v.bench.Remake();  // while deferred work is queued
    RunDueWork();
    v.report.Refute("is freed while its work waits", v.Faults(4));
}

void CheckWalk(Validation& v) {
    constexpr int kSteps = 300;
    std::string why;
    for (int step = 0; step < kSteps && why.empty(); ++step) {
        v.Walk();
        why = v.Faults(1 + static_cast<unsigned>(v.random.Below(6)));
    }
    v.report.Refute(std::to_string(kSteps) + " steps of every attribute", why);
    v.bench.Remake();
    v.report.Refute("plays on", v.Faults(10));
}

}  // namespace Quilo::Host
