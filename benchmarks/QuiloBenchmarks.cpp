// SPDX-License-Identifier: MIT
// Runs the benchmarks of the project and of its peers in one process.
#include "kernels/VelkDspInstructionSet.h"

#include <benchmark/benchmark.h>

#if defined(QUILO_WITH_OPENBLAS)
#include <cblas.h>
#include <unistd.h>
#endif

#include <cstdlib>
#include <string>

namespace {

#if defined(QUILO_WITH_OPENBLAS)
/// OpenBLAS reads its settings while it is loaded and guesses wrongly on processors that are newer
/// than itself, so this program starts once more with the settings in its environment.
void RestartWithBlasSettings(char** arguments) {
    if (std::getenv("OPENBLAS_CORETYPE") != nullptr) return openblas_set_num_threads(1);
    setenv("OPENBLAS_CORETYPE", "Haswell", 1);
    setenv("OPENBLAS_NUM_THREADS", "1", 1);
    execv("/proc/self/exe", arguments);
}

void DescribePeers() {
    benchmark::AddCustomContext("openblas_core", openblas_get_corename());
    benchmark::AddCustomContext("openblas_threads", std::to_string(openblas_get_num_threads()));
}
#else
void RestartWithBlasSettings(char**) {}
void DescribePeers() { benchmark::AddCustomContext("openblas_core", "not built in"); }
#endif

}  // namespace

int main(int count, char** arguments) {
    RestartWithBlasSettings(arguments);
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return EXIT_FAILURE;
    DescribePeers();
    benchmark::AddCustomContext("kernels", std::string(NameOf(tav::BestInstructionSet())));
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return EXIT_SUCCESS;
}
