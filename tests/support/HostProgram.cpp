// SPDX-License-Identifier: MIT
#include "support/HostProgram.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>

namespace Tests {

namespace {

/// One word of a command line, whatever it holds.
std::string Quoted(const std::string& word) {
#if defined(_WIN32)
    return "\"" + word + "\"";
#else
    std::string quoted = "'";
    for (const char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
#endif
}

std::string HostCommand() {
    const char* other = std::getenv("QUILO_HOST");
    return other ? other : QUILO_BIN_DIR "/quilo-host";
}

int ExitStatus(int answerOfSystem) {
#if defined(_WIN32)
    return answerOfSystem;
#else
    // The answer of wait(): a status in the second byte, a signal in the first.
    return (answerOfSystem & 0x7f) == 0 ? (answerOfSystem >> 8) & 0xff : -1;
#endif
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    std::random_device random;
    const auto name = "quilo-tests-" + std::to_string(random()) + std::to_string(random());
    path_ = std::filesystem::temp_directory_path() / name;
    std::filesystem::create_directory(path_);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::vector<std::string> TemporaryFolder::Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

std::string ReadText(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void WriteText(const std::filesystem::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.ends_with('\r')) line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

HostRun RunHost(const TemporaryFolder& folder,
                const std::vector<std::string>& arguments,
                const std::string& standardInput) {
    // The three streams live beside the folder, so that it holds what the host leaves and no more.
    const std::string base = folder.Path().string();
    WriteText(base + ".stdin", standardInput);
    std::string command = "cd " + Quoted(base) + " && " + Quoted(HostCommand());
    for (const std::string& argument : arguments) command += " " + Quoted(argument);
    command += " <" + Quoted(base + ".stdin") + " >" + Quoted(base + ".stdout") + " 2>" +
               Quoted(base + ".stderr");
    HostRun run;
    run.status = ExitStatus(std::system(command.c_str()));
    run.console = Lines(ReadText(base + ".stdout"));
    run.errors = Lines(ReadText(base + ".stderr"));
    for (const char* stream : {".stdin", ".stdout", ".stderr"})
        std::filesystem::remove(base + stream);
    return run;
}

}  // namespace Tests
