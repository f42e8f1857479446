// SPDX-License-Identifier: MIT
// The object of a run: made from box text, sent messages, queried, freed.
#pragma once

#include "HostAtoms.h"
#include "HostBridge.h"

#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

class Console;

/// Loads a module file and calls its entry, which registers the module's classes.
/// @param file  "" for quilo.pan~ beside the program
/// Throws: Fault (HostFailed).
void LoadModule(const std::string& file);

/// Converts atoms of a script to atoms of the API.
std::vector<t_atom> ApiAtoms(std::span<const Atom> atoms);

/// Runs the clocks that are due, as the scheduler thread, then the deferred work.
void RunDueWork();

/// Owns the object; everything here belongs to the main thread.
class Object {
public:
    Object() = default;  // none is made yet
    ~Object() { Free(); }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    t_object* Get() const { return object_; }  // null once freed
    std::size_t NumSignalInlets() const { return numSignalInlets_; }
    std::size_t NumSignalOutlets() const { return numSignalOutlets_; }

    /// Sends to the left inlet; a message that begins with a number is an int, a float or a list.
    void Send(std::span<const Atom> message);
    void Free();
    /// Makes the object; there must be none.
    /// @param box  the box text, from the name of the class on
    /// Throws: StatementFault: no class of that name (WrongInput), creation failed (HostFailed).
    void Make(std::span<const Atom> box);

    /// The values of a numeric attribute; empty when there is no such attribute.
    std::vector<float> AttributeNumbers(std::string_view name) const;
    /// The symbol in an attribute; "" when there is no such attribute.
    std::string AttributeText(std::string_view name) const;

    // Write the answers to the script's queries on the console; nothing once the object is freed.
    void PrintAttributes(Console& console) const;
    void PrintAssistance(Console& console) const;
    void PrintMethods(Console& console) const;
    void PrintCarriedFiles(Console& console) const;

private:
    t_object* object_ = nullptr;
    std::size_t numSignalInlets_ = 0;
    std::size_t numSignalOutlets_ = 0;
};

}  // namespace Quilo::Host
