// SPDX-License-Identifier: MIT
#include "ApiJsonText.h"

#include <array>
#include <charconv>
#include <cmath>

namespace HostApi {
namespace {

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        switch (c) {
            case '"': quoted += "\\\""; break;
            case '\\': quoted += "\\\\"; break;
            case '\n': quoted += "\\n"; break;
            case '\r': quoted += "\\r"; break;
            case '\t': quoted += "\\t"; break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    constexpr std::string_view kDigits = "0123456789abcdef";
                    quoted += {'\\',
                               'u',
                               '0',
                               '0',
                               kDigits[static_cast<unsigned>(c) >> 4],
                               kDigits[static_cast<unsigned>(c) & 15]};
                } else {
                    quoted += c;
                }
        }
    }
    return quoted + '"';
}

std::string FloatText(double value) {
    if (!std::isfinite(value)) return "null";
    std::array<char, 64> digits{};
    std::string text(digits.data(),
                     std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
    return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

std::string DictionaryText(const Dictionary& dictionary, std::size_t depth);

std::string ValueText(const t_atom& value, std::size_t depth) {
    if (value.a_type == A_LONG) return std::to_string(value.a_w.w_long);
    if (value.a_type == A_FLOAT) return FloatText(value.a_w.w_float);
    if (value.a_type == A_SYM) return Quoted(atom_getsym(&value)->s_name);
    const void* const object = atom_getobj(&value);
    if (const String* string = AsString(object)) return Quoted(string->text);
    if (const Dictionary* inner = AsDictionary(object)) return DictionaryText(*inner, depth + 1);
    const AtomArray* array = AsAtomArray(object);
    if (!array) return "null";
    std::string text = "[ ";
    for (const t_atom& atom : array->atoms)
        text += (&atom == array->atoms.data() ? "" : ", ") + ValueText(atom, depth);
    return text + " ]";
}

std::string DictionaryText(const Dictionary& dictionary, std::size_t depth) {
    const std::string indent(depth, '\t');
    std::string text = indent + "{\n";
    for (const DictionaryEntry& entry : dictionary.entries) {
        if (&entry != dictionary.entries.data()) text += ",\n";
        text += indent + '\t' + Quoted(entry.key->s_name) + " : " + ValueText(entry.value, depth);
    }
    return text + '\n' + indent + "}\n";
}

}  // namespace

std::string JsonText(const Dictionary& dictionary) { return DictionaryText(dictionary, 0); }

}  // namespace HostApi
