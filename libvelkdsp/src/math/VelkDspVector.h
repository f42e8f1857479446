// SPDX-License-Identifier: MIT
// The library's owning array.
//
// Polymorphic, so that arrays of different element types can be kept and destroyed through one
// base.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>

namespace tav {

/// The common base of vectors of all element types.
class VectorBase {
public:
    virtual ~VectorBase() = default;

protected:
    VectorBase() = default;
    VectorBase(const VectorBase&) = default;
    VectorBase(VectorBase&&) = default;
    VectorBase& operator=(const VectorBase&) = default;
    VectorBase& operator=(VectorBase&&) = default;
};

/// A contiguous block of elements; as a contiguous range it converts to std::span. A moved-from
/// vector is empty.
/// Throws: std::length_error for an impossible size, std::bad_alloc; then nothing changed.
template <class T>
class Vector : public VectorBase {
public:
    using value_type = T;

    Vector() = default;
    explicit Vector(std::size_t count, const T& value = T())
        : count_(count),
          elements_(Allocate(count)) {
        Fill(value);
    }
    Vector(std::initializer_list<T> values)
        : count_(values.size()),
          elements_(Allocate(values.size())) {
        std::ranges::copy(values, elements_.get());
    }
    Vector(const Vector& other)
        : VectorBase(other),
          count_(other.count_),
          elements_(Allocate(other.Size())) {
        std::ranges::copy(other, elements_.get());
    }
    Vector(Vector&& other) noexcept
        : count_(std::exchange(other.count_, 0)),
          elements_(std::move(other.elements_)) {}
    Vector& operator=(const Vector& other) {
        if (this != &other) *this = Vector(other);
        return *this;
    }
    Vector& operator=(Vector&& other) noexcept {
        if (this == &other) return *this;
        count_ = std::exchange(other.count_, 0);
        elements_ = std::move(other.elements_);
        return *this;
    }
    ~Vector() override = default;

    std::size_t Size() const noexcept { return static_cast<std::size_t>(count_); }
    bool Empty() const noexcept { return count_ == 0; }

    /// Keeps the elements up to the new size; new ones are T().
    void Resize(std::size_t count) {
        if (count == Size()) return;
        std::unique_ptr<T[]> elements = Allocate(count);
        const std::size_t kept = std::min(count, Size());
        for (std::size_t index = 0; index < kept; ++index) {
            elements[index] = std::move(elements_[index]);
        }
        elements_ = std::move(elements);
        count_ = count;
    }
    void Fill(const T& value) { std::ranges::fill(*this, value); }

    T* Data() noexcept { return elements_.get(); }
    const T* Data() const noexcept { return elements_.get(); }
    /// @param index  below Size()
    T& operator[](std::size_t index) noexcept { return elements_[index]; }
    const T& operator[](std::size_t index) const noexcept { return elements_[index]; }

    T* begin() noexcept { return Data(); }
    T* end() noexcept { return Data() + count_; }
    const T* begin() const noexcept { return Data(); }
    const T* end() const noexcept { return Data() + count_; }

    friend bool operator==(const Vector& a, const Vector& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    }

private:
    static std::unique_ptr<T[]> Allocate(std::size_t count) {
        constexpr std::size_t kMost =
            static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / sizeof(T);
        if (count > kMost) throw std::length_error("vector<T> too long");
        return count == 0 ? nullptr : std::make_unique<T[]>(count);
    }

    std::uint64_t count_ = 0;
    std::unique_ptr<T[]> elements_;
};

}  // namespace tav
