#include "nutypes/nuvector.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>
#include <vector>

using Values = std::vector<double>;

static Values values(const NuVector& v) {
    return {v.data(), v.data() + v.size()};
}

// True when the elements live inside the vector object itself.
static bool storedInside(const NuVector3& v) {
    const auto* elements = reinterpret_cast<const char*>(v.data());
    const auto* object = reinterpret_cast<const char*>(&v);
    return elements >= object && elements + 3 * sizeof(double) <= object + sizeof v;
}

TEST(NuVector, CopiesAreDeepAndOwnedWhateverTheSourceStorage) {
    double outside[] = {1, 2, 3};
    const NuVector3 fixed(4, 5, 6);
    const NuVector owned{7, 8}, view = NuVector::view(outside, 3);
    EXPECT_EQ(values(NuVector(2)), (Values{0, 0}));
    for (const NuVector* source : {&owned, &view, static_cast<const NuVector*>(&fixed)}) {
        NuVector copy(*source), assigned{0};
        assigned = *source;
        for (const NuVector* v : {&copy, &assigned}) {
            EXPECT_EQ(values(*v), values(*source));
            EXPECT_NE(v->data(), source->data());
            EXPECT_EQ(v->flags(), NuVector::Owned);
        }
    }
}

TEST(NuVector, MovesStealOnlyOwnedElements) {
    NuVector owned{1, 2, 3}, assigned{9};
    const double* elements = owned.data();
    NuVector moved(std::move(owned));
    assigned = std::move(moved);
    EXPECT_EQ(assigned.data(), elements);
    EXPECT_EQ(owned.size(), 0u);
    double outside[] = {4, 5};
    NuVector view = NuVector::view(outside, 2), fromView(std::move(view));
    NuVector3 fixed(6, 7, 8);
    const NuVector fromFixed(std::move(fixed));
    EXPECT_NE(fromView.data(), outside);
    EXPECT_EQ(view.data(), outside);
    EXPECT_EQ(values(fromFixed), (Values{6, 7, 8}));
    EXPECT_TRUE(storedInside(fixed));
}

TEST(NuVector3, StorageStaysInsideEachObjectThroughCopiesAndAssignments) {
    NuVector3 fixed(1, 2, 3);
    NuVector& base = fixed;
    base = NuVector{9, 8};  // a fixed vector keeps its size and copies what fits
    EXPECT_EQ(values(fixed), (Values{9, 8, 3}));
    base = NuVector{4, 5, 6, 7};
    const NuVector3 copy(fixed);
    NuVector3 assigned;
    assigned = fixed;
    std::vector<NuVector3> grown(50, fixed);
    grown.resize(500, fixed);  // growing copies every element again
    const std::initializer_list<const NuVector3*> all = {&fixed, &copy, &assigned, &grown[0]};
    for (const NuVector3* v : all) {
        EXPECT_TRUE(storedInside(*v));
        EXPECT_EQ(values(*v), (Values{4, 5, 6}));
        EXPECT_EQ(v->flags(), NuVector::Fixed);
    }
}
