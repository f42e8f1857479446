// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscPresetText.h"

#include "text/VelkDspException.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace tav {

namespace {

// ---- Values

/// The shortest text that reads back as the same float; never that of an integer.
std::string FloatText(float value) {
    char text[32];
    const auto [end, error] = std::to_chars(std::begin(text), std::end(text), value);
    std::string number(std::begin(text), error == std::errc() ? end : std::begin(text));
    if (number.find_first_of(".en") == std::string::npos) number += ".0";
    return number;
}

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        constexpr char kDigits[] = "0123456789abcdef";
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') quoted += '\\';
        if (code >= 0x20) {
            quoted += c;
        } else {
            quoted += std::string("\\u00") + kDigits[code / 16] + kDigits[code % 16];
        }
    }
    return quoted + '"';
}

std::string ValueText(const OSCArgument& value) {
    switch (value.Tag()) {
        case 'f': return FloatText(value.Float());
        case 's': return Quoted(value.String());
        case 'T': return "true";
        case 'F': return "false";
        default: return std::to_string(value.Int64());
    }
}

/// A place in a text, which knows its line.
class PresetCursor {
public:
    explicit PresetCursor(std::string_view text) : rest_(text) {}

    bool AtEnd() const { return rest_.empty(); }
    char Next() const { return rest_.empty() ? '\0' : rest_.front(); }

    [[noreturn]] void Fail(const std::string& what) const {
        throw Exception("line " + std::to_string(line_) + ": " + what);
    }

    void Skip(std::size_t count) {
        line_ +=
            std::count(rest_.begin(), rest_.begin() + static_cast<std::ptrdiff_t>(count), '\n');
        rest_.remove_prefix(count);
    }
    void SkipBlanks(std::string_view blanks = " \t\r\n") {
        Skip(std::min(rest_.find_first_not_of(blanks), rest_.size()));
    }
    bool Accept(std::string_view token) {
        if (!rest_.starts_with(token)) return false;
        Skip(token.size());
        return true;
    }
    /// Blanks, then the token.
    void Expect(std::string_view token) {
        SkipBlanks();
        if (!Accept(token)) Fail("'" + std::string(token) + "' is missing");
    }
    /// Up to one of the characters, which is not passed.
    std::string_view Until(std::string_view ends) {
        const std::string_view word = rest_.substr(0, rest_.find_first_of(ends));
        Skip(word.size());
        return word;
    }

    /// A text in quotes.
    std::string Text() {
        if (!Accept("\"")) Fail("a text in quotes is missing");
        std::string text;
        while (!Accept("\"")) {
            if (AtEnd() || Next() == '\n') Fail("a text has no end");
            const char c = Next();
            Skip(1);
            text += c == '\\' ? Escaped() : c;
        }
        return text;
    }

    OSCArgument Value() {
        if (Next() == '"') return OSCArgument(Text());
        return WordValue(Until(" \t\r\n,]}<"));
    }

    OSCArgument WordValue(std::string_view word) const {
        if (word == "true" || word == "false") return OSCArgument(word == "true");
        const char *const begin = word.data(), *const end = begin + word.size();
        std::int64_t integer = 0;
        if (const auto read = std::from_chars(begin, end, integer);
            read.ec == std::errc() && read.ptr == end) {
            const bool isShort = integer == static_cast<std::int32_t>(integer);
            return isShort ? OSCArgument(static_cast<std::int32_t>(integer)) : OSCArgument(integer);
        }
        float number = 0.f;
        const auto read = std::from_chars(begin, end, number);
        if (read.ec != std::errc() || read.ptr != end || !std::isfinite(number)) {
            Fail("'" + std::string(word) + "' is no value");
        }
        return OSCArgument(number);
    }

    OSCMessage Address(std::string_view text) const {
        if (!text.starts_with('/')) Fail("'" + std::string(text) + "' is no address");
        return OSCMessage(text);
    }

private:
    char Escaped() {
        const char c = Next();
        if (c != 'u') {
            if (c != '"' && c != '\\' && c != '/') Fail("an escape is unknown");
            Skip(1);
            return c;
        }
        // Only characters below a blank are written so.
        unsigned code = 0;
        const std::string_view digits = rest_.substr(1, 4);
        const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
        if (digits.size() < 4 || read.ptr != digits.data() + 4 || code >= 0x80) {
            Fail("an escape is unknown");
        }
        Skip(5);
        return static_cast<char>(code);
    }

    std::string_view rest_;
    std::ptrdiff_t line_ = 1;
};

// ---- XML

constexpr std::pair<char, std::string_view> kEntities[] = {
    {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&apos;"}};

std::string Escape(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        const auto* const entity =
            std::ranges::find(kEntities, c, [](const auto& row) { return row.first; });
        escaped += entity == std::end(kEntities) ? std::string(1, c) : std::string(entity->second);
    }
    return escaped;
}

std::string Unescape(std::string_view text, const PresetCursor& place) {
    std::string plain;
    while (!text.empty()) {
        const auto* const entity = std::ranges::find_if(
            kEntities, [&](const auto& row) { return text.starts_with(row.second); });
        if (text.front() == '&' && entity == std::end(kEntities))
            place.Fail("an entity is unknown");
        const bool isEntity = entity != std::end(kEntities);
        plain += isEntity ? entity->first : text.front();
        text.remove_prefix(isEntity ? entity->second.size() : 1);
    }
    return plain;
}

/// White space, the declaration and comments.
void SkipXmlExtras(PresetCursor& cursor) {
    for (cursor.SkipBlanks();; cursor.SkipBlanks()) {
        const bool isComment = cursor.Accept("<!--");
        if (!isComment && !cursor.Accept("<?")) return;
        const std::string_view end = isComment ? "-->" : "?>";
        while (!cursor.Accept(end)) {
            if (cursor.AtEnd()) cursor.Fail("'" + std::string(end) + "' is missing");
            cursor.Skip(1);
        }
    }
}

OSCArgument ReadXmlValue(PresetCursor& cursor) {
    cursor.Expect("<");
    const std::string tag(cursor.Until("/>"));
    if (tag == "T" || tag == "F") {
        cursor.Expect("/>");
        return OSCArgument(tag == "T");
    }
    if (tag != "i" && tag != "h" && tag != "f" && tag != "s") {
        cursor.Fail("'" + tag + "' is no type of a value");
    }
    cursor.Expect(">");
    const std::string_view text = cursor.Until("<");
    OSCArgument value = tag == "s" ? OSCArgument(Unescape(text, cursor)) : cursor.WordValue(text);
    if (!value.IsNumber() && tag != "s") cursor.Fail("'" + std::string(text) + "' is no number");
    cursor.Expect("</" + tag + ">");
    return value;
}

}  // namespace

std::string WriteTextPreset(const OSCBundle& messages) {
    std::string text;
    messages.ForEachMessage([&](const OSCMessage& message) {
        text += message.AddressText();
        for (const OSCArgument& value : message.Arguments()) text += ' ' + ValueText(value);
        text += '\n';
    });
    return text;
}

OSCBundle ReadTextPreset(std::string_view content) {
    OSCBundle messages;
    PresetCursor cursor(content);
    for (cursor.SkipBlanks(); !cursor.AtEnd(); cursor.SkipBlanks()) {
        if (cursor.Next() == '#') {
            cursor.Until("\n");
            continue;
        }
        OSCMessage message = cursor.Address(cursor.Until(" \t\r\n"));
        for (;;) {
            cursor.SkipBlanks(" \t\r");
            if (cursor.AtEnd() || cursor.Next() == '\n') break;
            message.Add(cursor.Value());
        }
        messages.Add(std::move(message));
    }
    return messages;
}

std::string WriteJsonPreset(const OSCBundle& messages) {
    std::string text = "{\n";
    std::string_view separator;
    messages.ForEachMessage([&](const OSCMessage& message) {
        text += std::string(separator) + "  " + Quoted(message.AddressText()) + ": [";
        std::string_view comma;
        for (const OSCArgument& value : message.Arguments()) {
            text += std::string(comma) + ValueText(value);
            comma = ", ";
        }
        text += ']';
        separator = ",\n";
    });
    return text + "\n}\n";
}

OSCBundle ReadJsonPreset(std::string_view content) {
    OSCBundle messages;
    PresetCursor cursor(content);
    cursor.Expect("{");
    cursor.SkipBlanks();
    for (bool isFirst = true; !cursor.Accept("}"); isFirst = false) {
        if (!isFirst) cursor.Expect(",");
        cursor.SkipBlanks();
        OSCMessage message = cursor.Address(cursor.Text());
        cursor.Expect(":");
        cursor.Expect("[");
        cursor.SkipBlanks();
        for (bool isFirstValue = true; !cursor.Accept("]"); isFirstValue = false) {
            if (!isFirstValue) cursor.Expect(",");
            cursor.SkipBlanks();
            message.Add(cursor.Value());
            cursor.SkipBlanks();
        }
        messages.Add(std::move(message));
        cursor.SkipBlanks();
    }
    cursor.SkipBlanks();
    if (!cursor.AtEnd()) cursor.Fail("there is something behind the end");
    return messages;
}

std::string WriteXmlPreset(const OSCBundle& messages) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<preset>\n";
    messages.ForEachMessage([&](const OSCMessage& message) {
        text += "  <message address=\"" + Escape(message.AddressText()) + "\">";
        for (const OSCArgument& value : message.Arguments()) {
            const std::string tag(1, value.Tag());
            if (tag == "T" || tag == "F") {
                text += '<' + tag + "/>";
                continue;
            }
            const bool isText = tag == "s";
            text.append("<").append(tag).append(">");
            text += isText ? Escape(value.String()) : ValueText(value);
            text.append("</").append(tag).append(">");
        }
        text += "</message>\n";
    });
    return text + "</preset>\n";
}

OSCBundle ReadXmlPreset(std::string_view content) {
    OSCBundle messages;
    PresetCursor cursor(content);
    SkipXmlExtras(cursor);
    cursor.Expect("<preset>");
    for (SkipXmlExtras(cursor); !cursor.Accept("</preset>"); SkipXmlExtras(cursor)) {
        cursor.Expect("<message");
        cursor.Expect("address=\"");
        OSCMessage message = cursor.Address(Unescape(cursor.Until("\"<>"), cursor));
        cursor.Expect("\"");
        cursor.Expect(">");
        for (SkipXmlExtras(cursor); !cursor.Accept("</message>"); SkipXmlExtras(cursor)) {
            message.Add(ReadXmlValue(cursor));
        }
        messages.Add(std::move(message));
    }
    SkipXmlExtras(cursor);
    if (!cursor.AtEnd()) cursor.Fail("there is something behind the end");
    return messages;
}

}  // namespace tav
