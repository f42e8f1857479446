// SPDX-License-Identifier: MIT
#include "math/VelkDspMatrix.h"

#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <sstream>
#include <stdexcept>

namespace tav {
namespace {

/// 1, 2, 3 .. row by row.
Matrix<float> Counting(std::size_t rows, std::size_t columns) {
    Matrix<float> matrix(rows, columns);
    for (std::size_t k = 0; k < rows * columns; ++k) matrix.Data()[k] = static_cast<float>(k + 1);
    return matrix;
}

TEST(Matrix, MultipliesItsRowsWithAVector) {
    const Matrix<float> matrix = Counting(2, 3);
    Vector<float> output(7, 9.f);
    matrix.Multiply(output, {1, -10, 100});
    EXPECT_EQ(output, (Vector<float>{281, 554}));
    EXPECT_THROW(matrix.Multiply(output, {1, 2}), Exception);
    Matrix<float>(2, 0).Multiply(output, {});
    EXPECT_EQ(output, (Vector<float>{0, 0}));
    Matrix<float>(0, 3).Multiply(output, {1, 2, 3});
    EXPECT_TRUE(output.Empty());
}

TEST(Matrix, ResizeKeepsElementsInTheirPlaceAndCopiesAreIndependent) {
    Matrix<float> matrix = Counting(2, 3);
    const Matrix<float> copy = matrix;
    matrix.Resize(3, 2);
    EXPECT_TRUE(std::ranges::equal(std::span(matrix.Data(), 6), std::array{1, 2, 4, 5, 0, 0}));
    matrix.Resize(1, 3);
    EXPECT_TRUE(std::ranges::equal(std::span(matrix.Data(), 3), std::array{1, 2, 0}));
    EXPECT_THROW(matrix.Resize(std::numeric_limits<std::size_t>::max() / 2, 3), std::length_error);
    EXPECT_EQ(matrix(0, 1), 2.f);
    EXPECT_EQ(copy, Counting(2, 3));
}

TEST(Matrix, WhatIsWrittenReadsBack) {
    Matrix<double> matrix(2, 2), read;
    std::ranges::copy(std::array{1.0 / 3, -1e-30, std::numeric_limits<double>::max(), 0.0},
                      matrix.Data());
    std::stringstream stream;
    matrix.Write(stream, 17);
    read.Read(stream);
    EXPECT_EQ(read, matrix);
    for (const char* text : {"", "2", "2 2\n1 2 3", "1 1\nx", "1000000000 1000000000\n1"}) {
        std::istringstream broken(text);
        EXPECT_THROW(read.Read(broken), Exception) << text;
        EXPECT_EQ(read, matrix);
    }
}

TEST(MatrixPrinters, WriteTheirExactTexts) {
    Matrix<float> gains(2, 2, 0.5f);
    gains(0, 1) = 1.f / 3.f;
    gains(1, 0) = -2.f;
    std::ostringstream whole, rounded;
    const auto print = [&](std::ostream& out, auto digits) {
        gains.Print(out, digits, "gains");
        gains.PrintMatlab(out, digits, "gains");
        gains.PrintLatex(out, digits, "gains");
    };
    print(whole, 3);
    print(rounded, 3.0);
    EXPECT_EQ(whole.str(),
              "matrix 2 x 2\ngains = \n0.5 0.333 \n-2 0.5 \n"
              "% matrix 2 x 2\ngains = [ ...\n0.5 0.333 ; ...\n-2 0.5 ; ...\n...\n]; \n"
              "\\begin{equation}\n\\begin{pmatrix}\nname = \n\\begin{array}{cc}\n"
              "                     0.5 & 0.333 \\\\ \n"
              "\\noalign{\\smallskip} -2 & 0.5 \\\\ \n"
              "\\end{array}\n\\end{pmatrix}\n\\end{equation}\n");
    EXPECT_EQ(rounded.str(), whole.str());
}

}  // namespace
}  // namespace tav
