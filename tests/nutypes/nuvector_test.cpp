#include "nutypes/nuvector.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

using Values = std::vector<double>;

static Values values(const NuVector& v) {
    return {v.data(), v.data() + v.size()};
}

// True when the elements live inside the vector object itself.
static bool storedInside(const NuVector3& v) {
    return reinterpret_cast<uintptr_t>(v.data()) - reinterpret_cast<uintptr_t>(&v) < sizeof v;
}

TEST(NuVector, CopiesOwnTheirElementsWhateverTheSourceStorageAndMovesStealOnlyOwned) {
    double outside[] = {1, 2, 3};
    const NuVector3 fixed(4, 5, 6);
    const NuVector owned{7, 8};
    NuVector view = NuVector::view(outside, 3);
    for (const NuVector* source : std::initializer_list<const NuVector*>{&owned, &view, &fixed}) {
        NuVector copy(*source), assigned{0};
        assigned = *source;
        for (const NuVector* v : {&copy, &assigned}) {
            EXPECT_EQ(values(*v), values(*source));
            EXPECT_NE(v->data(), source->data());
            EXPECT_EQ(v->flags(), NuVector::Owned);
        }
    }
    // Assigned a view of its own elements, a vector copies them before releasing its storage.
    NuVector self{1, 2, 3};
    self = NuVector::view(self.data() + 1, 2);
    EXPECT_EQ(values(self), (Values{2, 3}));
    // Moves take owned elements and copy the others.
    const double* elements = self.data();
    const NuVector moved(std::move(self)), fromView(std::move(view));
    EXPECT_EQ(std::pair(moved.data(), self.size()), std::pair(elements, size_t{0}));
    EXPECT_NE(fromView.data(), outside);
}

TEST(NuVector3, StorageStaysInsideEachObjectThroughCopiesAndAssignments) {
    NuVector3 fixed(1, 2, 3), assigned;
    NuVector& base = fixed;
    base = NuVector{9, 8};  // a fixed vector keeps its size and copies what fits
    EXPECT_EQ(values(fixed), (Values{9, 8, 3}));
    base = NuVector{4, 5, 6, 7};
    const NuVector3 copy(fixed);
    assigned = fixed;
    std::vector<NuVector3> grown(50, copy);
    grown.resize(500, copy);  // growing copies every element again
    for (const NuVector3* v :
         std::initializer_list<const NuVector3*>{&fixed, &copy, &assigned, &grown[0]}) {
        EXPECT_TRUE(storedInside(*v));
        EXPECT_EQ(values(*v), (Values{4, 5, 6}));
        EXPECT_EQ(v->flags(), NuVector::Fixed);
    }
}
