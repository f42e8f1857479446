// SPDX-License-Identifier: MIT
// What a module may not do is reported, and what the host is told to fail fails.
#include "MaxApiProbe.h"

#include <cstring>

namespace {

TEST_F(MaxApiTest, MisusedMemoryIsReported) {
    const auto report = [](const char* what) { return Lines{std::string("bug: ") + what}; };
    char* const block = sysmem_newptr(8);
    block[8] = 1;
    sysmem_freeptr(block);
    EXPECT_EQ(Take(), report("sysmem_freeptr: 8 bytes were written beyond their end"));
    sysmem_freeptr(block);
    EXPECT_EQ(Take(), report("sysmem_freeptr: the memory has been freed already"));
    block[3] = 1;
    HostApi::CheckFreedMemory();
    EXPECT_EQ(Take(), report("sysmem_freeptr: 8 bytes were written to after they were freed"));

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

TEST_F(MaxApiTest, TheNthCallFailsAndOnlyThat) {
    ASSERT_TRUE(HostApi::CanFail("object_attr_getvalueof"));
    EXPECT_FALSE(HostApi::FailCall("object_attr_getvalueof", 2, MAX_ERR_OUT_OF_MEM));
    const t_max_err expected[] = {MAX_ERR_NONE, MAX_ERR_OUT_OF_MEM, MAX_ERR_NONE};
    for (const t_max_err code : expected) {
        max_long argc = 0;
        t_atom* argv = nullptr;
        EXPECT_EQ(object_attr_getvalueof(object_, gensym("gain"), &argc, &argv), code);
        sysmem_freeptr(argv);
    }
    HostApi::FailCall("sysmem_newptr", 1, 0);
    EXPECT_EQ(sysmem_newptr(1), nullptr);
}

}  // namespace
