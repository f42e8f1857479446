// SPDX-License-Identifier: MIT
// What a module may not do is reported, and what the host is told to fail fails.
#include "MaxApiProbe.h"

#include <cstring>

namespace {

TEST_F(MaxApiTest, ResizedMemoryKeepsItsContents) {
    const std::size_t before = HostApi::CountBlocks();
    char* const small = sysmem_newptr(4);
    std::memcpy(small, "abc", 4);
    char* const large = sysmem_resizeptr(small, 4000);
    EXPECT_NE(small, large);
    EXPECT_STREQ(large, "abc");
    EXPECT_EQ(HostApi::CountBlocks(), before + 1);
    sysmem_freeptr(large);
    HostApi::CheckFreedMemory();
    EXPECT_EQ(Take(), Lines{});
}

TEST_F(MaxApiTest, APerformRoutineIsReportedWhereItPostsQueuesOrSends) {
    const HostApi::ThreadScope perform(HostApi::ThreadKind::Perform);
    object_post(object_, "hello");
    defer_low(object_, MaxApi::ToMethod(+[](void*, t_symbol*, short, t_atom*) {}), nullptr, 0,
              nullptr);
    outlet_bang(probe_->outlets[2]);
    EXPECT_EQ(Take(), (Lines{"bug: object_post: called in a perform routine", "post: hello",
                             "bug: defer: called in a perform routine",
                             "bug: outlet_anything: called in a perform routine",
                             "outlet 2 dumpout: bang "}));
}

}  // namespace
