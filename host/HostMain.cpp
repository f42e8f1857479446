// SPDX-License-Identifier: MIT
// quilo-host: runs the module without Max.
#include "HostActions.h"
#include "HostAdvisor.h"
#include "HostAudioBridge.h"
#include "HostConsole.h"
#include "HostFault.h"
#include "HostInputs.h"
#include "HostObject.h"
#include "HostOptions.h"
#include "HostOutputFile.h"
#include "HostPlatform.h"
#include "HostRender.h"
#include "HostScript.h"
#include "QuiloProject.h"
#include "reading/HostFiles.h"
#include "text/VelkDspException.h"
#include "validator/HostValidator.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>

namespace Quilo::Host {

namespace {

Script ReadScript(const std::string& file) {
    const bool isFile = file != "-";
    const std::string name = isFile ? file : "standard input";
    const HostReading::FileContent script =
        isFile ? HostReading::ReadRegularFile(PathOf(file)) : HostReading::ReadToEnd(std::cin);
    if (!script.fault.empty())
        throw Fault(ExitStatus::WrongInput, name + ": the script cannot be read: " + script.fault);
    return ParseScript(script.bytes, name);
}

ExitStatus RunScript(const Options& options) {
    const Script script = ReadScript(options.script);
    const Inputs inputs(options.inputs, options.loop);
    Console console(options.console, options.realtime);
    if (options.script != "-") HostApi::SetPatcherFolder(PathOf(options.script).parent_path());
    LoadModule(options.module);
    HostApi::SetAudioSettings({RunRate(options, inputs), static_cast<int>(options.vector), false});
    Object object;
    Advisor advisor(script, object, console, !options.quiet);
    Actions actions(script, object, console, advisor);
    for (const Statement& statement : script.before) actions.Execute(statement);
    actions.MakeObject();
    Render(options, script, inputs, object, actions);
    console.Close();
    return options.strict && console.HasComplaints() ? ExitStatus::ObjectComplained
                                                     : ExitStatus::Done;
}

ExitStatus RunCommandLine(const std::vector<std::string>& words) {
    std::vector<const char*> arguments(words.size());
    std::ranges::transform(words, arguments.begin(),
                           [](const std::string& word) { return word.c_str(); });
    const Options options = ParseOptions(arguments);
    if (options.help) std::cout << HelpText();
    if (options.version) std::cout << "quilo-host " << Project::kVersion << '\n';
    if (options.help || options.version) return ExitStatus::Done;
    return options.validate > 0 ? Validate(options) : RunScript(options);
}

int Complain(ExitStatus status, std::string line) {
    std::ranges::replace(line, '\n', ' ');
    std::cerr << "quilo-host: " << line << '\n';
    return static_cast<int>(status);
}

}  // namespace

}  // namespace Quilo::Host

int main(int count, char** words) {
    using namespace Quilo::Host;
    std::signal(SIGINT, [](int) { InterruptRender(); });
    std::signal(SIGTERM, [](int) { InterruptRender(); });
    try {
        UsePlainStandardStreams();
        return static_cast<int>(RunCommandLine(CommandLine(count, words)));
    } catch (const Fault& fault) {
        return Complain(fault.Status(), fault.what());
    } catch (const tav::Exception& fault) {  // thrown for audio files
        return Complain(ExitStatus::WrongInput, fault.Message());
    } catch (const std::exception& fault) {
        return Complain(ExitStatus::HostFailed, fault.what());
    }
}
