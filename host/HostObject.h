// SPDX-License-Identifier: MIT
// One object in its box: made from box text, spoken to, asked, freed.
#pragma once

#include "HostBridge.h"
#include "HostScript.h"

#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

class Console;

/// Loads a module file and calls its entry, which registers the module's classes.
/// @param file  "" for quilo.pan~ beside the program
/// Throws: Fault (HostFailed).
void LoadModule(const std::string& file);

/// The atoms as the API has them.
std::vector<t_atom> ApiAtoms(std::span<const Atom> atoms);

/// Runs what is due now: clocks, as the scheduler, then everything deferred.
void RunDueWork();

/// Owns the object; everything here belongs to the main thread.
class Object {
public:
    /// Throws: ScriptFault: no class of that name (WrongInput), creation failed (HostFailed).
    explicit Object(const Script& script);
    Object() = default;  // none is made yet
    ~Object() { Free(); }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    t_object* Get() const { return object_; }  // null once freed
    std::size_t NumSignalInlets() const { return numSignalInlets_; }
    std::size_t NumSignalOutlets() const { return numSignalOutlets_; }

    /// To the left inlet; a message that begins with a number is an int, a float or a list.
    void Send(std::span<const Atom> message);
    void Free();
    /// Another object in the place of one that was freed.  Throws: StatementFault, as above.
    void Make(std::span<const Atom> box);

    /// Numbers of an attribute; none when there is no such attribute.
    std::vector<float> AttributeNumbers(std::string_view name) const;
    /// The symbol in an attribute; "" when there is no such attribute.
    std::string AttributeText(std::string_view name) const;

    // The answers to the script's questions about the object, on the console; none once freed.
    void PrintAttributes(Console& console) const;
    void PrintAssistance(Console& console) const;
    void PrintMethods(Console& console) const;

private:
    t_object* object_ = nullptr;
    std::size_t numSignalInlets_ = 0;
    std::size_t numSignalOutlets_ = 0;
};

}  // namespace Quilo::Host
