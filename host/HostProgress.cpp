// SPDX-License-Identifier: MIT
#include "HostProgress.h"

#include <cstdio>

namespace Quilo::Host {

Progress::Progress(bool shown, double seconds) : shown_(shown), seconds_(seconds) {}

Progress::~Progress() {
    if (written_) std::fprintf(stderr, "\r%60s\r", "");
}

void Progress::Show(double secondsDone) {
    if (!shown_) return;
    const auto now = Clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(100);
    written_ = true;
    const double spent = std::chrono::duration<double>(now - start_).count();
    const double percent = seconds_ > 0 ? 100 * secondsDone / seconds_ : 100;
    std::fprintf(stderr, "\r%3.0f %%  %.1f of %.1f s  %.0f x real time ", percent, secondsDone,
                 seconds_, spent > 0 ? secondsDone / spent : 0.0);
    std::fflush(stderr);
}

}  // namespace Quilo::Host
