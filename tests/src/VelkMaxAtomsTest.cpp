// SPDX-License-Identifier: MIT
#include "max/VelkMaxAtoms.h"

#include "HostBridge.h"

#include <gtest/gtest.h>

using VelkMax::Atoms;

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
