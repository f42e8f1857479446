// SPDX-License-Identifier: MIT
// Attributes: storage, clipping, instance ones, properties, arguments of a box, notification.
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

TEST_F(MaxApiTest, ClipsAreOpenWhereTheyAreNotUsedAndHoldForGettersToo) {
    Send("gain -1");
    EXPECT_EQ(probe_->gain, 0);
    Send("gain 1e9");
    EXPECT_EQ(probe_->gain, 1e9f);
    probe_->mode = 99;
    EXPECT_EQ(object_attr_getlong(object_, gensym("mode")), 3);
}

TEST_F(MaxApiTest, ReadOnlyForTheUserIsWritableFromC) {
    EXPECT_FALSE(object_attr_usercanset(object_, gensym("frozen")));
    EXPECT_TRUE(object_attr_usercanget(object_, gensym("frozen")));
    EXPECT_EQ(object_attr_setfloat(object_, gensym("frozen"), 2.5), MAX_ERR_NONE);
    EXPECT_EQ(object_attr_getfloat(object_, gensym("frozen")), 2.5);

    t_object* const attribute =
        attribute_new("sealed", gensym("long"), ATTR_SET_OPAQUE | ATTR_GET_OPAQUE, 0, 0);
    object_addattr(object_, attribute);
    max_long argc = 0;
    t_atom* argv = nullptr;
    EXPECT_NE(object_attr_setlong(object_, gensym("sealed"), 1), MAX_ERR_NONE);
    EXPECT_NE(object_attr_getvalueof(object_, gensym("sealed"), &argc, &argv), MAX_ERR_NONE);
    EXPECT_EQ(argv, nullptr);
}

TEST_F(MaxApiTest, AGetterFillsMemoryHandedInOrMakesItsOwn) {
    Send("points 1 2 3");
    t_atom room[4];
    max_long argc = 4;
    t_atom* argv = room;
    ASSERT_EQ(object_attr_getvalueof(object_, gensym("points"), &argc, &argv), MAX_ERR_NONE);
    EXPECT_TRUE(argc == 3 && argv == room);
    argc = 0;
    argv = nullptr;
    ASSERT_EQ(object_attr_getvalueof(object_, gensym("points"), &argc, &argv), MAX_ERR_NONE);
    EXPECT_TRUE(argc == 3 && argv != nullptr && atom_getfloat(&argv[2]) == 3);
    sysmem_freeptr(argv);
}

TEST_F(MaxApiTest, InstanceAttributesComeFirstAndGoWithTheObject) {
    t_atom value{};
    atom_setfloat(&value, 0.25);
    object_addattr(object_, attribute_new_atoms("spread", gensym("float32"), 0, 1, &value));
    EXPECT_EQ(Send("getspread"), Lines{"outlet 2 dumpout: spread 0.25"});
    EXPECT_EQ(class_attr_get(object_class(object_), gensym("spread")), nullptr);
    object_addattr(object_, attribute_new_parse("gain", gensym("symbol"), 0, "mine"));
    EXPECT_EQ(Send("getgain"), Lines{"outlet 2 dumpout: gain mine"});
    object_deleteattr(object_, gensym("gain"));
    EXPECT_EQ(Send("getgain"), Lines{"outlet 2 dumpout: gain 0"});
}

TEST_F(MaxApiTest, PropertiesAreAttributesOfTheAttribute) {
    void* const gain = object_attr_get(object_, gensym("gain"));
    EXPECT_EQ(object_attr_getsym(gain, gensym("label")), gensym("the gain"));
    EXPECT_EQ(object_attr_getlong(gain, gensym("order")), 1);
    EXPECT_EQ(object_attr_get(gain, gensym("style")), nullptr);
    EXPECT_EQ(object_method_imp(gain, gensym("gettype"), 0, 0, 0, 0, 0, 0, 0, 0),
              gensym("float32"));
    // Text is split at blanks: a label belongs into the formatted call.
    class_attr_addattr_parse(object_class(object_), "name", "label", gensym("symbol"), 0, "a b");
    max_long argc = 0;
    t_atom* argv = nullptr;
    class_attr_attr_getvalueof(object_class(object_), gensym("name"), gensym("label"), &argc,
                               &argv);
    EXPECT_EQ(argc, 2);
    sysmem_freeptr(argv);
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

TEST_F(MaxApiTest, TheInspectorSortsByOrder) {
    object_addattr(object_, attribute_new_parse("second", gensym("long"), 0, "1"));
    object_attr_addattr_parse(object_, "second", "order", gensym("long"), 0, "2");
    std::string names;
    for (const auto& attribute : HostApi::Attributes(object_))
        names += std::string(attribute.name->s_name) + ' ';
    EXPECT_EQ(names, "gain second mode name frozen points ");
}

TEST_F(MaxApiTest, BoxArgumentsSetAttributesInOrderAndRefuseUnknownNames) {
    auto atoms = HostApi::ParseAtoms("2 4 x @points 1 2 @nobody 3 @mode 77 @frozen 1 @name");
    const auto count = static_cast<short>(atoms.size());
    EXPECT_EQ(attr_args_offset(count, atoms.data()), 3);
    attr_args_process(object_, count, atoms.data());
    EXPECT_EQ(Take(), (Lines{"error: \"nobody\" is not a valid attribute argument", "set mode (3)",
                             "error: \"frozen\" is not a valid attribute argument"}));
    EXPECT_EQ(probe_->numPoints, 2);
}

TEST_F(MaxApiTest, BoxArgumentsWaitInADictionary) {
    auto atoms = HostApi::ParseAtoms("2 @gain 3 @later 1 2");
    t_dictionary* const kept = dictionary_new();
    attr_args_dictionary(kept, static_cast<short>(atoms.size()), atoms.data());
    attr_dictionary_process(object_, kept);
    EXPECT_EQ(probe_->gain, 3);
    EXPECT_EQ(Take(), Lines{});
    attr_dictionary_check(object_, kept);
    EXPECT_EQ(Take(), Lines{"error: \"later\" is not a valid attribute argument"});
    object_free(kept);
}

TEST_F(MaxApiTest, ClientsHearOfChangesUntilTheyDetachOrDie) {
    auto* const client = static_cast<t_object*>(object_alloc(object_class(object_)));
    EXPECT_NE(object_attach_byptr(client, object_), MAX_ERR_NONE);  // not registered yet
    object_attach_byptr_register(client, object_, gensym("nobox"));
    EXPECT_EQ(Send("gain 2"), Lines{"notify attr_modified gain"});
    object_attr_touch(object_, gensym("name"));
    EXPECT_EQ(Take(), Lines{"notify attr_modified name"});
    EXPECT_NE(object_notify(object_, gensym("attr_modified"), nullptr), MAX_ERR_NONE);
    EXPECT_EQ(Take(), Lines{"bug: attr_modified without an attribute"});
    object_detach_byptr(client, object_);
    EXPECT_EQ(Send("gain 3"), Lines{});
    object_attach_byptr(client, object_);
    object_free(client);
    Take();
    EXPECT_EQ(Send("gain 4"), Lines{});
}

}  // namespace
