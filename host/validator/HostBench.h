// SPDX-License-Identifier: MIT
// An object on the bench: in a running chain, with everything it says written down.
#pragma once

#include "HostChain.h"
#include "HostObject.h"
#include "validator/HostRandom.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Quilo::Host {

/// What some vectors sounded like.
struct Sound {
    bool isWhole = true;         // every sample of every outlet was written
    bool isFinite = true;        // and is a number
    double peak = 0;             // of all outlets
    std::vector<float> samples;  // vector by vector, outlet by outlet
};

using Values = std::map<std::string, std::vector<t_atom>>;

/// Main thread.
class Bench {
public:
    /// Throws: Fault, when there is no such class or no object is made.
    explicit Bench(std::vector<Atom> box);
    ~Bench();
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    Object& TheObject() { return object_; }
    t_object* Get() const { return object_.Get(); }
    Chain& TheChain() { return *chain_; }
    const std::vector<Atom>& Box() const { return box_; }

    /// Frees the object and makes another one from the same box text, in the running chain.
    void Remake();
    /// Frees the object, makes another one without a chain, frees that too. Failures are planned.
    /// @return whether an exception left the module
    bool MakeAndFree();

    /// A message, in the words of a script; then the deferred work.
    void Send(const std::string& words);
    void Send(const std::string& selector, std::span<const t_atom> atoms);
    t_max_err Set(const std::string& attribute, std::vector<t_atom> values);

    /// The console lines since the last call: "error: ...", "outlet: ...".
    std::vector<std::string> Take();
    /// The first line since the last call that begins so, "" for none.
    std::string TakeFirst(const std::string& head);
    /// What the API said first about its misuse since the last call, "" for nothing.
    std::string TakeMisuse();

    /// What leaves outlets is heard (again).
    void ListenToOutlets();

    /// Feeds noise to every inlet.  @param seed  of the noise
    Sound Play(unsigned vectors, std::uint64_t seed = 1);

    bool Understands(const std::string& message) const;
    std::vector<HostApi::AttributeInfo> Settable() const;
    Values Read() const;  // of everything settable

private:
    std::vector<Atom> box_;
    std::vector<std::string> heard_;
    std::string misuse_;
    Object object_;
    std::unique_ptr<Chain> chain_;
};

/// A property's values; none when the attribute does not have it.
std::vector<t_atom> Property(const HostApi::AttributeInfo& attribute, const char* name);

/// Values that the attribute may well have, as many as it has now.
std::vector<t_atom> LegalValues(const HostApi::AttributeInfo& attribute,
                                std::span<const t_atom> now,
                                Random& random);

/// The first difference, "" where there is none.
std::string Difference(const Values& a, const Values& b);
std::string Difference(const Sound& a, const Sound& b, double tolerance);

}  // namespace Quilo::Host
