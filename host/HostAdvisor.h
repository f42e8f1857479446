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

/// Each warning, error and bug on the console is followed by "FILE:LINE: STATEMENT" at once; what
/// would have been right follows when the statement is through, for only then may the object be
/// asked. What the object says later, in work that it put off, belongs to the statement that
/// caused the work; where several did the line says so.
class Advisor {
public:
    /// @param on  false: nothing is ever written
    Advisor(const Script& script, const Object& object, Console& console, bool on);
    ~Advisor();
    Advisor(const Advisor&) = delete;
    Advisor& operator=(const Advisor&) = delete;

    /// A statement is at work between these two. Thread: main.
    /// @param line  in the script; that of the `object` statement too
    void Begin(int line);
    void End(int line);

    /// After put-off work has run. Thread: main, between vectors.
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
    std::optional<Advice> facts_;  // about the present object, once they were needed
    std::mutex mutex_;
    std::set<int> complained_;  // lines that wait for advice; under the mutex
};

}  // namespace Quilo::Host
