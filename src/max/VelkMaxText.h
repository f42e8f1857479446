// SPDX-License-Identifier: MIT
// A console text as a typed value: what it says, and what has to be filled in.
//
// Texts are promises to users and to their patches. They stand in tables (VelkMaxTexts.h for those
// every object shares, one file for each object), and a wrong argument does not compile.
#pragma once

#include "ext.h"

#include <cstddef>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

namespace VelkMax {

/// How an argument stands in a text. They mean the same to us and to every C library that may
/// format them, which is why there are no others: a long of the API has its size in the module and
/// in Max.
template <class Argument>
inline constexpr std::string_view kConversion{};
template <>
inline constexpr std::string_view kConversion<int> = "%d";
template <>
inline constexpr std::string_view kConversion<long> = "%ld";
template <>
inline constexpr std::string_view kConversion<const char*> = "%s";

/// Called while compiling where a text and its arguments differ; deliberately not constexpr.
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
    /// Cuts `rest` behind its first conversion; false when that is another one or there is none.
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

/// The object whose name a console row bears; null for a row without.
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

/// The longest line that waits for a thread that may post it; what is longer is cut.
inline constexpr std::size_t kKeptLineSize = 256;

/// Keeps what the text becomes with its arguments; without memory, as much as fits a kept line.
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

/// As PostRow, except that an object with a door keeps what is said inside or by the audio thread.
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
template <class Object, class... Arguments>
void Warn(const Object& object,
          const Text<Arguments...>& text,
          std::type_identity_t<Arguments>... arguments) noexcept {
    Say(&object_warn, object, text, arguments...);
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
