// SPDX-License-Identifier: MIT
// The run itself: the script's timeline and the audio, vector by vector.
#pragma once

#include "HostInputs.h"
#include "HostOptions.h"
#include "HostScript.h"

namespace Quilo::Host {

class Actions;
class Object;

/// Hertz of a run with these inputs.
double RunRate(const Options& options, const Inputs& inputs);

/// Runs the script to its end and writes what the options ask for: the outlets' audio and the
/// picture. The clock of the run and of the written file is fixed here (--rate); `host rate` only
/// changes what the object is told.
/// Throws: Fault, tav::Exception; then no output is left.
void Render(const Options& options,
            const Script& script,
            const Inputs& inputs,
            Object& object,
            Actions& actions);

/// Asks a run to end after the vector at hand: well with --realtime, with a Fault otherwise.
/// Thread: any, signal handlers too.
void InterruptRender();

}  // namespace Quilo::Host
