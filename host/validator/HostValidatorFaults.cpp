// SPDX-License-Identifier: MIT
// Levels 9 and 10: allocations and API calls that fail, and random combinations of everything.
#include "HostAllocations.h"
#include "validator/HostValidator.h"

#include <array>
#include <exception>

namespace Quilo::Host {

namespace {

/// Whether each allocation can be made to fail, that is, where operator new is replaced and not
/// malloc.
bool CanSweep() { return CountAllocations() > 0 && FailAllocation(0); }

using Counts = std::array<std::size_t, 3>;

Counts Count() {
    RunDueWork();
    HostApi::CheckFreedMemory();
    return {HostApi::CountObjects(), HostApi::CountBlocks(), CountAllocations()};
}

std::string Leak(const Counts& before, const Counts& after) {
    constexpr std::array<std::string_view, 3> kKinds{" objects", " blocks", " allocations"};
    for (std::size_t k = 0; k < before.size(); ++k)
        if (after[k] > before[k])
            return std::to_string(after[k] - before[k]) + std::string(kKinds[k]) + " stay behind";
    return "";
}

/// Makes the object with its n-th allocation failing. @return whether it makes fewer than n
bool MakeFailing(Validation& v, unsigned n, std::string& why) {
    FailAllocation(n);
    const bool escaped = v.bench.MakeAndFree();
    const bool isOver = AllocationFailureWaits();
    FailAllocation(0);
    if (escaped) why = "an exception left the module";
    if (why.empty()) why = v.bench.TakeMisuse();
    v.bench.Take();
    return isOver;
}

/// Makes the object with each of its allocations failing in turn.
void CheckCreation(Validation& v) {
    std::string why;
    unsigned numFailed = 0;
    for (unsigned n = 1; why.empty(); n += 1 + n / 40) {
        bool isOver = MakeFailing(v, n, why);  // allocates what is kept for good
        const Counts before = Count();
        isOver |= MakeFailing(v, n, why);
        if (isOver) break;
        ++numFailed;
        if (why.empty()) why = Leak(before, Count());
        if (!why.empty()) why += ", allocation " + std::to_string(n);
    }
    v.report.Refute("creation, " + std::to_string(numFailed) + " of its allocations failing", why);
    v.bench.Remake();
}

/// Sends a message with each of its allocations failing in turn; afterwards the state must be the
/// old or the new one.
std::string MessageFault(Validation& v, const std::string& words, unsigned& numFailed) {
    v.bench.Remake();
    v.bench.Send(words);
    const Values done = v.bench.Read();
    v.bench.Remake();
    const Values before = v.bench.Read();
    for (unsigned n = 1; n < 400; n += 1 + n / 20) {
        v.bench.Take();
        FailAllocation(n);
        try {
            v.bench.Send(words);
        } catch (const std::exception&) {
            FailAllocation(0);
            return "an exception left the module, allocation " + std::to_string(n);
        }
        const bool isOver = AllocationFailureWaits();
        FailAllocation(0);
        if (isOver) return "";
        ++numFailed;
        const Values after = v.bench.Read();
        const std::string old = Difference(before, after), fresh = Difference(done, after);
        if (!old.empty() && !fresh.empty()) return old + ", allocation " + std::to_string(n);
        const std::string fault = v.Faults(1);
        if (!fault.empty()) return fault + ", allocation " + std::to_string(n);
        if (!old.empty()) v.bench.Remake();
    }
    return "";
}

void CheckHandlers(Validation& v) {
    for (const std::string& name : v.bench.Messages()) {
        if (name == "enable") continue;
        unsigned numFailed = 0;
        const std::string why = MessageFault(v, v.Sensible(name), numFailed);
        v.report.Refute(name + ", " + std::to_string(numFailed) + " of its allocations failing",
                        why);
    }
    v.bench.Remake();
    for (const HostApi::AttributeInfo& attribute : v.bench.Settable()) {
        const std::string name = attribute.name->s_name;
        const auto now = HostApi::AttributeValue(v.bench.Get(), name);
        const std::string words =
            name + " " + HostApi::AtomText(LegalValues(attribute, now, v.random));
        unsigned numFailed = 0;
        const std::string why = MessageFault(v, words, numFailed);
        v.report.Refute(name + ", " + std::to_string(numFailed) + " of its allocations failing",
                        why);
    }
    v.bench.Remake();
}

/// Checks that an object frees what it allocated for messages. Counts objects and blocks of the
/// API; other allocations are not counted, because symbols are never freed.
void CheckThatMessagesLeaveNothing(Validation& v) {
    for (const std::string& name : v.bench.Messages()) {
        const auto round = [&] {
            for (int k = 0; k < 10; ++k) v.bench.Send(v.Sensible(name));
            v.bench.Remake();
            v.bench.Take();
            Counts counts = Count();
            counts[2] = 0;
            return counts;
        };
        const Counts before = round();
        v.report.Refute(name + " leaves nothing behind", Leak(before, round()));
    }
}

/// Lets each API function that can fail do so once, in a message that calls it.
void CheckCalls(Validation& v) {
    for (const std::string_view function : HostApi::kFailingCalls) {
        std::string why;
        for (unsigned n = 1; n <= 3 && why.empty(); ++n) {
            v.bench.Remake();
            v.bench.Take();
            HostApi::FailCall(function, n, MAX_ERR_OUT_OF_MEM);
            for (const std::string& name : v.bench.Messages()) v.bench.Send(v.Sensible(name));
            v.Walk();
            v.bench.MakeAndFree();
            HostApi::FailCall(function, 0, 0);
            v.bench.Take();
            v.bench.Remake();
            why = v.Faults(2);
        }
        v.report.Refute(std::string(function) + " fails", why);
    }
}

}  // namespace

void CheckFailures(Validation& v) {
    if (CanSweep()) {
        CheckCreation(v);
        CheckHandlers(v);
    } else {
        v.report.Skip("allocations", "locks of the run-time library would fail, too");
    }
    CheckThatMessagesLeaveNothing(v);
    CheckCalls(v);
    v.bench.Remake();
    const auto round = [&v] {
        for (int k = 0; k < 20; ++k) {
            v.bench.Remake();
            v.bench.Play(1);
            v.bench.Take();
        }
        return Count();
    };
    round();
    const Counts before = round();
    v.report.Refute("made and freed again and again, memory is flat", Leak(before, round()));
}

void CheckStorm(Validation& v) {
    constexpr int kSteps = 3000;
    const auto messages = v.bench.Messages();
    std::string why;
    for (int step = 0; step < kSteps && why.empty(); ++step) {
        const std::string& name = messages[v.random.Below(messages.size())];
        if (v.random.Once(25) && CanSweep())
            FailAllocation(1 + static_cast<unsigned>(v.random.Below(30)));
        try {
            const HostApi::ThreadScope elsewhere(v.random.Once(4) ? HostApi::ThreadKind::Scheduler
                                                                  : HostApi::ThreadKind::Main);
            v.bench.Send(v.Sensible(name));
            if (v.random.Once(20)) v.Walk();
        } catch (const std::exception& escaped) {
            why = name + ": an exception left the module: " + escaped.what();
        }
        FailAllocation(0);
        if (v.random.Once(40)) v.bench.TheChain().SetVector(1U << v.random.Below(9));
        if (v.random.Once(40)) v.bench.TheChain().SetRate(v.random.Once(2) ? 44100 : 96000);
        if (v.random.Once(60)) v.bench.Remake();
        v.bench.Send("enable 1");
        if (why.empty()) why = v.Faults(1);
        if (!why.empty()) why += ", step " + std::to_string(step) + ", " + name;
    }
    v.bench.TheChain().SetVector(64);
    v.bench.TheChain().SetRate(48000);
    v.report.Refute(std::to_string(kSteps) + " steps of anything", why);
    v.bench.Remake();
    v.report.Refute("plays on", v.Faults(10));
}

}  // namespace Quilo::Host
