// SPDX-License-Identifier: MIT
#include "HostConsole.h"

#include "HostFault.h"

#include <algorithm>
#include <iostream>

namespace Quilo::Host {

namespace {

std::string_view Head(HostApi::PostKind kind) {
    switch (kind) {
        case HostApi::PostKind::Post: return "post";
        case HostApi::PostKind::Warning: return "warn";
        case HostApi::PostKind::Error: return "error";
        case HostApi::PostKind::Bug: return "bug";
    }
    return "bug";
}

thread_local int pauses = 0;

}  // namespace

Console::Pause::Pause() { ++pauses; }

Console::Pause::~Pause() { --pauses; }

Console::Console(const std::string& file, bool live) : stream_(&std::cout), live_(live) {
    if (!file.empty()) stream_ = &file_.emplace(file).Stream();
    HostApi::SetConsoleSink(
        [this](HostApi::PostKind kind, std::string_view text, t_object*) { Receive(kind, text); });
    HostApi::SetOutletSink([this](const HostApi::OutletMessage& message) { Receive(message); });
}

Console::~Console() {
    HostApi::SetConsoleSink({});
    HostApi::SetOutletSink({});
}

void Console::Write(std::string_view head, std::string_view text) {
    std::string line = std::string(head) + ": " + std::string(text);
    std::ranges::replace_if(
        line, [](char c) { return c == '\n' || c == '\r'; }, ' ');
    *stream_ << line << '\n';
    if (live_) stream_->flush();
}

void Console::Close() {
    if (file_) return file_->Close();
    std::cout.flush();
    if (!std::cout)
        throw Fault(ExitStatus::WrongInput, "standard output: not all could be written");
}

void Console::Receive(HostApi::PostKind kind, std::string_view text) {
    if (pauses > 0) return;
    hasComplaints_ |= kind == HostApi::PostKind::Error || kind == HostApi::PostKind::Bug;
    Write(Head(kind), text);
    if (kind == HostApi::PostKind::Post || !onComplaint_) return;
    stream_->flush();  // so that text about this line on standard error follows it
    onComplaint_();
}

void Console::Receive(const HostApi::OutletMessage& message) {
    if (!message.isDumpout || pauses > 0) return;
    if (onDictionary_ && message.selector == gensym("dictionary") && message.atoms.size() == 1)
        onDictionary_(atom_getsym(message.atoms.data()));
    std::string text = message.selector->s_name;
    if (!message.atoms.empty()) text += " " + HostApi::AtomText(message.atoms);
    Write("outlet", text);
}

}  // namespace Quilo::Host
