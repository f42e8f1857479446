// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscPreset.h"

#include "files/VelkDspFileReplacement.h"
#include "osc/VelkDspOscInputStream.h"
#include "osc/VelkDspOscOutputStream.h"
#include "osc/VelkDspOscPresetText.h"
#include "text/VelkDspException.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <system_error>

namespace tav {

namespace {

constexpr std::string_view kBegin = "/preset/begin";
constexpr std::uintmax_t kMostPresetBytes = std::uintmax_t{64} << 20;

struct PresetFormatRow {
    std::string_view extension;
    OscPresetFormat format;
    std::string (*write)(const OSCBundle& messages);
    OSCBundle (*read)(std::string_view content);
};

std::string WritePacket(const OSCBundle& messages) {
    OSCOutputStream stream;
    stream.WriteBundle(messages);
    const auto* const bytes = reinterpret_cast<const char*>(stream.Bytes().data());
    return {bytes, stream.Bytes().size()};
}

OSCBundle ReadPacket(std::string_view content) {
    OSCPacket packet =
        OSCInputStream(MemoryInputStream(content.data(), content.size())).ReadPacket();
    if (auto* bundle = std::get_if<OSCBundle>(&packet)) return std::move(*bundle);
    OSCBundle alone;
    alone.Add(std::get<OSCMessage>(std::move(packet)));
    return alone;
}

constexpr PresetFormatRow kPresetFormats[] = {
    {".txt", OscPresetFormat::Text, WriteTextPreset, ReadTextPreset},
    {".xml", OscPresetFormat::Xml, WriteXmlPreset, ReadXmlPreset},
    {".json", OscPresetFormat::Json, WriteJsonPreset, ReadJsonPreset},
    {".osc", OscPresetFormat::Packet, WritePacket, ReadPacket},
};

const PresetFormatRow& RowOf(OscPresetFormat format) {
    return *std::ranges::find(kPresetFormats, format, &PresetFormatRow::format);
}

std::string NameOf(const std::filesystem::path& file) {
    const std::u8string name = file.u8string();
    return {name.begin(), name.end()};
}

OscPresetFormat FormatOrThrow(const std::filesystem::path& file) {
    const auto format = OscPresetFormatOf(file);
    if (!format) throw Exception(NameOf(file) + ": a preset is a file .txt, .xml, .osc or .json");
    return *format;
}

/// A packet can hold what the other formats cannot write.
void CheckThatItCanBeKept(const OSCMessage& message, std::int64_t number) {
    const auto fail = [&](const char* what) {
        throw Exception("message " + std::to_string(number) + ": " + what);
    };
    // Each time an address is read it loses a slash at its end.
    const std::string& address = message.AddressText();
    if (address.empty() || address.ends_with('/')) fail("the end of its address is missing");
    for (const OSCArgument& value : message.Arguments()) {
        if (value.Tag() == 'b') fail("presets hold no blobs");
        if (!std::isfinite(value.Number())) fail("a number is not finite");
    }
}

}  // namespace

std::optional<OscPresetFormat> OscPresetFormatOf(const std::filesystem::path& file) {
    std::string extension = NameOf(file.extension());
    std::ranges::transform(extension, extension.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    const auto* const row =
        std::ranges::find(kPresetFormats, extension, &PresetFormatRow::extension);
    if (row == std::end(kPresetFormats)) return std::nullopt;
    return row->format;
}

std::string WriteOscPreset(const OSCBundle& state, OscPresetFormat format) {
    std::int32_t count = 0;
    state.ForEachMessage([&](const OSCMessage&) { ++count; });
    OSCBundle all;
    all.Add(OSCMessage(kBegin, count));
    state.ForEachMessage([&](const OSCMessage& message) { all.Add(message); });
    return RowOf(format).write(all);
}

OSCBundle ReadOscPreset(std::string_view content, OscPresetFormat format) {
    const OSCBundle read = RowOf(format).read(content);
    OSCBundle messages;
    std::optional<std::int64_t> announced;
    std::int64_t count = 0;
    read.ForEachMessage([&](const OSCMessage& message) {
        if (message.AddressText() != kBegin) {
            ++count;
            CheckThatItCanBeKept(message, count);
            messages.Add(message);
        } else {
            announced = message.TypeTags() == "i" ? message.Arguments()[0].Int64() : -1;
        }
    });
    if (announced && *announced < 0) throw Exception(std::string(kBegin) + " has no number");
    if (count == 0) throw Exception("it holds no message");
    if (announced && format == OscPresetFormat::Text && !content.ends_with('\n')) {
        throw Exception("its last line has no end");
    }
    if (announced && *announced != count) {
        throw Exception("it holds " + std::to_string(count) + " of " + std::to_string(*announced) +
                        " messages");
    }
    return messages;
}

namespace {

/// Whoever can send a message names the file. So nothing but a preset is ever overwritten.
void RefuseOtherFiles(const std::filesystem::path& file) {
    std::error_code fault;
    if (!std::filesystem::exists(file, fault)) return;
    try {
        LoadOscPreset(file);
    } catch (const Exception&) {
        throw Exception(NameOf(file) + ": the file is no preset and is not overwritten");
    }
}

}  // namespace

void SaveOscPreset(const std::filesystem::path& file, const OSCBundle& state) {
    const std::string content = WriteOscPreset(state, FormatOrThrow(file));
    RefuseOtherFiles(file);
    if (!ReplaceFile(file, content))
        throw Exception(NameOf(file) + ": the preset cannot be written");
}

OSCBundle LoadOscPreset(const std::filesystem::path& file) {
    const OscPresetFormat format = FormatOrThrow(file);
    std::error_code fault;
    if (!std::filesystem::is_regular_file(file, fault)) {
        throw Exception(NameOf(file) + ": the preset cannot be read");
    }
    if (std::filesystem::file_size(file, fault) > kMostPresetBytes) {
        throw Exception(NameOf(file) + ": the preset is larger than 64 MiB");
    }
    std::ifstream stream(file, std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(stream)), {});
    if (!stream) throw Exception(NameOf(file) + ": the preset cannot be read");
    try {
        return ReadOscPreset(content, format);
    } catch (const Exception& refusal) {
        throw Exception(NameOf(file) + ": " + refusal.Message());
    }
}

}  // namespace tav
