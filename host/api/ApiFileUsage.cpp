// SPDX-License-Identifier: MIT
// The files that objects want to find in a standalone program.
#include "HostBridge.h"

#include "ext_files.h"

#include <utility>

namespace HostApi {
namespace {

/// What the method gets as its handle.
struct Builder {
    t_object* object;
    std::vector<CarriedFile> files;
};

Builder* builderAtWork = nullptr;  // null unless a method runs

}  // namespace

std::vector<CarriedFile> CarriedFiles(t_object* object) {
    Builder builder{object, {}};
    Builder* const outer = std::exchange(builderAtWork, &builder);
    object_method_imp(object, gensym("fileusage"), &builder, nullptr, nullptr, nullptr, nullptr,
                      nullptr, nullptr, nullptr);
    builderAtWork = outer;
    return std::move(builder.files);
}

}  // namespace HostApi

using namespace HostApi;

void fileusage_addfile(void* w, max_long flags, const char* name, short path) {
    if (CurrentThreadKind() != ThreadKind::Main || !w || w != builderAtWork)
        return object_bug(nullptr, "fileusage_addfile: called outside the method fileusage");
    Builder& builder = *builderAtWork;
    if (path_exists(path, name) == 0)
        return object_bug(builder.object, "fileusage_addfile: there is no file %s", name);
    builder.files.push_back({name, flags == 1});
}
