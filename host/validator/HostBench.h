// SPDX-License-Identifier: MIT
// An object under test: in a running DSP chain, with all its console rows and messages recorded.
#pragma once

#include "HostChain.h"
#include "HostObject.h"
#include "validator/HostRandom.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Quilo::Host {

/// The output of several vectors.
struct Sound {
    bool isWhole = true;         // every sample of every outlet was written
    bool isFinite = true;        // every sample is finite
    double peak = 0;             // largest magnitude, all outlets
    std::vector<float> samples;  // vector by vector, outlet by outlet
};

using Values = std::map<std::string, std::vector<t_atom>>;

/// Thread: main.
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
    /// Frees the object, makes another one without a chain and frees it; used with planned
    /// failures.
    /// @return whether an exception left the module
    bool MakeAndFree();

    /// Sends a message, spelled as in a script, then runs the deferred work.
    void Send(const std::string& words);
    void Send(const std::string& selector, std::span<const t_atom> atoms);
    t_max_err Set(const std::string& attribute, std::vector<t_atom> values);

    /// Returns the console lines since the last call: "error: ...", "outlet: ...".
    std::vector<std::string> Take();
    /// Returns the first line since the last call that begins with `head`; "" if there is none.
    std::string TakeFirst(const std::string& head);
    /// Returns the API's first report of a misuse since the last call; "" if there is none.
    std::string TakeMisuse();

    /// Records messages from outlets (again).
    void ListenToOutlets();

    /// Plays vectors with noise in every inlet.  @param seed  of the noise
    Sound Play(unsigned vectors, std::uint64_t seed = 1);

    bool Understands(const std::string& message) const;
    /// The messages that a user can send, without generatexml, which writes a file.
    std::vector<std::string> Messages() const;
    std::vector<HostApi::AttributeInfo> Settable() const;
    Values Read() const;  // the values of all settable attributes

private:
    std::vector<Atom> box_;
    std::vector<std::string> heard_;
    std::string misuse_;
    Object object_;
    std::unique_ptr<Chain> chain_;
};

/// The values of a property; empty when the attribute does not have it.
std::vector<t_atom> Property(const HostApi::AttributeInfo& attribute, const char* name);

/// Random values within the range of the attribute, as many as it has now.
std::vector<t_atom> LegalValues(const HostApi::AttributeInfo& attribute,
                                std::span<const t_atom> now,
                                Random& random);

/// Describes the first difference; "" if there is none.
std::string Difference(const Values& a, const Values& b);
std::string Difference(const Sound& a, const Sound& b, double tolerance);

}  // namespace Quilo::Host
