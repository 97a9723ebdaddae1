#include "math/vector.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "math/matherror.h"
#include "nutypes/nuexception.h"

using namespace nuvia;
using Values = std::vector<double>;

static Values values(const NuVector& v) {
    return {v.data(), v.data() + v.size()};
}

TEST(Vector, FillsItsOwnCountAndConvertsToVector3OnlyFromThreeElements) {
    double source[] = {6, 7, 8};
    Vector two(2), none;
    two.setVecSubVec(NuVector{5, 7, 9}, NuVector{1, 2, 3});
    EXPECT_EQ(values(two), (Values{4, 5}));
    two = source;
    two = static_cast<const double*>(nullptr);
    none = source;
    EXPECT_EQ(std::pair(values(two), none.size()), std::pair(Values{6, 7}, size_t{0}));
    EXPECT_EQ(values(Vector3(NuVector::view(source, 3))), (Values{6, 7, 8}));
    for (size_t count : {0, 2, 4}) {
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
