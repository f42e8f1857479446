// SPDX-License-Identifier: MIT
// The validator: does to an object what patchers, users and bad luck do, level by level.
#pragma once

#include "HostFault.h"
#include "HostOptions.h"
#include "validator/HostBench.h"

#include <string>

namespace Quilo::Host {

inline constexpr int kValidatorLevels = 10;

/// Runs levels 1 to options.validate on the box text options.script and prints what it did, what
/// failed and "N passed, M failed".  Every line is out before the next step begins, so that a crash
/// shows where it happened.
/// @return Done, or HostFailed when a check failed    Throws: Fault.
ExitStatus Validate(const Options& options);

/// What the checks of a level write to.
class Report {
public:
    void Line(const std::string& text);
    /// One check; `why` is shown when it failed.
    void Check(bool good, const std::string& what, const std::string& why = "");
    /// The same, good when there is nothing to say against it.
    void Refute(const std::string& what, const std::string& why) { Check(why.empty(), what, why); }
    void Skip(const std::string& what, const std::string& why);

    int NumPassed() const { return numPassed_; }
    int NumFailed() const { return numFailed_; }

private:
    int numPassed_ = 0;
    int numFailed_ = 0;
};

struct Validation {
    Bench bench;
    Report report;
    Random random;

    /// "" when these vectors were whole and finite and the API was not misused since the last look.
    std::string Faults(unsigned vectors);
    /// Arguments under which a message does something, in the words of a script.
    std::string Sensible(const std::string& message);
    /// Draws values for every attribute that a user can set.
    void Walk();
};

// The levels.
void CheckThatItSounds(Validation& v);
void CheckAssistance(Validation& v);
void CheckAttributes(Validation& v);
void CheckMessages(Validation& v);
void CheckChain(Validation& v);
void CheckState(Validation& v);
void CheckThreads(Validation& v);
void CheckWalk(Validation& v);
void CheckFailures(Validation& v);
void CheckStorm(Validation& v);

}  // namespace Quilo::Host
