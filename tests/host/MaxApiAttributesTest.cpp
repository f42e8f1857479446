// SPDX-License-Identifier: MIT
// Attributes: storage, and the properties of one object.
#include "MaxApiProbe.h"

namespace {

TEST_F(MaxApiTest, DefaultAccessorsConvertIntoTheRecordAndBack) {
    Send("gain 0.1");
    EXPECT_EQ(probe_->gain, 0.1f);
    EXPECT_EQ(Send("getgain"), Lines{"outlet 2 dumpout: gain 0.1"});
    Send("name 12.5");  // a symbol attribute takes a number as its text
    EXPECT_EQ(probe_->name, gensym("12.5"));
    Send("points 1 2.5 3 4 5");  // one more than there is room for
    EXPECT_EQ(probe_->numPoints, 4);
    EXPECT_EQ(Send("getpoints"), Lines{"outlet 2 dumpout: points 1 2.5 3 4"});
    Send("points 7");
    EXPECT_EQ(probe_->numPoints, 1);
    EXPECT_EQ(object_attr_setparse(object_, gensym("name"), "\"a b\""), MAX_ERR_NONE);
    EXPECT_EQ(object_attr_getsym(object_, gensym("name")), gensym("a b"));
}

TEST_F(MaxApiTest, ClipsWholeNumbersAtLimitsThatAreNone) {
    object_attr_enforcelocal(object_, gensym("gain"));
    attr_addfilter_clip(object_attr_get(object_, gensym("gain")), -0.5, 2.5, 1, 1);
    Send("gain 9");
    EXPECT_EQ(probe_->gain, 2.5f);
    Send("gain -9");
    EXPECT_EQ(probe_->gain, -0.5f);
}

TEST_F(MaxApiTest, APropertyOfOneObjectLeavesItsClassAlone) {
    object_attr_addattr_parse(object_, "gain", "order", gensym("long"), 0, "9");
    const auto order = [](void* attribute) {
        return object_attr_getlong(attribute, gensym("order"));
    };
    EXPECT_EQ(order(object_attr_get(object_, gensym("gain"))), 9);
    EXPECT_EQ(order(class_attr_get(object_class(object_), gensym("gain"))), 1);
    Send("gain -4");  // the copy kept accessors and clip
    EXPECT_EQ(probe_->gain, 0);
}

}  // namespace
