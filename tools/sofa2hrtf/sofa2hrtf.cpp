// SPDX-License-Identifier: MIT
// Makes a ".hrtf" set from a SOFA file.
//
//     sofa2hrtf IN.sofa OUT.hrtf [--fir | --cells N] [--rate HZ] [--length TAPS]
//               [--itd threshold|xcorr] [--truncate-onset] [--force]
//
// Ends with 0 when the set is written, 2 for arguments or a file that do not serve, 3 when cells
// cannot follow the responses (with --force they are written all the same). A refusal is one line:
// the file and what is wrong with it.
#include "HrtfConversion.h"
#include "HrtfSetWriter.h"
#include "text/VelkDspException.h"
#include "text/VelkDspStringHelper.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace SofaTool {
namespace {

constexpr int kGood = 0;
constexpr int kRefused = 2;
constexpr int kTooPoor = 3;
constexpr double kPoorestRmsDb = 3.0;
constexpr double kFewestCells = 2, kMostCells = 24;
constexpr double kShortest = 16, kLongest = 8192;  // taps
constexpr double kLowestRate = 8000, kHighestRate = 384000;

struct Command {
    std::string input, output;
    ConversionOptions options;
    bool force = false;
};

/// One complaint.
struct Refusal {
    std::string what;
};

double NumberOf(std::string_view option, const std::string& word, double lowest, double highest) {
    const std::optional<double> number = tav::ParseNumber(word);
    if (number && *number >= lowest && *number <= highest) return *number;
    throw Refusal{std::string(option) + ": expected a number from " +
                  std::to_string(static_cast<long>(lowest)) + " to " +
                  std::to_string(static_cast<long>(highest)) + ", not \"" + word + "\""};
}

struct OptionRow {
    std::string_view name;
    bool hasValue;
    void (*apply)(Command& command, const std::string& value);
};

// clang-format off
constexpr OptionRow kOptions[] = {
    {"--fir",            false, [](Command& c, const std::string&) { c.options.numCells = 0; }},
    {"--cells",          true,  [](Command& c, const std::string& v) { c.options.numCells = static_cast<std::size_t>(NumberOf("--cells", v, kFewestCells, kMostCells)); }},
    {"--rate",           true,  [](Command& c, const std::string& v) { c.options.rateHz = NumberOf("--rate", v, kLowestRate, kHighestRate); }},
    {"--length",         true,  [](Command& c, const std::string& v) { c.options.numTaps = static_cast<std::size_t>(NumberOf("--length", v, kShortest, kLongest)); }},
    {"--itd",            true,  [](Command& c, const std::string& v) {
        if (v != "threshold" && v != "xcorr") throw Refusal{"--itd: expected threshold or xcorr, not \"" + v + "\""};
        c.options.itd = v == "xcorr" ? ItdMethod::CrossCorrelation : ItdMethod::Threshold;
    }},
    {"--truncate-onset", false, [](Command& c, const std::string&) { c.options.truncateOnset = true; }},
    {"--force",          false, [](Command& c, const std::string&) { c.force = true; }},
};
// clang-format on

Command Parse(const std::vector<std::string>& words) {
    Command command;
    std::vector<std::string> files;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (!words[i].starts_with("--")) {
            files.push_back(words[i]);
            continue;
        }
        const OptionRow* row = std::ranges::find(kOptions, words[i], &OptionRow::name);
        if (row == std::end(kOptions)) throw Refusal{words[i] + ": no such option"};
        if (row->hasValue && i + 1 == words.size()) throw Refusal{words[i] + ": expected a value"};
        row->apply(command, row->hasValue ? words[++i] : std::string());
    }
    if (files.size() != 2) {
        throw Refusal{
            "expected IN.sofa OUT.hrtf [--fir | --cells N] [--rate HZ] [--length TAPS] "
            "[--itd threshold|xcorr] [--truncate-onset] [--force]"};
    }
    command.input = files[0];
    command.output = files[1];
    if (!command.output.ends_with(".hrtf"))
        throw Refusal{command.output + ": expected the extension .hrtf"};
    return command;
}

std::string BytesOf(const std::string& file) {
    std::error_code fault;
    if (!std::filesystem::is_regular_file(file, fault))
        throw tav::Exception("there is no such file");
    const std::uintmax_t size = std::filesystem::file_size(file, fault);
    if (!fault) CheckFileSize(size);
    std::ifstream stream(file, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(stream)), {});
    if (!stream && !stream.eof()) throw tav::Exception("cannot be read");
    return bytes;
}

int Run(const Command& command) {
    std::string file = command.input;
    try {
        SofaSet sofa = ReadSofa(BytesOf(command.input));
        const auto attributes = sofa.attributes;
        const ConvertedSet set = Convert(std::move(sofa), command.options);
        for (const std::string& warning : set.warnings) {
            std::fprintf(stderr, "%s: warning: %s\n", file.c_str(), warning.c_str());
        }
        if (set.numCells > 0) {
            std::printf(
                "cells: %zu an ear, error %.2f dB rms, of the poorest ear %.2f dB, at worst %.2f "
                "dB\n",
                set.numCells, set.meanRmsDb, set.worstRmsDb, set.worstDb);
        }
        if (set.worstRmsDb > kPoorestRmsDb && !command.force) {
            std::fprintf(stderr,
                         "%s: the cells miss an ear by %.2f dB rms: more --cells, or --fir\n",
                         file.c_str(), set.worstRmsDb);
            return kTooPoor;
        }
        file = command.output;
        WriteWhole(command.output, HrtfBytes(set, attributes));
        std::printf("%s: %zu points, %zu numbers an ear, %.10g Hz\n", file.c_str(),
                    set.points.size(), set.points.front().filters[0].size(), set.rateHz);
        return kGood;
    } catch (const tav::Exception& fault) {
        std::fprintf(stderr, "%s: %s\n", file.c_str(), fault.Message().c_str());
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "%s: not enough memory\n", file.c_str());
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "%s: %s\n", file.c_str(), fault.what());
    }
    return kRefused;
}

#ifndef _WIN32
/// What ended a process, for a sentence that begins with "the conversion".
std::string EndBySignal(int signal) {
    struct Row {
        int signal;
        const char* text;
    };
    static constexpr Row kRows[] = {
        {SIGINT, "was interrupted"},
        {SIGTERM, "was stopped"},
        {SIGHUP, "was stopped"},
        {SIGKILL, "was killed, as systems do that run out of memory"},
        {SIGXCPU, "took more time than it was allowed"},
        {SIGXFSZ, "made a larger file than it was allowed"},
    };
    const Row* const row = std::ranges::find(kRows, signal, &Row::signal);
    if (row != std::end(kRows)) return row->text;
    return "crashed on it (" + std::string(strsignal(signal)) + ")";
}
#endif

/// Files of strangers have crashed libraries before: the work is done in a process of its own,
/// whose end by a signal is one more reason to refuse the file.
int RunApart(const Command& command) {
#ifdef _WIN32
    return Run(command);
#else
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) return Run(command);
    if (child == 0) {
        const int status = Run(command);
        std::fflush(nullptr);
        _exit(status);
    }
    int status = 0;
    while (waitpid(child, &status, 0) != child) {
        if (errno != EINTR) return kRefused;
    }
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    std::fprintf(stderr, "%s: the conversion %s\n", command.input.c_str(),
                 EndBySignal(WTERMSIG(status)).c_str());
    return kRefused;
#endif
}

}  // namespace
}  // namespace SofaTool

int main(int count, char** words) {
    try {
        return SofaTool::RunApart(SofaTool::Parse({words + 1, words + count}));
    } catch (const SofaTool::Refusal& refusal) {
        std::fprintf(stderr, "sofa2hrtf: %s\n", refusal.what.c_str());
        return SofaTool::kRefused;
    }
}
