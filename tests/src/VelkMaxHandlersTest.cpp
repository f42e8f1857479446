// SPDX-License-Identifier: MIT
// Nothing leaves a handler: every failure becomes one console line.
#include "HostBridge.h"
#include "max/VelkMaxAttributes.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <thread>

namespace {

/// An object whose every member runs the same operation.
struct Toy {
    t_object object{};
    std::function<void()> operation = [] {};
    mutable VelkMax::Door door{&object};

    static Toy& Of(void* record) { return *static_cast<Toy*>(record); }
    VelkMax::Door& TheDoor() const { return door; }
    friend t_object* MaxObjectOf(const Toy& toy) { return const_cast<t_object*>(&toy.object); }
    float Value() const {
        operation();
        return 2.5f;
    }
    void SetValue(float) { operation(); }
};

constexpr VelkMax::AttributeAccess kValue = VelkMax::Bind<&Toy::Value, &Toy::SetValue>;

void Message(Toy& toy) { toy.operation(); }
void ListMessage(Toy& toy, VelkMax::Atoms) { toy.operation(); }

struct Failure {
    const char* name;
    std::function<void()> operation;
    const char* line;
};
std::ostream& operator<<(std::ostream& out, const Failure& failure) { return out << failure.name; }

class HandlerFailure : public testing::TestWithParam<Failure> {
protected:
    void SetUp() override {
        HostApi::SetConsoleSink([this](HostApi::PostKind kind, std::string_view text, t_object*) {
            EXPECT_EQ(kind, HostApi::PostKind::Error);
            lines.emplace_back(text);
        });
        attribute = attr_offset_new("value", gensym("float32"), 0, nullptr, nullptr, 0);
        toy.operation = GetParam().operation;
    }
    void TearDown() override {
        HostApi::SetConsoleSink({});
        object_free(attribute);
    }

    Toy toy;
    t_object* attribute = nullptr;
    std::vector<std::string> lines;
};

}  // namespace

TEST_P(HandlerFailure, IsPostedAndLeavesTheObjectUnlocked) {
    VelkMax::MessageHandler<&Message>::Call(&toy);
    VelkMax::MessageHandler<&ListMessage>::Call(&toy, nullptr, 0, nullptr);
    t_atom value{};
    atom_setfloat(&value, 1.0);
    kValue.set(&toy, attribute, 1, &value);
    EXPECT_EQ(lines, std::vector<std::string>(3, GetParam().line));
    // Nobody is inside any more.
    std::thread([&] {
        const HostApi::ThreadScope audio(HostApi::ThreadKind::Audio);
        EXPECT_TRUE(VelkMax::Door::Visit(toy.door, VelkMax::Door::Patience::WaitsOutsideAudio));
    }).join();
}

TEST_P(HandlerFailure, OfAGetterNamesTheAttribute) {
    max_long count = 0;
    t_atom* atoms = nullptr;
    EXPECT_NE(kValue.get(&toy, attribute, &count, &atoms), MAX_ERR_NONE);
    EXPECT_EQ(count, 0);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "couldnt allocate memory for attribute value getter");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    HandlerFailure,
    testing::Values(Failure{"Library", [] { throw tav::Exception("no such ring"); },
                            "exception : no such ring"},
                    Failure{"Memory", [] { throw std::bad_alloc(); },
                            "out of memory : std::bad_alloc"},
                    Failure{"Standard", [] { throw std::length_error("x"); }, "unknown exception"},
                    Failure{"Foreign", [] { throw 7; }, "unknown exception"}),
    [](const auto& row) { return row.param.name; });

TEST(Handlers, SayWhichMessageCouldNotBeAdded) {
    std::vector<std::string> lines;
    HostApi::SetConsoleSink(
        [&](HostApi::PostKind, std::string_view text, t_object*) { lines.emplace_back(text); });
    const VelkMax::MessageRow rows[] = {
        {"works", [](t_class*, const char*) -> t_max_err { return MAX_ERR_NONE; }},
        {"fails", [](t_class*, const char*) -> t_max_err { return MAX_ERR_GENERIC; }}};
    VelkMax::AddMessages(nullptr, rows);
    HostApi::SetConsoleSink({});
    EXPECT_EQ(lines, std::vector<std::string>{"error when adding method fails"});
}
