#include "nutypes/nuvector.h"

#include <algorithm>

NuVector::NuVector(size_t count) : m_data(new double[count]()), m_count(count), m_flags(Owned) {}

NuVector::NuVector(std::initializer_list<double> values)
    : m_data(new double[values.size()]), m_count(values.size()), m_flags(Owned) {
    std::copy(values.begin(), values.end(), m_data);
}

NuVector::NuVector(const NuVector& other) {
    copyFrom(other);
}

NuVector::NuVector(NuVector&& other) noexcept {
    if (other.m_flags == Owned) {
        m_data = other.m_data;
        m_count = other.m_count;
        m_flags = Owned;
        other.m_data = nullptr;
        other.m_count = 0;
        other.m_flags = View;
    } else {
        copyFrom(other);
    }
}

NuVector& NuVector::operator=(const NuVector& other) {
    if (this == &other) return *this;
    if (m_flags == Fixed) {
        // Fixed storage keeps its size; copy what fits.
        std::copy_n(other.m_data, std::min(m_count, other.m_count), m_data);
        return *this;
    }
    // Copy before releasing: `other` may view this vector's own elements.
    NuVector copy(other);
    takeStorage(copy);
    return *this;
}

NuVector& NuVector::operator=(NuVector&& other) noexcept {
    if (this == &other) return *this;
    if (m_flags == Fixed || other.m_flags != Owned)
        return *this = static_cast<const NuVector&>(other);
    takeStorage(other);
    return *this;
}

void NuVector::takeStorage(NuVector& other) {
    release();
    m_data = other.m_data;
    m_count = other.m_count;
    m_flags = other.m_flags;
    other.m_data = nullptr;
    other.m_count = 0;
    other.m_flags = View;
}

NuVector::~NuVector() {
    release();
}

NuVector NuVector::view(double* data, size_t count) {
    return NuVector(data, count, View);
}

void NuVector::copyFrom(const NuVector& other) {
    m_count = other.m_count;
    m_flags = m_count ? Owned : View;
    m_data = m_count ? new double[m_count] : nullptr;
    std::copy_n(other.m_data, m_count, m_data);
}

void NuVector::release() {
    if (m_flags == Owned) delete[] m_data;
    m_data = nullptr;
    m_count = 0;
    m_flags = View;
}
