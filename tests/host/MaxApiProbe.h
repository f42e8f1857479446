// SPDX-License-Identifier: MIT
// A class like one that a module makes, and a fixture that writes down all that happens to it:
// method calls, console rows and what leaves the outlets, in order.
#pragma once

#include "HostBridge.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

struct Probe {
    t_object ob;
    max_long mode;
    float gain;
    t_symbol* name;
    max_long numPoints;
    double points[4];
    double frozen;
    void* outlets[3];  // from the left
};

class MaxApiTest : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    void SetUp() override;
    void TearDown() override;

    /// Sends the words of a message to the left inlet; gives the lines that came of it.
    Lines Send(const std::string& words, std::size_t inlet = 0);
    /// The lines since the last call.
    static Lines Take();
    /// Adds a line.
    static void Say(const std::string& line);

    Probe* probe_ = nullptr;
    t_object* object_ = nullptr;
};
