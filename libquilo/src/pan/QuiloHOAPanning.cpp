// SPDX-License-Identifier: MIT
#include "pan/QuiloHOAPanning.h"

#include "kernels/VelkDspHoaBatch.h"
#include "math/VelkDspMatrix.h"

namespace Quilo {

void HOAPanning::RecomputeAll(bool immediate) {
    tav::Matrix<float> gains(NumInputs(), NumOutputs());
    tav::ComputeHoaGains(Encoding(), StoredPositions(), gains);
    for (unsigned i = 0; i < NumInputs(); ++i) {
        LimitOrder(gains.Row(i));
        SetGains(i, gains.Row(i), immediate);
    }
}

}  // namespace Quilo
