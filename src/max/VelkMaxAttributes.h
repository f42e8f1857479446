// SPDX-License-Identifier: MIT
// Attributes as rows of a table: one row holds an attribute's name, how it is shown, its range, and
// the members of the object that read and set it.
//
// A range is written once and holds for the inspector, for Max's clip filter and for the setter.
#pragma once

#include "max/VelkMaxHandlers.h"

#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

namespace VelkMax {

/// The allowed values of a numeric attribute; an infinite end means no limit.
struct Range {
    double min = -std::numeric_limits<double>::infinity();
    double max = std::numeric_limits<double>::infinity();

    constexpr double Clip(double value) const { return std::min(std::max(value, min), max); }
    bool HasMin() const { return std::isfinite(min); }
    bool HasMax() const { return std::isfinite(max); }
};

using AttributeGetter = t_max_err (*)(void*, void*, max_long*, t_atom**);
using AttributeSetter = t_max_err (*)(void*, void*, max_long, t_atom*);

/// How a row reads and sets the attribute; made by Bind.
struct AttributeAccess {
    AttributeGetter get = nullptr;
    AttributeSetter set = nullptr;
    Range range;
};

/// One attribute. A null text means that the attribute does not have this property.
struct AttributeRow {
    const char* name = nullptr;
    const char* type = nullptr;  // "long", "float32" or "symbol"
    max_long size = 1;           // largest number of values
    const char* label = nullptr;
    const char* style = nullptr;         // "onoff", "enum", ...
    std::string (*choices)() = nullptr;  // keywords of an enum, separated by blanks
    const char* defaultValue = nullptr;  // as PropertyText writes it
    const char* units = nullptr;
    const char* category = nullptr;
    const char* order = nullptr;  // place in the inspector, from "1"
    bool isSaved = false;         // in the patcher file
    AttributeAccess access;
    const char* description = nullptr;
    const char* alias = nullptr;  // the attribute of which this one is another name
};

/// Adds the rows to a class, properties and clip filters included.
void AddClassAttributes(t_class* type, std::span<const AttributeRow> rows);

/// Adds one row to an object that exists. Without a default of its own, the row's default is the
/// value that the attribute has at this moment.
void AddInstanceAttribute(t_object* object, const AttributeRow& row);

/// How the default, minimum and maximum of a numeric attribute are written: integers as %d, floats
/// as %.2f unless that reads back as another 32-bit value: then with as many digits as that takes.
std::string PropertyText(const char* type, double value);

/// Name of an attribute object.
t_symbol* AttributeName(void* attribute);

/// The `@name values...` part of a box text. Attributes of the instance do not exist before the
/// engine does, so the arguments are kept and set in two passes.
/// Pattern: SetKnown, add instance attributes, SetKnown, ReportUnknown.
class AttributeArguments {
public:
    /// @param atoms  atoms before the first "@" are ignored. They must outlive this object and may
    /// be changed by the attributes' filters.
    explicit AttributeArguments(std::span<t_atom> atoms);

    /// Sets the attributes that the object has and that were not set yet, in the order of the text.
    /// A name without values sets nothing.
    void SetKnown(t_object* object);
    /// Posts one error for each name that was no attribute in any pass.
    void ReportUnknown(t_object* object) const;

private:
    struct Argument {
        t_symbol* name;  // without the "@"
        std::span<t_atom> values;
        bool isDone = false;
    };
    std::vector<Argument> arguments_;
};

// ---- Accessors

/// Converts atoms to the parameter type of a setter, clipped to the range. Where numbers are
/// needed, Read returns false without calling `use` when an atom is a word or not finite.
template <class Value>
struct ValueReader;

/// Writes a getter's answer.  @return as ReserveAnswer
t_max_err WriteAnswer(max_long* argc, t_atom** argv, max_long value);
t_max_err WriteAnswer(max_long* argc, t_atom** argv, float value);
t_max_err WriteAnswer(max_long* argc, t_atom** argv, t_symbol* value);
t_max_err WriteAnswer(max_long* argc, t_atom** argv, std::span<const float> values);

template <class Object, class Get>
t_max_err AnswerGetter(
    void* record, void* attribute, max_long* argc, t_atom** argv, const Get& get) noexcept {
    const Object& object = Object::Of(record);
    t_max_err error = MAX_ERR_GENERIC;  // where the audio thread would have to wait
    const bool isOver = Guarded(
        object, &object_error,
        [&] {
            const Door::Visit inside(object.TheDoor(), Door::Patience::WaitsOutsideAudio);
            if (inside) error = WriteAnswer(argc, argv, get(object));
        },
        [](const char*) {});
    if (!isOver) error = MAX_ERR_OUT_OF_MEM;
    if (error == MAX_ERR_OUT_OF_MEM) {
        Error(object, kNoMemoryForGetter, AttributeName(attribute)->s_name);
    }
    return error;
}

template <auto Get>
struct GetterOf;

template <class Object, class Value, Value (Object::*Get)() const>
struct GetterOf<Get> {
    static t_max_err Call(void* record, void* attribute, max_long* argc, t_atom** argv) noexcept {
        return AnswerGetter<Object>(record, attribute, argc, argv,
                                    [](const Object& object) { return (object.*Get)(); });
    }
};

template <class Object, class Value, Value (*Get)(const Object&)>
struct GetterOf<Get> {
    static t_max_err Call(void* record, void* attribute, max_long* argc, t_atom** argv) noexcept {
        return AnswerGetter<Object>(record, attribute, argc, argv, Get);
    }
};

/// Who tells the clients that an attribute was set through Max.
enum class Announced : std::uint8_t { ByMax, ByUsToo };

/// Calls a setter: Enter passes the atoms to the door as a letter, Run converts them inside it.
template <class Object, class Value, Range kRange, Announced kAnnounced>
struct SetterCall {
    static t_max_err Enter(
        void* record, Letter::Run run, void* attribute, max_long argc, t_atom* argv) noexcept {
        constexpr bool kIsShort = std::is_arithmetic_v<Value>;
        if (argc < 1) return MAX_ERR_NONE;
        Receive<Object>(record, {run, kIsShort ? Letter::Pace::Prompt : Letter::Pace::Calm,
                                 AttributeName(attribute), Atoms(argc, argv)});
        return MAX_ERR_NONE;
    }

    template <class Set>
    static void Run(void* record, t_symbol* name, Atoms atoms, const Set& set) noexcept {
        Object& object = Object::Of(record);
        Guarded(
            object, &object_error,
            [&] {
                const bool isRead = ValueReader<std::remove_cvref_t<Value>>::Read(
                    atoms, kRange, [&](const auto& value) { set(object, value); });
                if (!isRead) Error(object, kUnreadableValue, name->s_name);
            },
            [&](const char* what) { PostOutOfMemory(object, what); });
        // Also after an error, so that an inspector shows the unchanged value again.
        if (kAnnounced == Announced::ByUsToo) return object.TheDoor().Changed(name);
        object.TheDoor().WasSet(name);
    }
};

template <auto Set, Range kRange, Announced kAnnounced>
struct SetterOf;

template <class Object, class Value, void (Object::*Set)(Value), Range kRange, Announced kAnnounced>
struct SetterOf<Set, kRange, kAnnounced> {
    using SetCall = SetterCall<Object, Value, kRange, kAnnounced>;
    static t_max_err Call(void* record, void* attribute, max_long argc, t_atom* argv) noexcept {
        return SetCall::Enter(record, &Run, attribute, argc, argv);
    }
    static void Run(void* record, t_symbol* name, Atoms atoms) noexcept {
        SetCall::Run(record, name, atoms,
                     [](Object& object, const auto& value) { (object.*Set)(value); });
    }
};

template <class Object,
          class Value,
          void (*Set)(Object&, Value),
          Range kRange,
          Announced kAnnounced>
struct SetterOf<Set, kRange, kAnnounced> {
    using SetCall = SetterCall<Object, Value, kRange, kAnnounced>;
    static t_max_err Call(void* record, void* attribute, max_long argc, t_atom* argv) noexcept {
        return SetCall::Enter(record, &Run, attribute, argc, argv);
    }
    static void Run(void* record, t_symbol* name, Atoms atoms) noexcept {
        SetCall::Run(record, name, atoms, Set);
    }
};

template <>
struct ValueReader<max_long> {
    template <class Use>
    static bool Read(Atoms atoms, Range range, Use&& use) {
        if (!atoms.IsNumber(0)) return false;
        const auto value = static_cast<double>(SaturatedInt(atoms.Long(0)));
        use(static_cast<max_long>(range.Clip(value)));
        return true;
    }
};
template <>
struct ValueReader<float> {
    template <class Use>
    static bool Read(Atoms atoms, Range range, Use&& use) {
        if (!atoms.IsNumber(0) || !std::isfinite(atoms.Float(0))) return false;
        use(static_cast<float>(range.Clip(atoms.Float(0))));
        return true;
    }
};
/// A word; a number becomes its text. The text is not interned as a symbol.
template <>
struct ValueReader<std::string_view> {
    template <class Use>
    static bool Read(Atoms atoms, Range, Use&& use) {
        if (atoms.IsSymbol(0)) {
            use(std::string_view(atoms.Symbol(0)->s_name));
        } else {
            use(std::string_view(atoms.First(1).Text()));
        }
        return true;
    }
};
template <>
struct ValueReader<std::vector<float>> {
    template <class Use>
    static bool Read(Atoms atoms, Range range, Use&& use) {
        std::vector<float> values(atoms.Size());
        for (std::size_t index = 0; index < values.size(); ++index) {
            if (!atoms.IsNumber(index) || !std::isfinite(atoms.Float(index))) return false;
            values[index] = static_cast<float>(range.Clip(atoms.Float(index)));
        }
        use(values);
        return true;
    }
};
/// The unconverted atoms, for setters that check them themselves.
template <>
struct ValueReader<Atoms> {
    template <class Use>
    static bool Read(Atoms atoms, Range, Use&& use) {
        use(atoms);
        return true;
    }
};

/// Accessors from two members, `Value Get() const` and `void Set(Value)`, or from two functions,
/// `Value Get(const Object&)` and `void Set(Object&, Value)`. Value is max_long, float,
/// std::span<const float> or t_symbol* for a getter, max_long, float, std::string_view,
/// std::vector<float> or Atoms for a setter.
template <auto Get, auto Set, Range kRange = Range{}, Announced kAnnounced = Announced::ByMax>
// NOLINTNEXTLINE(readability-identifier-naming): reads as a function in the tables
inline constexpr AttributeAccess Bind{&GetterOf<Get>::Call,
                                      &SetterOf<Set, kRange, kAnnounced>::Call, kRange};

/// The same, but the change is announced through the door even when Max itself set the attribute.
template <auto Get, auto Set, Range kRange = Range{}>
// NOLINTNEXTLINE(readability-identifier-naming): as above
inline constexpr AttributeAccess BindAnnounced = Bind<Get, Set, kRange, Announced::ByUsToo>;

}  // namespace VelkMax
