// SPDX-License-Identifier: MIT
// The state of an object as the values of its attributes: posted, sent from the dump outlet, stored
// by pattr and preset, and restored.
//
// A state is one list of atoms: the values of the listed attributes one after the other, each with
// as many atoms as it has. It fits an object of the same structure; any other number of atoms is
// refused as a whole.
#pragma once

#include "max/VelkMaxAtoms.h"

namespace VelkMax {

void PostAttributesMessage(t_object* object, Atoms atoms);
void DumpMessage(t_object* object, Atoms atoms);
void PresetMessage(t_object* object);
void RecallPresetMessage(t_object* object, Atoms atoms);
void VersionMessage(t_object* object);

/// The two methods through which Max lets pattr read and set the state.
t_max_err GetValueOfMethod(void* x, max_long* argc, t_atom** argv) noexcept;
t_max_err SetValueOfMethod(void* x, max_long argc, t_atom* argv) noexcept;

/// The outlet through which the object answers; null, after posting an error, when there is none.
t_object* DumpOutlet(t_object* object);

/// The version from the class's documentation; empty when there is none.
std::string VersionText(t_object* object);

}  // namespace VelkMax
