// SPDX-License-Identifier: MIT
#include "HostAdvisor.h"

#include "HostAdvice.h"
#include "HostConsole.h"
#include "HostObject.h"
#include "HostPlatform.h"

#include <algorithm>
#include <iostream>
#include <utility>

namespace Quilo::Host {

namespace {

void WriteLine(const std::string& line) {
    if (StandardErrorIsTerminal()) std::cerr << '\r' << std::string(60, ' ') << '\r';  // progress
    std::cerr << line << '\n';
}

/// The message that a statement sends; empty if it sends none.
std::span<const Atom> MessageOf(const Statement& statement) {
    const std::span<const Atom> atoms = statement.atoms;
    if (!statement.directive) return atoms;
    return statement.Says("from") ? atoms.subspan(1) : std::span<const Atom>();
}

}  // namespace

Advisor::Advisor(const Script& script, const Object& object, Console& console, bool on)
    : script_(script),
      object_(object),
      console_(console),
      isOn_(on) {
    for (const auto* statements : {&script.before, &script.statements})
        for (const Statement& statement : *statements) statements_[statement.line] = &statement;
    if (isOn_) console_.SetComplaintSink([this] { Receive(); });
}

Advisor::~Advisor() { console_.SetComplaintSink({}); }

void Advisor::Begin(int line) { HostApi::SetCause({line, line}); }

void Advisor::End(int line) {
    HostApi::SetCause({});
    if (!isOn_) return;
    const Statement* const statement = StatementAt(line);
    // The object is made anew or freed, so what is known about it no longer holds.
    if (!statement || statement->Says("remake") || statement->Says("free")) facts_.reset();
    std::set<int> complained = TakeComplained();
    if (!complained.contains(line)) Tell(line, false);
    for (const int other : complained) Tell(other, true);
}

void Advisor::TellWhatIsRight() {
    if (isOn_)
        for (const int line : TakeComplained()) Tell(line, true);
}

std::set<int> Advisor::TakeComplained() {
    const std::lock_guard lock(mutex_);
    return std::exchange(complained_, {});
}

void Advisor::Receive() {
    const HostApi::Cause cause = HostApi::CurrentCause();
    if (cause.first == 0) return;  // no statement caused it, for instance the end of the run
    const std::lock_guard lock(mutex_);
    if (cause.first == cause.last) {
        WriteLine(Quote(cause.first));
        complained_.insert(cause.first);
    } else {
        WriteLine(script_.name + ":" + std::to_string(cause.first) +
                  ": one of the statements from here to line " + std::to_string(cause.last));
    }
}

void Advisor::Tell(int line, bool hasComplained) {
    const std::vector<std::string> advice = AdviceFor(line, hasComplained);
    if (advice.empty()) return;
    if (!hasComplained) WriteLine(Quote(line));
    for (const std::string& text : advice) WriteLine("    " + text);
}

std::vector<std::string> Advisor::AdviceFor(int line, bool hasComplained) {
    if (!object_.Get()) return {};
    if (!facts_) facts_.emplace(object_);
    const Statement* const statement = StatementAt(line);
    const bool isBox = !statement || (statement->Says("remake") && !statement->atoms.empty());
    // With planned failures no trial objects are made, since their calls would be counted too.
    if (isBox)
        return facts_->OfBox(statement ? statement->atoms : script_.box, hasComplained,
                             !script_.Says("fail"));
    const std::span<const Atom> message = MessageOf(*statement);
    std::string text = hasComplained ? facts_->OfMessage(message) : "";
    if (text.empty()) text = facts_->OfClippedValues(message);
    return text.empty() ? std::vector<std::string>() : std::vector{text};
}

const Statement* Advisor::StatementAt(int line) const {
    const auto found = statements_.find(line);
    return found == statements_.end() ? nullptr : found->second;
}

std::string Advisor::Quote(int line) const {
    const Statement* const statement = StatementAt(line);
    return script_.name + ":" + std::to_string(line) + ": " +
           (statement ? statement->text : script_.objectText);
}

}  // namespace Quilo::Host
