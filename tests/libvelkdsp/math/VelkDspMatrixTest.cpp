// SPDX-License-Identifier: MIT
#include "math/VelkDspMatrix.h"

#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace tav {
namespace {

template <class T>
class MatrixOf : public testing::Test {
protected:
    // 1 2 3 / 4 5 6 ...
    static Matrix<T> Counting(std::size_t rows, std::size_t columns) {
        Matrix<T> matrix(rows, columns);
        for (std::size_t k = 0; k < rows * columns; ++k) matrix.Data()[k] = static_cast<T>(k + 1);
        return matrix;
    }
};

struct ElementNames {
    template <class T>
    static std::string GetName(int) {
        return sizeof(T) == sizeof(float) ? "Float" : "Double";
    }
};

using ElementTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(MatrixOf, ElementTypes, ElementNames);

TYPED_TEST(MatrixOf, MultipliesItsRowsWithAVector) {
    const Matrix<TypeParam> matrix = this->Counting(2, 3);
    Vector<TypeParam> output(7, TypeParam(9));
    matrix.Multiply(output, {1, -10, 100});
    EXPECT_EQ(output, (Vector<TypeParam>{281, 554}));
    EXPECT_THROW(matrix.Multiply(output, {1, 2}), Exception);
    Matrix<TypeParam>(2, 0).Multiply(output, {});
    EXPECT_EQ(output, (Vector<TypeParam>{0, 0}));
    Matrix<TypeParam>(0, 3).Multiply(output, {1, 2, 3});
    EXPECT_TRUE(output.Empty());
}

TYPED_TEST(MatrixOf, ResizeKeepsElementsInTheirPlace) {
    Matrix<TypeParam> matrix = this->Counting(2, 3);
    matrix.Resize(3, 2);
    const TypeParam expected[] = {1, 2, 4, 5, 0, 0};
    for (std::size_t k = 0; k < 6; ++k) EXPECT_EQ(matrix(k / 2, k % 2), expected[k]) << k;
    matrix.Resize(1, 3);
    EXPECT_EQ(matrix(0, 1), TypeParam(2));
    EXPECT_EQ(matrix(0, 2), TypeParam(0)) << "what was cut off is gone";

    const Matrix<TypeParam> before = matrix;
    EXPECT_THROW(matrix.Resize(std::numeric_limits<std::size_t>::max() / 2, 3), std::length_error);
    EXPECT_EQ(matrix, before);
}

TYPED_TEST(MatrixOf, CopiesAreIndependent) {
    Matrix<TypeParam> matrix = this->Counting(2, 2);
    Matrix<TypeParam> copy(5, 5);
    copy = matrix;
    EXPECT_EQ(copy, matrix);
    copy.Fill(TypeParam(7));
    EXPECT_EQ(matrix, this->Counting(2, 2));
    const Matrix<TypeParam> moved = std::move(matrix);
    EXPECT_EQ(moved, this->Counting(2, 2));
}

TYPED_TEST(MatrixOf, WhatIsWrittenReadsBack) {
    Matrix<TypeParam> matrix(2, 2);
    const TypeParam values[] = {TypeParam(1) / 3, TypeParam(-1e-30),
                                std::numeric_limits<TypeParam>::max(), 0};
    std::copy(std::begin(values), std::end(values), matrix.Data());
    std::stringstream stream;
    matrix.Write(stream, 17);
    Matrix<TypeParam> read;
    read.Read(stream);
    EXPECT_EQ(read, matrix);
    for (const char* text : {"", "2", "2 2\n1 2 3", "1 1\nx", "1000000000 1000000000\n1"}) {
        std::istringstream broken(text);
        EXPECT_THROW(read.Read(broken), Exception) << text;
        EXPECT_EQ(read, matrix);
    }
}

struct Printed {
    const char* text;
    const char* matlab;
    const char* latex;
};

void ExpectPrinted(const Matrix<float>& matrix, const String& name, const Printed& expected) {
    const auto expect = [](auto print, const char* text) {
        std::ostringstream whole, rounded;
        print(whole, 3);
        print(rounded, 3.0);
        EXPECT_EQ(whole.str(), text);
        EXPECT_EQ(rounded.str(), text);
    };
    expect([&](auto& out, auto digits) { matrix.Print(out, digits, name); }, expected.text);
    expect([&](auto& out, auto digits) { matrix.PrintMatlab(out, digits, name); }, expected.matlab);
    expect([&](auto& out, auto digits) { matrix.PrintLatex(out, digits, name); }, expected.latex);
}

TEST(MatrixPrinters, WriteTheirExactTexts) {
    Matrix<float> gains(2, 2, 0.5f);
    gains(0, 1) = 1.f / 3.f;
    gains(1, 0) = -2.f;
    ExpectPrinted(gains, "gains",
                  {"matrix 2 x 2\ngains = \n0.5 0.333 \n-2 0.5 \n",
                   "% matrix 2 x 2\ngains = [ ...\n0.5 0.333 ; ...\n-2 0.5 ; ...\n...\n]; \n",
                   "\\begin{equation}\n\\begin{pmatrix}\nname = \n\\begin{array}{cc}\n"
                   "                     0.5 & 0.333 \\\\ \n"
                   "\\noalign{\\smallskip} -2 & 0.5 \\\\ \n"
                   "\\end{array}\n\\end{pmatrix}\n\\end{equation}\n"});
}

}  // namespace
}  // namespace tav
