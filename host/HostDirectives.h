// SPDX-License-Identifier: MIT
// The directives of a script to the host itself (`host DIRECTIVE ...`), one row for each.
//
// The parser of scripts, the run and the help text all use these rows. A new directive needs a row
// and a function in DirectiveActs.
#pragma once

#include "HostAtoms.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Quilo::Host {

/// The actions of the directives, in the order of their rows. Arguments have been checked.
class DirectiveActs {
public:
    virtual void Connect(Arguments arguments) = 0;
    virtual void SetRate(Arguments arguments) = 0;
    virtual void SetVector(Arguments arguments) = 0;
    virtual void SwitchAudio(Arguments arguments) = 0;
    virtual void PrintAttributes(Arguments arguments) = 0;
    virtual void PrintAssistance(Arguments arguments) = 0;
    virtual void PrintMethods(Arguments arguments) = 0;
    virtual void PrintCarriedFiles(Arguments arguments) = 0;
    virtual void Watch(Arguments arguments) = 0;
    virtual void RunDue(Arguments arguments) = 0;
    virtual void SendFrom(Arguments arguments) = 0;
    virtual void SendLayout(Arguments arguments) = 0;
    virtual void PrintCoverage(Arguments arguments) = 0;
    virtual void AddSearchPath(Arguments arguments) = 0;
    virtual void AnswerOpen(Arguments arguments) = 0;
    virtual void AnswerSaveAs(Arguments arguments) = 0;
    virtual void SendPacket(Arguments arguments) = 0;
    virtual void HandlePreset(Arguments arguments) = 0;
    virtual void HandlePattr(Arguments arguments) = 0;
    virtual void HandleDictionary(Arguments arguments) = 0;
    virtual void PlanFailure(Arguments arguments) = 0;
    virtual void Remake(Arguments arguments) = 0;
    virtual void Free(Arguments arguments) = 0;

protected:
    ~DirectiveActs() = default;
};

/// Where a directive may stand in the script, and when it acts.
enum class When : std::uint8_t {
    Always,      // before the object statement as well
    OnceMade,    // after the object statement, also when the object has been freed
    WhileAlive,  // the same, but it does nothing once the object has been freed
    ToObject     // it sends the object a message: an error once the object has been freed
};

struct DirectiveRow {
    std::string_view keyword;
    bool (*fits)(Arguments);
    When when;
    void (DirectiveActs::*act)(Arguments);
    std::string_view expects;  // the arguments, in faults and in the help
    std::string_view help;     // what it does
};

/// Null for an unknown keyword.
const DirectiveRow* FindDirective(std::string_view keyword);

std::vector<std::string> DirectiveKeywords();

/// "host KEYWORD expects ...", for arguments that do not fit.
std::string Expectation(const DirectiveRow& row, Arguments arguments);

/// A line of help for each directive.
std::string DirectivesHelp();

}  // namespace Quilo::Host
