// SPDX-License-Identifier: MIT
// The run itself: the script's timeline and the audio, vector by vector.
#pragma once

#include "HostInputs.h"
#include "HostOptions.h"
#include "HostScript.h"

namespace Quilo::Host {

class Actions;
class Object;

/// Sampling rate of a run with these inputs, hertz.
double RunRate(const Options& options, const Inputs& inputs);

/// Runs the script to its end and writes the files that the options name: the outlets' audio and
/// the picture. The rate of the run and of the written file never changes (--rate); `host rate`
/// only changes the rate that the object is told.
/// Throws: Fault, tav::Exception; then no output is left.
void Render(const Options& options,
            const Script& script,
            const Inputs& inputs,
            Object& object,
            Actions& actions);

/// Ends a run after the present vector: normally with --realtime, with a Fault otherwise.
/// Thread: any, signal handlers too.
void InterruptRender();

}  // namespace Quilo::Host
