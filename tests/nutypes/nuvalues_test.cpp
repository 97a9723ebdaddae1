#include <gtest/gtest.h>

#include "nutypes/nuexception.h"
#include "nutypes/nuversion.h"

TEST(NuValues, VersionTextAndExceptionThroughABaseCatch) {
    EXPECT_EQ(NuVersion_toString({2026, 4, 0, 260430012, 0, "beta"}), "2026.4.0.260430012 beta");
    EXPECT_EQ(NuVersion_toString({2026, 4, 0, 7, 0, ""}), "2026.4.0.7");
    try {
        throw NuException(33, "Invalid naming convention: 2");
    } catch (const std::exception& base) {
        EXPECT_STREQ(base.what(), "Invalid naming convention: 2");
        EXPECT_EQ(dynamic_cast<const NuException&>(base).code(), 33);
    }
}
