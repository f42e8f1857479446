// SPDX-License-Identifier: MIT
// Reads dictionaries from JSON text, and reads and writes JSON files.
#include "ApiJson.h"

#include "ApiAtomText.h"
#include "ApiFaults.h"
#include "ApiFiles.h"
#include "ApiJsonText.h"
#include "files/VelkDspFileReplacement.h"
#include "reading/HostFiles.h"

#include <algorithm>
#include <stdexcept>

namespace HostApi {
namespace {

constexpr int kDeepest = 200;  // greatest depth of nested objects and arrays

/// Parses one text.
/// Throws: std::runtime_error that names the error; then nothing is left allocated.
class JsonReader {
public:
    explicit JsonReader(std::string_view text) : text_(text) {
        if (text_.starts_with("\xEF\xBB\xBF")) at_ = 3;
    }

    t_dictionary* Read() {
        SkipBlanks();
        if (Peek() != '{') Fail("an object is expected");
        t_atom whole = ReadObject();
        SkipBlanks();
        if (at_ < text_.size()) {
            FreeValue(whole);
            Fail("more text follows");
        }
        return AsDictionary(whole.a_w.w_obj);
    }

private:
    [[noreturn]] void Fail(const std::string& what) const {
        const auto line = 1 + std::ranges::count(text_.substr(0, at_), '\n');
        throw std::runtime_error("line " + std::to_string(line) + ": " + what);
    }

    char Peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }

    void SkipBlanks() { at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size()); }

    bool Take(char c) {
        SkipBlanks();
        if (Peek() != c) return false;
        ++at_;
        return true;
    }

    bool TakeWord(std::string_view word) {
        if (!text_.substr(at_).starts_with(word)) return false;
        at_ += word.size();
        return true;
    }

    /// Reads the members of a dictionary or array up to its closing mark; `read` reads one member.
    template <class Read>
    t_atom ReadMembers(t_object* made, char close, Read read) {
        t_atom whole{};
        atom_setobj(&whole, made);
        ++at_;
        try {
            if (++depth_ > kDeepest) Fail("too deep");
            while (!Take(close)) {
                read();
                if (!Take(',') && (SkipBlanks(), Peek() != close)) Fail("a comma is expected");
            }
        } catch (...) {
            FreeValue(whole);
            throw;
        }
        --depth_;
        return whole;
    }

    t_atom ReadObject() {
        t_dictionary* const made = dictionary_new();
        return ReadMembers(&made->d_obj, '}', [this, made] {
            SkipBlanks();
            t_symbol* const key = gensym(ReadText().c_str());
            if (!Take(':')) Fail("a colon is expected");
            t_atom value = ReadValue();
            if (value.a_type != A_NOTHING) dictionary_appendatom(made, key, &value);
        });
    }

    t_atom ReadArray() {
        t_atomarray* const made = atomarray_new(0, nullptr);
        made->flags = kFreesChildren;
        return ReadMembers(&made->ob, ']', [this, made] {
            t_atom value = ReadValue();
            if (value.a_type != A_NOTHING) atomarray_appendatom(made, &value);
        });
    }

    t_atom ReadValue() {
        SkipBlanks();
        t_atom atom{};
        if (Peek() == '{') return ReadObject();
        if (Peek() == '[') return ReadArray();
        if (TakeWord("null")) return atom;
        if (Peek() == '"') {
            atom_setsym(&atom, gensym(ReadText().c_str()));
        } else if (TakeWord("true")) {
            atom_setlong(&atom, 1);
        } else if (TakeWord("false")) {
            atom_setlong(&atom, 0);
        } else {
            const std::size_t end = text_.find_first_of(",]} \t\r\n", at_);
            const std::string_view word = text_.substr(at_, end - at_);
            const auto number = ParseNumber(word);
            if (!number) Fail("'" + std::string(word.substr(0, 40)) + "' is no value");
            at_ += word.size();
            atom = *number;
        }
        return atom;
    }

    /// Zero bytes are refused: a symbol ends at the first one, so two keys could become equal.
    std::string ReadText() {
        if (Peek() != '"') Fail("text is expected");
        std::string made;
        for (++at_; Peek() != '"'; ++at_) {
            if (at_ >= text_.size()) Fail("the text has no end");
            if (text_[at_] == '\\') {
                ++at_;
                AppendEscaped(made);
            } else {
                made += text_[at_];
            }
        }
        ++at_;
        if (made.find('\0') != made.npos) Fail("a zero byte stands in the text");
        return made;
    }

    void AppendEscaped(std::string& made) {
        constexpr std::string_view kLetters = "\"\\/bfnrt", kMeanings = "\"\\/\b\f\n\r\t";
        const std::size_t place = at_ < text_.size() ? kLetters.find(text_[at_]) : kLetters.npos;
        if (place != kLetters.npos) {
            made += kMeanings[place];
        } else if (Peek() == 'u') {
            AppendUtf8(made, ReadCodePoint());
        } else {
            Fail("an unknown escape");
        }
    }

    char32_t ReadCodeUnit() {
        char32_t unit = 0;
        for (int k = 0; k < 4; ++k) {
            ++at_;
            constexpr std::string_view kDigits = "0123456789abcdef";
            const std::size_t digit = kDigits.find(static_cast<char>(Peek() | 0x20));
            if (digit == kDigits.npos) Fail("four hexadecimal digits are expected");
            unit = unit << 4 | static_cast<char32_t>(digit);
        }
        return unit;
    }

    char32_t ReadCodePoint() {
        const char32_t first = ReadCodeUnit();
        if (first < 0xD800 || first > 0xDFFF) return first;
        if (first > 0xDBFF || !text_.substr(at_ + 1).starts_with("\\u")) Fail("half a character");
        at_ += 2;
        const char32_t second = ReadCodeUnit();
        if (second < 0xDC00 || second > 0xDFFF) Fail("half a character");
        return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
    }

    static void AppendUtf8(std::string& made, char32_t point) {
        const auto byte = [&made](char32_t value) { made += static_cast<char>(value); };
        if (point < 0x80) return byte(point);
        if (point < 0x800) {
            byte(0xC0 | point >> 6);
        } else {
            if (point < 0x10000) {
                byte(0xE0 | point >> 12);
            } else {
                byte(0xF0 | point >> 18);
                byte(0x80 | (point >> 12 & 0x3F));
            }
            byte(0x80 | (point >> 6 & 0x3F));
        }
        byte(0x80 | (point & 0x3F));
    }

    std::string_view text_;
    std::size_t at_ = 0;
    int depth_ = 0;
};

}  // namespace

t_dictionary* ReadJson(std::string_view text, std::string& fault) {
    try {
        return JsonReader(text).Read();
    } catch (const std::exception& wrong) {
        fault = wrong.what();
        return nullptr;
    }
}

}  // namespace HostApi

using namespace HostApi;

t_max_err dictionary_read(const char* filename, short path, t_dictionary** d) {
    if (const auto code = InjectedFailure("dictionary_read")) return *code;
    if (!filename || !d) return MAX_ERR_INVALID_PTR;
    *d = nullptr;
    const std::filesystem::path file = Folder(path) / PathOf(filename);
    if (!std::filesystem::exists(file)) return MAX_ERR_GENERIC;
    auto [text, fault] = HostReading::ReadRegularFile(file);
    if (fault.empty()) *d = ReadJson(text, fault);
    if (!*d) object_error(nullptr, "%s: %s", filename, fault.c_str());
    return *d ? MAX_ERR_NONE : MAX_ERR_GENERIC;
}

t_max_err dictionary_write(t_dictionary* d, const char* filename, short path) {
    if (const auto code = InjectedFailure("dictionary_write")) return *code;
    const Dictionary* dictionary = AsDictionary(d);
    if (!dictionary || !filename) return MAX_ERR_INVALID_PTR;
    const bool isWritten = tav::ReplaceFile(Folder(path) / PathOf(filename), JsonText(*dictionary));
    return isWritten ? MAX_ERR_NONE : MAX_ERR_GENERIC;
}

t_max_err dictobj_dictionaryfromstring(t_dictionary** d,
                                       const char* text,
                                       int isjson,
                                       char* errorstring) {
    if (!d || !text) return MAX_ERR_INVALID_PTR;
    std::string fault;
    if (isjson) {
        *d = ReadJson(text, fault);
    } else {
        std::vector<t_atom> atoms = ParseAtoms(text);
        *d = dictionary_new();
        attr_args_dictionary(*d, static_cast<short>(atoms.size()), atoms.data());
    }
    constexpr max_long kFaultSize = 256;
    if (!*d && errorstring) strncpy_zero(errorstring, fault.c_str(), kFaultSize);
    return *d ? MAX_ERR_NONE : MAX_ERR_GENERIC;
}
