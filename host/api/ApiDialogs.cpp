// SPDX-License-Identifier: MIT
// Dialogs, which the host's script answers in advance.
#include "ApiFiles.h"
#include "ApiThreads.h"
#include "HostBridge.h"

#include <array>
#include <optional>
#include <utility>

namespace fs = std::filesystem;

namespace HostApi {
namespace {

constexpr std::array kDialogs{"open_dialog", "saveasdialog_extended"};

std::optional<fs::path>& Answer(Dialog dialog) {
    static auto& answers = *new std::array<std::optional<fs::path>, kDialogs.size()>;
    return answers[static_cast<std::size_t>(dialog)];
}

/// Takes the next answer; none means that the user cancelled. Reports a call from anywhere but the
/// queue of the main thread: there Max may hang, or run other work before the dialog returns.
std::optional<fs::path> Ask(Dialog dialog) {
    const char* const name = kDialogs[static_cast<std::size_t>(dialog)];
    if (CurrentThreadKind() != ThreadKind::Main) {
        object_bug(nullptr, "%s: called outside the main thread", name);
        return {};
    }
    if (InMessage()) object_bug(nullptr, "%s: called in the stack of a message", name);
    return std::exchange(Answer(dialog), {});
}

short Choose(Dialog dialog, char* name, short* path, t_fourcc* type) {
    const auto chosen = Ask(dialog);
    if (!chosen) return 1;
    const std::string file = PathText(chosen->filename());
    if (file.size() >= MAX_FILENAME_CHARS) return 1;
    strncpy_zero(name, file.c_str(), MAX_FILENAME_CHARS);
    *path = FolderId(chosen->parent_path());
    if (type) *type = TypeOf(*chosen);
    return 0;
}

}  // namespace

void AnswerDialog(Dialog dialog, std::optional<fs::path> file) {
    std::error_code error;
    if (file) file = fs::absolute(*file, error);
    Answer(dialog) = std::move(file);
}

}  // namespace HostApi

using namespace HostApi;

short open_dialog(char* name, short* path, t_fourcc* type, t_fourcc*, short) {
    return Choose(Dialog::Open, name, path, type);
}

short saveasdialog_extended(char* name, short* path, t_fourcc* type, t_fourcc*, short) {
    return Choose(Dialog::SaveAs, name, path, type);
}

void open_promptset(const char*) {}

void saveas_promptset(const char*) {}
