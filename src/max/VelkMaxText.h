// SPDX-License-Identifier: MIT
// A console text together with the types of the values that it shows.
//
// The texts are promises to users and to their patches. They stand in tables: VelkMaxTexts.h and
// VelkMaxStateTexts.h for all classes, one file for each class. A wrong argument does not compile.
#pragma once

#include "ext.h"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

namespace VelkMax {

/// The printf conversion for a type of argument. There are no others, because Max's C library
/// formats the text: these have the same meaning and size in it and in the module.
template <class Argument>
inline constexpr std::string_view kConversion{};
template <>
inline constexpr std::string_view kConversion<int> = "%d";
template <>
inline constexpr std::string_view kConversion<long> = "%ld";
template <>
inline constexpr std::string_view kConversion<const char*> = "%s";

/// Not constexpr on purpose: calling it at compile time is the compile error, which shows its name.
inline void TheConversionsOfATextDifferFromItsArguments() {}

/// One text with one conversion for each of `Arguments`, in their order.
template <class... Arguments>
class Text {
public:
    explicit consteval Text(const char* format) : format_(format) {
        std::string_view rest = format;
        const bool fits = (Skip(rest, kConversion<Arguments>) && ...);
        if (!fits || rest.find('%') != rest.npos) TheConversionsOfATextDifferFromItsArguments();
    }

    constexpr const char* Format() const noexcept { return format_; }

private:
    /// Removes all of `rest` up to and with its first conversion; false when there is none or
    /// another.
    static consteval bool Skip(std::string_view& rest, std::string_view conversion) {
        const auto at = rest.find('%');
        if (at == rest.npos || conversion.empty() || !rest.substr(at).starts_with(conversion)) {
            return false;
        }
        rest.remove_prefix(at + conversion.size());
        return true;
    }

    const char* format_;
};

/// The object whose name the console row shows; null for a row without a name.
inline t_object* MaxObjectOf(t_object* object) noexcept { return object; }

using ConsoleRow = void (*)(t_object* object, const char* format, ...);

template <class... Arguments>
void PostRow(ConsoleRow row,
             t_object* object,
             const Text<Arguments...>& text,
             std::type_identity_t<Arguments>... arguments) noexcept {
    if constexpr (sizeof...(Arguments) == 0) {
        row(object, "%s", text.Format());
    } else {
        row(object, text.Format(), arguments...);
    }
}

/// Characters, with the final zero, of the longest line that can be kept without allocating memory.
inline constexpr std::size_t kKeptLineSize = 256;

/// Formats the text and keeps it in the door to be posted later. A longer line than kKeptLineSize
/// is cut in the audio thread, and where memory is short.
template <class TheDoor, class... Arguments>
void Keep(TheDoor& door,
          ConsoleRow row,
          const Text<Arguments...>& text,
          std::type_identity_t<Arguments>... arguments) noexcept {
    if constexpr (sizeof...(Arguments) == 0) {
        door.KeepLine(row, text.Format());
    } else {
        char head[kKeptLineSize];
        const int length = std::snprintf(head, sizeof head, text.Format(), arguments...);
        if (length < 0) return;
        if (static_cast<std::size_t>(length) < sizeof head || !door.KeepsLongLines()) {
            return door.KeepLine(row, head);
        }
        try {
            std::string whole(static_cast<std::size_t>(length), '\0');
            std::snprintf(whole.data(), whole.size() + 1, text.Format(), arguments...);
            door.KeepLine(row, whole);
        } catch (const std::bad_alloc&) {
            door.KeepLine(row, head);
        }
    }
}

/// Posts at once, except that an object with a door keeps lines from inside it or from the audio
/// thread.
template <class Object, class... Arguments>
void Say(ConsoleRow row,
         const Object& object,
         const Text<Arguments...>& text,
         std::type_identity_t<Arguments>... arguments) noexcept {
    if constexpr (requires { object.TheDoor().KeepsLines(); }) {
        if (object.TheDoor().KeepsLines()) {
            return Keep(object.TheDoor(), row, text, arguments...);
        }
    }
    PostRow(row, MaxObjectOf(object), text, arguments...);
}

/// `object` is a t_object* or whatever has a MaxObjectOf beside it.
/// Thread: any for an object with a door, else main or scheduler.  Throws: nothing.
template <class Object, class... Arguments>
void Post(const Object& object,
          const Text<Arguments...>& text,
          std::type_identity_t<Arguments>... arguments) noexcept {
    Say(&object_post, object, text, arguments...);
}
/// While an instance lives, the main thread posts no warnings: it only looks whether values serve,
/// and whoever uses them later warns of what is left over. No thread_local: the first look of a
/// thread at one may take memory on Windows, and the audio thread warns, too.
/// Thread: main.
class WithoutWarnings {
public:
    WithoutWarnings() noexcept : before_(isActive_.exchange(true)) {}
    ~WithoutWarnings() { isActive_ = before_; }
    WithoutWarnings(const WithoutWarnings&) = delete;
    WithoutWarnings& operator=(const WithoutWarnings&) = delete;

    /// Thread: any.
    static bool IsActive() noexcept { return isActive_ && systhread_ismainthread() != 0; }

private:
    static inline std::atomic<bool> isActive_ = false;
    const bool before_;
};

template <class Object, class... Arguments>
void Warn(const Object& object,
          const Text<Arguments...>& text,
          std::type_identity_t<Arguments>... arguments) noexcept {
    if (!WithoutWarnings::IsActive()) Say(&object_warn, object, text, arguments...);
}
template <class Object, class... Arguments>
void Error(const Object& object,
           const Text<Arguments...>& text,
           std::type_identity_t<Arguments>... arguments) noexcept {
    Say(&object_error, object, text, arguments...);
}
template <class Object, class... Arguments>
void Bug(const Object& object,
         const Text<Arguments...>& text,
         std::type_identity_t<Arguments>... arguments) noexcept {
    Say(&object_bug, object, text, arguments...);
}

}  // namespace VelkMax
