// SPDX-License-Identifier: MIT
// Tells the person who wrote a script, on standard error, which statement the object complained
// about and what would have been right.
#pragma once

#include "HostAdvice.h"

#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Quilo::Host {

class Console;
class Object;

/// Each warning, error and bug on the console is followed by "FILE:LINE: STATEMENT" at once; advice
/// follows when the statement has ended, because only then may the object be queried. What deferred
/// work posts later is attributed to the statement that caused the work; where several did, the
/// line says so.
class Advisor {
public:
    /// @param on  false: nothing is ever written
    Advisor(const Script& script, const Object& object, Console& console, bool on);
    ~Advisor();
    Advisor(const Advisor&) = delete;
    Advisor& operator=(const Advisor&) = delete;

    /// Begin and End enclose the execution of a statement. Thread: main.
    /// @param line  in the script; may be that of the `object` statement
    void Begin(int line);
    void End(int line);

    /// Writes the advice that is due; called after deferred work has run.
    /// Thread: main, between vectors.
    void TellWhatIsRight();

private:
    void Receive();  // a complaint; any thread
    std::set<int> TakeComplained();
    void Tell(int line, bool hasComplained);
    std::vector<std::string> AdviceFor(int line, bool hasComplained);
    const Statement* StatementAt(int line) const;  // null for the `object` statement
    std::string Quote(int line) const;

    const Script& script_;
    std::map<int, const Statement*> statements_;  // by line
    const Object& object_;
    Console& console_;
    bool isOn_;
    std::optional<Advice> facts_;  // about the present object; made at the first use
    std::mutex mutex_;
    std::set<int> complained_;  // lines that need advice; guarded by the mutex
};

}  // namespace Quilo::Host
