#include "math/vector.h"

#include <gtest/gtest.h>

#include <vector>

#include "math/matherror.h"
#include "nutypes/nuexception.h"

using namespace nuvia;
using Values = std::vector<double>;

static Values values(const NuVector& v) {
    return {v.data(), v.data() + v.size()};
}

TEST(Vector, SubtractAndAssignFillOnlyTheTargetsOwnCount) {
    const NuVector a{5, 7, 9}, b{1, 2, 3};
    const double source[] = {6, 7, 8, 9};
    Vector three(3), two(2), none;
    Vector3 fixed;
    for (Vector* v : {&three, &two, &none}) v->setVecSubVec(a, b);
    fixed.setVecSubVec(a, b);
    EXPECT_EQ(values(two), (Values{4, 5}));
    EXPECT_EQ(values(fixed), (Values{4, 5, 6}));
    three.setVecSubVec(three, b);
    EXPECT_EQ(values(three), (Values{3, 3, 3}));
    three = source;
    none = source;
    three = static_cast<const double*>(nullptr);
    EXPECT_EQ(values(three), (Values{6, 7, 8}));
    EXPECT_EQ(none.size(), 0u);
}

TEST(Vector3, ConvertsOnlyVectorsOfExactlyThreeElements) {
    double outside[] = {4, 5, 6};
    EXPECT_EQ(values(Vector3(NuVector::view(outside, 3))), (Values{4, 5, 6}));
    EXPECT_EQ(values(Vector3()), (Values{0, 0, 0}));
    for (size_t count : {0, 2, 4, 10}) {
        try {
            const Vector3 converted = NuVector(count);
            ADD_FAILURE() << "no exception for " << count << " elements";
        } catch (const NuException& e) {
            EXPECT_EQ(e.message(), count < 3 ? "Vector3 Source vector too small"
                                             : "Vector3 Source vector too large");
            EXPECT_EQ(e.code(), MathMisuseCode);
        }
    }
}
