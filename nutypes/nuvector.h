#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

// A vector of doubles: a pointer to the elements, their count and a flags word.
// The elements live on the heap (owned), inside a derived object (fixed), or elsewhere (a view).
class NuVector {
public:
    enum Flags : uint32_t {
        View = 0,   // elements belong to someone else
        Owned = 1,  // elements allocated by this vector
        Fixed = 2,  // elements stored inside the object; the vector may not be resized
    };

    NuVector() = default;
    explicit NuVector(size_t count);  // zero-filled
    NuVector(std::initializer_list<double> values);
    NuVector(const NuVector& other);
    NuVector(NuVector&& other) noexcept;
    NuVector& operator=(const NuVector& other);
    NuVector& operator=(NuVector&& other) noexcept;
    ~NuVector();

    // A view of someone else's elements.
    static NuVector view(double* data, size_t count);

    size_t size() const { return m_count; }
    uint32_t flags() const { return m_flags; }
    double* data() { return m_data; }
    const double* data() const { return m_data; }
    double& operator[](size_t i) { return m_data[i]; }
    double operator[](size_t i) const { return m_data[i]; }

protected:
    NuVector(double* inlineData, size_t count, uint32_t flags)
        : m_data(inlineData), m_count(count), m_flags(flags) {}

    double* m_data = nullptr;
    size_t m_count = 0;
    uint32_t m_flags = View;

private:
    void copyFrom(const NuVector& other);
    void takeStorage(NuVector& other);  // other is Owned or empty
    void release();
};

// A three-element vector with inline storage: count 3, flags Fixed, never resized.
class NuVector3 : public NuVector {
public:
    NuVector3() : NuVector(m_storage, 3, Fixed) {}
    NuVector3(double x, double y, double z) : NuVector(m_storage, 3, Fixed), m_storage{x, y, z} {}
    NuVector3(const NuVector3& other) : NuVector(m_storage, 3, Fixed) { assign(other); }
    NuVector3& operator=(const NuVector3& other) {
        assign(other);
        return *this;
    }

private:
    void assign(const NuVector3& other) {
        for (int i = 0; i < 3; ++i) m_storage[i] = other.m_storage[i];
    }

    double m_storage[3] = {0.0, 0.0, 0.0};
};
