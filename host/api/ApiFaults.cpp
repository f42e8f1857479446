// SPDX-License-Identifier: MIT
#include "ApiFaults.h"

#include "HostBridge.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>

namespace HostApi {
namespace {

// The functions that ask InjectedFailure.
constexpr std::array<std::string_view, 35> kFailing{
    "atom_alloc",
    "atom_alloc_array",
    "attr_offset_array_new",
    "attr_offset_new",
    "binbuf_new",
    "class_addattr",
    "class_addmethod",
    "class_attr_addattr_format",
    "class_attr_addattr_parse",
    "class_register",
    "dictionary_appendatoms",
    "dictionary_appendfloat",
    "dictionary_appendlong",
    "dictionary_appendsym",
    "dictionary_copyatoms",
    "dictionary_getatoms",
    "dictionary_getkeys_ordered",
    "dictionary_new",
    "dictionary_read",
    "dictionary_write",
    "dictobj_register",
    "locatefile_extended",
    "object_addattr",
    "object_alloc",
    "object_attr_addattr_format",
    "object_attr_addattr_parse",
    "object_attr_getnames",
    "object_attr_getvalueof",
    "object_attr_setvalueof",
    "object_obex_lookup",
    "object_obex_store",
    "outlet_anything",
    "outlet_new",
    "sysmem_newptr",
    "sysmem_resizeptr",
};

struct Plan {
    std::mutex mutex;
    std::string function;
    unsigned calls = 0;  // until it fails
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
    const ThreadScope elsewhere(ThreadKind::Audio);  // the report is the host's, not the module's
    object_bug(nullptr, "%s: called in a perform routine", function);
}

bool CanFail(std::string_view function) {
    return std::ranges::find(kFailing, function) != kFailing.end();
}

std::span<const std::string_view> FailingCalls() { return kFailing; }

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
