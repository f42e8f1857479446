// SPDX-License-Identifier: MIT
// The class quilo.pan~ for Max: entry, creation, freeing, audio. QuiloPanMessages.cpp and
// QuiloPanAttributes.cpp hold the tables of its messages and attributes.

#include "QuiloPanAttributes.h"
#include "QuiloPanDocumentation.h"
#include "QuiloPanMessages.h"
#include "QuiloPanObject.h"
#include "max/VelkMaxDictionaries.h"
#include "max/VelkMaxFiles.h"
#include "max/VelkMaxStandardMessages.h"
#include "max/VelkMaxStateTexts.h"
#include "max/VelkMaxSymbols.h"

#include "ext.h"
#include "z_dsp.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>

using Quilo::PanObject;
using Quilo::PanRecord;
using VelkMax::Guarded;

namespace {

constexpr char kClassName[] = "quilo.pan~";

t_class* panClass = nullptr;

PanRecord& RecordOf(void* x) { return *static_cast<PanRecord*>(x); }

// ---- Creation

/// The attributes that the arguments of a box without a name set, in this order.
constexpr const char* kCreationArguments[] = {"numinputs", "numoutputs", "type", "subtype"};

/// Configures a new object from its box text. When a step fails, an error is posted and the later
/// steps are still taken; the object then is silent or keeps default values.
class Creation {
public:
    Creation(PanObject& object, std::span<t_atom> atoms)
        : object_(object),
          x_(MaxObjectOf(object)),
          atoms_(atoms) {}

    void Run() {
        constexpr void (Creation::*kSteps[])() = {
            &Creation::SetPlainArguments, &Creation::ReadAttributes, &Creation::SetAttributes,
            &Creation::BuildEngine,       &Creation::AddAttributes,  &Creation::SetAddedAttributes,
            &Creation::ReportUnknown,     &Creation::PlaceSpeakers,  &Creation::PlaceSources,
        };
        for (const auto step : kSteps) {
            Guarded(
                object_, &object_error, [&] { (this->*step)(); },
                [this](const char*) { VelkMax::Error(x_, VelkMax::kNoMemory); });
        }
    }

private:
    std::size_t NumPlain() const {
        return static_cast<std::size_t>(
            attr_args_offset(static_cast<short>(atoms_.size()), atoms_.data()));
    }
    void SetPlainArguments() {
        const std::size_t count = std::min(NumPlain(), std::size(kCreationArguments));
        for (std::size_t index = 0; index < count; ++index) {
            if (atom_gettype(&atoms_[index]) == A_OBJ)
                continue;  // a dictionary is given in its place
            object_attr_setvalueof(x_, gensym(kCreationArguments[index]), 1, &atoms_[index]);
        }
    }
    void ReadAttributes() {
        arguments_.emplace(atoms_.subspan(NumPlain()));
        dictionary_.emplace(x_, atoms_, kCreationArguments);
    }
    /// @return false when there is a dictionary that cannot be read
    bool SetKnown() {
        if (arguments_) arguments_->SetKnown(x_);
        return !dictionary_ || dictionary_->SetKnown();
    }
    void SetAttributes() { SetKnown(); }
    void BuildEngine() {
        object_.BuildEngine();
        if (object_.Engine() == nullptr) VelkMax::Error(x_, Quilo::kNotCreated);
    }
    void AddAttributes() { Quilo::AddPanInstanceAttributes(object_); }
    void SetAddedAttributes() {
        if (!SetKnown()) VelkMax::Error(x_, Quilo::kNotCreated);
    }
    void ReportUnknown() {
        if (arguments_) arguments_->ReportUnknown(x_);
        if (dictionary_) dictionary_->ReportUnknown();
    }
    void PlaceSpeakers() { object_.PlaceSpeakers(); }
    void PlaceSources() { object_.PlaceSources(); }

    PanObject& object_;
    t_object* x_;
    std::span<t_atom> atoms_;
    std::optional<VelkMax::AttributeArguments> arguments_;
    std::optional<VelkMax::CreationDictionary> dictionary_;
};

/// Makes inlets and outlets, and gives the engine the present audio settings.
void Connect(PanRecord& record) {
    PanObject& object = *record.object;
    t_object* const x = MaxObjectOf(object);
    // Outlets are made from right to left: the dump outlet is the rightmost.
    object_obex_store(x, VelkMax::Symbols().dumpout,
                      static_cast<t_object*>(outlet_new(x, nullptr)));
    Guarded(object, &object_error, [&] {
        if (object.Engine() == nullptr) return;
        object.Engine()->SetSampleRate(sys_getsr());
        object.Engine()->SetBufferSize(static_cast<unsigned>(std::max(sys_getblksize(), 0)));
    });
    z_dsp_setup(&record.header, object.NumInputs());
    for (max_long output = 0; output < object.NumOutputs(); ++output) outlet_new(x, "signal");
    record.header.z_misc = static_cast<short>(record.header.z_misc | Z_NO_INPLACE);
}

void* quilo_pan_new(t_symbol*, max_long argc, t_atom* argv) noexcept {
    void* const x = object_alloc(panClass);
    if (x == nullptr) {
        VelkMax::Error(static_cast<t_object*>(nullptr), VelkMax::kNoMemory);
        return nullptr;
    }
    PanRecord& record = RecordOf(x);
    t_object* const object = &record.header.z_ob;
    Guarded(
        object, &object_error,
        [&] { record.object = std::make_unique<PanObject>(record.header).release(); },
        [&](const char*) { VelkMax::Error(object, VelkMax::kNoMemory); });
    if (record.object == nullptr) {
        z_dsp_setup(&record.header, 0);  // object_free calls z_dsp_free, which needs it
        object_free(x);
        return nullptr;
    }
    // Max's functions for arguments count atoms with 16 bits.
    const auto count = static_cast<std::size_t>(std::clamp<max_long>(argc, 0, 32767));
    Creation(*record.object, {argv, count}).Run();
    Connect(record);
    Guarded(*record.object, &object_error, [&] { record.object->Complete(); });
    return x;
}

void quilo_pan_free(void* x) noexcept {
    PanRecord& record = RecordOf(x);
    z_dsp_free(&record.header);  // first, so that audio no longer uses the object
    if (record.object == nullptr) return;
    record.object->TheDoor().Close();  // before anything that its callers use is deleted
    delete record.object;
    record.object = nullptr;
}

// ---- Audio

void quilo_pan_perform64(t_object* x,
                         t_object*,
                         double** ins,
                         max_long numins,
                         double** outs,
                         max_long numouts,
                         max_long sampleframes,
                         max_long,
                         void*) noexcept {
    PanObject::Of(x).Render(outs, numouts, ins, numins, sampleframes);
}

void quilo_pan_dsp64(void* x,
                     t_object* dsp64,
                     short* count,
                     double samplerate,
                     max_long maxvectorsize,
                     max_long) noexcept {
    PanObject& object = PanObject::Of(x);
    // Not through the door: filters may have to be computed anew, and nobody waits for them. The
    // engine has a lock of its own.
    Guarded(object, &object_bug, [&] {
        Quilo::Pan* const engine = object.Engine();
        if (engine == nullptr) return;
        engine->SetSampleRate(static_cast<float>(samplerate));
        engine->SetBufferSize(static_cast<unsigned>(std::max<max_long>(maxvectorsize, 0)));
        const std::span inlets(count, engine->NumInputs());
        engine->SetConnections(inlets, {count + inlets.size(), engine->NumOutputs()});
    });
    dsp_add64(dsp64, MaxObjectOf(object), &quilo_pan_perform64, 0, nullptr);
}

// ---- Help

void quilo_pan_assist(void* x, void*, max_long io, max_long index, char* text) noexcept {
    PanObject& object = PanObject::Of(x);
    text[0] = '\0';
    Guarded(object, &object_error, [&] {
        if (object.Engine() == nullptr || index < 0) return;
        const auto channel = static_cast<unsigned>(index);
        const std::string label = io == ASSIST_INLET ? object.Engine()->InputLabel(channel)
                                                     : object.Engine()->OutputLabel(channel);
        text[label.copy(text, ASSIST_MAX_STRING_LEN - 1)] = '\0';
    });
}

// ---- Standalone programs

/// Max makes a standalone program of the patcher, which is to hold the filters that were loaded.
void quilo_pan_fileusage(void* x, void* builder) noexcept {
    PanObject& object = PanObject::Of(x);
    Guarded(object, &object_error, [&] {
        for (const t_symbol* file : object.FilterFiles()) {
            if (const auto place = VelkMax::LocateFile(file->s_name)) {
                VelkMax::CarryFile(builder, *place);
            } else {
                VelkMax::Error(object, VelkMax::kNotLocated, file->s_name);
            }
        }
    });
}

// ---- Registration

void AddHostMethods(t_class* type) {
    using VelkMax::AsMethod;
    struct Row {
        const char* name;
        method function;
    };
    const Row rows[] = {
        {"assist", AsMethod(&quilo_pan_assist)},
        {"dsp64", AsMethod(&quilo_pan_dsp64)},
        {"fileusage", AsMethod(&quilo_pan_fileusage)},
    };
    for (const Row& row : rows) {
        if (class_addmethod(type, row.function, row.name, A_CANT, 0) == MAX_ERR_NONE) continue;
        VelkMax::Error(static_cast<t_object*>(nullptr), VelkMax::kMethodNotAdded, row.name);
    }
}

}  // namespace

/// Called once by Max when it loads the module; also exported as `main`, which older hosts look
/// for.
extern "C" MAX_EXPORTED void ext_main(void*) {
    panClass =
        class_new(kClassName, VelkMax::AsMethod(&quilo_pan_new), VelkMax::AsMethod(&quilo_pan_free),
                  sizeof(PanRecord), nullptr, A_GIMME, 0);
    Guarded(nullptr, &object_error, [] {
        VelkMax::AddClassDocumentation(panClass, Quilo::External::PanTilda::Documentation());
        AddHostMethods(panClass);
        for (const auto rows : {VelkMax::StandardMessages<PanObject>(), Quilo::PanMessages()}) {
            VelkMax::AddMessages(panClass, rows);
            VelkMax::DocumentMessages(panClass, rows);
        }
        VelkMax::AddClassAttributes(panClass, Quilo::PanClassAttributes());
    });
    class_dspinit(panClass);
    class_dumpout_wrap(panClass);
    class_register(gensym("box"), panClass);
}
