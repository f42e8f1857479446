// SPDX-License-Identifier: MIT
#include "ApiFaults.h"

#include "ApiReports.h"

#include <atomic>
#include <mutex>

namespace HostApi {
namespace {

struct Plan {
    std::mutex mutex;
    std::string function;
    unsigned calls = 0;  // counted down; the last one fails
    t_max_err code = MAX_ERR_GENERIC;
};

Plan& ThePlan() {
    static auto& plan = *new Plan;
    return plan;
}

std::atomic<bool> planned = false;

}  // namespace

std::optional<t_max_err> InjectedFailure(std::string_view function) {
    if (!planned.load(std::memory_order_relaxed)) return {};
    Plan& plan = ThePlan();
    const std::lock_guard lock(plan.mutex);
    if (!planned || plan.function != function || --plan.calls > 0) return {};
    planned = false;
    return plan.code;
}

void RefusePerform(const char* function) {
    if (CurrentThreadKind() != ThreadKind::Perform) return;
    ReportBug(std::string(function) + ": called in a perform routine");
}

bool FailCall(std::string_view function, unsigned n, t_max_err code) {
    Plan& plan = ThePlan();
    const std::lock_guard lock(plan.mutex);
    const bool waited = planned;
    plan.function = function;
    plan.calls = n;
    plan.code = code;
    planned = n > 0;
    return waited;
}

}  // namespace HostApi
