// SPDX-License-Identifier: MIT
// The library's dense matrix, and its printers for people, Matlab and LaTeX.
#pragma once

#include "math/VelkDspVector.h"
#include "text/VelkDspString.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>

namespace tav {

/// rows x columns, stored row by row: element (r, c) is at columns * r + c. For float and double.
/// Printers write `digits` significant digits and end each line.
/// Throws: std::length_error for an impossible size, std::bad_alloc; then nothing changed.
template <class T>
class Matrix {
public:
    Matrix() = default;
    Matrix(std::size_t rows, std::size_t columns, T value = T());
    Matrix(const Matrix& other);
    Matrix(Matrix&& other) noexcept;
    Matrix& operator=(const Matrix& other);
    Matrix& operator=(Matrix&& other) noexcept;

    virtual ~Matrix() = default;
    /// Keeps the elements (r, c) that both sizes have; new elements are 0.
    virtual void Resize(std::size_t rows, std::size_t columns);
    virtual void Fill(T value);
    virtual void Assign(const Matrix& other);
    /// output[r] = dot product of row r and `input`; `output` is resized to Rows().
    /// @param input  at least Columns() values, else tav::Exception; not `output`
    virtual void Multiply(Vector<T>& output, const Vector<T>& input) const;
    /// Prints the size, the name if there is one, and the rows. `digits` is rounded.
    virtual void Print(std::ostream& stream, double digits, const String& name = {}) const;
    virtual void Print(std::ostream& stream, int digits, const String& name = {}) const;
    virtual void PrintMatlab(std::ostream& stream, double digits, const String& name = {}) const;
    virtual void PrintMatlab(std::ostream& stream, int digits, const String& name = {}) const;
    virtual void PrintLatex(std::ostream& stream, double digits, const String& name = {}) const;
    virtual void PrintLatex(std::ostream& stream, int digits, const String& name = {}) const;
    /// Writes rows, columns and the elements in the format of Read.
    virtual void Write(std::ostream& stream, double digits) const;
    virtual void Write(std::ostream& stream, int digits) const;
    virtual void Read(std::istream& stream);

    std::size_t Rows() const noexcept { return static_cast<std::size_t>(rows_); }
    std::size_t Columns() const noexcept { return static_cast<std::size_t>(columns_); }
    /// @param r  below Rows()  @param c  below Columns()
    T& operator()(std::size_t r, std::size_t c) noexcept { return elements_[Columns() * r + c]; }
    const T& operator()(std::size_t r, std::size_t c) const noexcept {
        return elements_[Columns() * r + c];
    }
    std::span<T> Row(std::size_t r) noexcept { return {Data() + Columns() * r, Columns()}; }
    std::span<const T> Row(std::size_t r) const noexcept {
        return {Data() + Columns() * r, Columns()};
    }
    T* Data() noexcept { return elements_.get(); }
    const T* Data() const noexcept { return elements_.get(); }

private:
    std::uint64_t rows_ = 0;
    std::uint64_t columns_ = 0;
    std::uint64_t capacity_ = 0;  // elements in the block, at least rows x columns
    std::unique_ptr<T[]> elements_;
};

/// Same size and equal elements.
template <class T>
bool operator==(const Matrix<T>& a, const Matrix<T>& b);

/// Reads a matrix that Matrix::Write wrote.
/// Throws: tav::Exception when the text is no matrix; then nothing changed.
template <class T>
void ReadMatrix(std::istream& stream, Matrix<T>& matrix);

extern template class Matrix<float>;
extern template class Matrix<double>;

}  // namespace tav
