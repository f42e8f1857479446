// SPDX-License-Identifier: MIT
#include "max/VelkMaxAtoms.h"

#include "HostBridge.h"

#include <gtest/gtest.h>

#include <cmath>

using VelkMax::Atoms;

TEST(Atoms, AreReadAsWhatTheyAre) {
    const std::vector<t_atom> list = HostApi::ParseAtoms("3 -2.5 word 1e3");
    const Atoms atoms(list);
    EXPECT_TRUE(atoms.IsLong(0) && atoms.IsNumber(0) && !atoms.IsSymbol(0));
    EXPECT_TRUE(!atoms.IsLong(1) && atoms.IsNumber(1));
    EXPECT_TRUE(atoms.IsSymbol(2) && !atoms.IsNumber(2));
    EXPECT_EQ(atoms.Long(1), -2);
    const std::vector<float> numbers = atoms.Numbers();
    EXPECT_EQ(numbers[0], 3.f);
    EXPECT_TRUE(std::isnan(numbers[2]));
    EXPECT_EQ(atoms.From(2).Text(), "word 1000");
    EXPECT_EQ(atoms.First(2).Text(), "3 -2.5");
    EXPECT_EQ(atoms.Symbol(2), gensym("word"));
    EXPECT_EQ(atoms.Symbol(0), gensym("3"));
}

TEST(Atoms, BeyondTheListAreNothing) {
    const std::vector<t_atom> list = HostApi::ParseAtoms("1");
    for (const Atoms& atoms :
         {Atoms(), Atoms(list).From(1), Atoms(list).From(9), Atoms(-1, nullptr)}) {
        EXPECT_TRUE(atoms.Empty());
        EXPECT_FALSE(atoms.IsNumber(0) || atoms.IsSymbol(0));
        EXPECT_EQ(atoms.Long(0), 0);
        EXPECT_EQ(atoms.Float(0), 0.0);
        EXPECT_EQ(atoms.Symbol(0), gensym(""));
        EXPECT_EQ(atoms.Text(), "");
    }
    EXPECT_EQ(Atoms(list).First(9).Size(), 1u);
}

TEST(Atoms, KeepTheNumberOfAMessageInAnInt) {
    EXPECT_EQ(VelkMax::SaturatedInt(-7), -7);
    EXPECT_EQ(VelkMax::SaturatedInt(t_atom_long{1} << 40), 2147483647);
    EXPECT_EQ(VelkMax::SaturatedInt(-(t_atom_long{1} << 40)), -2147483647 - 1);
}
