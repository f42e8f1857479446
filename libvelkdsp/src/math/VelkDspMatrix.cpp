// SPDX-License-Identifier: MIT
#include "math/VelkDspMatrix.h"

#include "text/VelkDspException.h"
#include "text/VelkDspStringHelper.h"

#include <algorithm>
#include <cmath>
#include <istream>
#include <limits>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tav {
namespace {

template <class T>
std::size_t NumElements(std::size_t rows, std::size_t columns) {
    constexpr std::size_t kMost =
        static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / sizeof(T);
    if (columns != 0 && rows > kMost / columns) throw std::length_error("matrix<T> too long");
    return rows * columns;
}

int ToDigits(double digits) { return static_cast<int>(std::lround(std::clamp(digits, 1.0, 64.0))); }

template <class T>
void PrintElements(std::ostream& stream, std::span<const T> row, int digits) {
    for (const T value : row) stream << NumberText(static_cast<double>(value), digits) << ' ';
}

}  // namespace

template <class T>
Matrix<T>::Matrix(std::size_t rows, std::size_t columns, T value) {
    Matrix::Resize(rows, columns);
    Matrix::Fill(value);
}

template <class T>
Matrix<T>::Matrix(const Matrix& other) {
    Matrix::Assign(other);
}

template <class T>
Matrix<T>::Matrix(Matrix&& other) noexcept
    : rows_(std::exchange(other.rows_, 0)),
      columns_(std::exchange(other.columns_, 0)),
      capacity_(std::exchange(other.capacity_, 0)),
      elements_(std::move(other.elements_)) {}

template <class T>
Matrix<T>& Matrix<T>::operator=(const Matrix& other) {
    Assign(other);
    return *this;
}

template <class T>
Matrix<T>& Matrix<T>::operator=(Matrix&& other) noexcept {
    std::swap(rows_, other.rows_);
    std::swap(columns_, other.columns_);
    std::swap(capacity_, other.capacity_);
    std::swap(elements_, other.elements_);
    return *this;
}

template <class T>
void Matrix<T>::Resize(std::size_t rows, std::size_t columns) {
    if (rows == Rows() && columns == Columns()) return;
    const std::size_t count = NumElements<T>(rows, columns);
    std::unique_ptr<T[]> elements = std::make_unique<T[]>(count);
    const std::size_t keptColumns = std::min(columns, Columns());
    for (std::size_t r = 0; r < std::min(rows, Rows()); ++r) {
        std::copy_n(Data() + Columns() * r, keptColumns, elements.get() + columns * r);
    }
    elements_ = std::move(elements);
    capacity_ = count;
    rows_ = rows;
    columns_ = columns;
}

template <class T>
void Matrix<T>::Fill(T value) {
    std::fill_n(Data(), Rows() * Columns(), value);
}

template <class T>
void Matrix<T>::Assign(const Matrix& other) {
    if (this == &other) return;
    const std::size_t count = other.Rows() * other.Columns();
    if (count > capacity_) {
        elements_ = std::make_unique<T[]>(count);
        capacity_ = count;
    }
    std::copy_n(other.Data(), count, Data());
    rows_ = other.rows_;
    columns_ = other.columns_;
}

template <class T>
void Matrix<T>::Multiply(Vector<T>& output, const Vector<T>& input) const {
    if (input.Size() < Columns()) throw Exception("vector is shorter than the rows of the matrix");
    output.Resize(Rows());
    for (std::size_t r = 0; r < Rows(); ++r) {
        T sum = 0;
        for (std::size_t c = 0; c < Columns(); ++c) sum += (*this)(r, c) * input[c];
        output[r] = sum;
    }
}

template <class T>
void Matrix<T>::Print(std::ostream& stream, int digits, const String& name) const {
    stream << "matrix " << Rows() << " x " << Columns() << '\n';
    if (!name.empty()) stream << name << " = \n";
    for (std::size_t r = 0; r < Rows(); ++r) {
        PrintElements(stream, Row(r), digits);
        stream << '\n';
    }
}

template <class T>
void Matrix<T>::PrintMatlab(std::ostream& stream, int digits, const String& name) const {
    stream << "% matrix " << Rows() << " x " << Columns() << '\n';
    if (!name.empty()) stream << name << " = ";
    stream << "[ ...\n";
    for (std::size_t r = 0; r < Rows(); ++r) {
        PrintElements(stream, Row(r), digits);
        stream << "; ...\n";
    }
    stream << "...\n]; \n";
}

template <class T>
void Matrix<T>::PrintLatex(std::ostream& stream, int digits, const String& name) const {
    stream << "\\begin{equation}\n\\begin{pmatrix}\n";
    if (!name.empty()) stream << "name = \n";  // Deliberate: the word, not the argument
    stream << "\\begin{array}{" << std::string(Columns(), 'c') << "}\n";
    for (std::size_t r = 0; r < Rows(); ++r) {
        stream << (r == 0 ? std::string(21, ' ') : "\\noalign{\\smallskip} ");
        for (std::size_t c = 0; c < Columns(); ++c) {
            if (c > 0) stream << " & ";
            stream << NumberText(static_cast<double>((*this)(r, c)), digits);
        }
        stream << " \\\\ \n";
    }
    stream << "\\end{array}\n\\end{pmatrix}\n\\end{equation}\n";
}

template <class T>
void Matrix<T>::Write(std::ostream& stream, int digits) const {
    stream << Rows() << ' ' << Columns() << '\n';
    for (std::size_t r = 0; r < Rows(); ++r) {
        PrintElements(stream, Row(r), digits);
        stream << '\n';
    }
}

template <class T>
void Matrix<T>::Print(std::ostream& stream, double digits, const String& name) const {
    Print(stream, ToDigits(digits), name);
}

template <class T>
void Matrix<T>::PrintMatlab(std::ostream& stream, double digits, const String& name) const {
    PrintMatlab(stream, ToDigits(digits), name);
}

template <class T>
void Matrix<T>::PrintLatex(std::ostream& stream, double digits, const String& name) const {
    PrintLatex(stream, ToDigits(digits), name);
}

template <class T>
void Matrix<T>::Write(std::ostream& stream, double digits) const {
    Write(stream, ToDigits(digits));
}

template <class T>
void Matrix<T>::Read(std::istream& stream) {
    ReadMatrix(stream, *this);
}

template <class T>
bool operator==(const Matrix<T>& a, const Matrix<T>& b) {
    return a.Rows() == b.Rows() && a.Columns() == b.Columns() &&
           std::equal(a.Data(), a.Data() + a.Rows() * a.Columns(), b.Data());
}

template <class T>
void ReadMatrix(std::istream& stream, Matrix<T>& matrix) {
    std::size_t rows = 0;
    std::size_t columns = 0;
    if (!(stream >> rows >> columns)) throw Exception("no matrix size");
    // Grows element by element, so that a large size in a short text does not allocate memory.
    std::vector<T> elements;
    for (std::size_t left = NumElements<T>(rows, columns); left > 0; --left) {
        String word;
        const std::optional<double> value =
            stream >> word ? ParseNumber(word) : std::optional<double>();
        if (!value) throw Exception("matrix with too few elements");
        elements.push_back(static_cast<T>(*value));
    }
    matrix.Resize(rows, columns);
    std::ranges::copy(elements, matrix.Data());
}

template class Matrix<float>;
template class Matrix<double>;
template bool operator==(const Matrix<float>&, const Matrix<float>&);
template bool operator==(const Matrix<double>&, const Matrix<double>&);
template void ReadMatrix(std::istream&, Matrix<float>&);
template void ReadMatrix(std::istream&, Matrix<double>&);

}  // namespace tav
