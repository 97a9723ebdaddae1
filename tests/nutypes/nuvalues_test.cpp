#include <gtest/gtest.h>

#include "nutypes/nuexception.h"
#include "nutypes/nuversion.h"

TEST(NuVersion, ToStringJoinsNumbersAndAppendsExtraTextOnlyWhenPresent) {
    NuVersion v{2026, 4, 0, 260430012, 1777549956, "built on 2026-04-30"};
    EXPECT_EQ(NuVersion_toString(v), "2026.4.0.260430012 built on 2026-04-30");
    v.extra.clear();
    EXPECT_EQ(NuVersion_toString(v), "2026.4.0.260430012");
}

TEST(NuException, CarriesCodeAndMessageThroughCopiesAndBaseCatch) {
    try {
        throw NuException(33, "Invalid naming convention: 2");
    } catch (const std::exception& base) {
        EXPECT_STREQ(base.what(), "Invalid naming convention: 2");
        const NuException copy = dynamic_cast<const NuException&>(base);
        EXPECT_EQ(copy.code(), 33);
        EXPECT_EQ(copy.message(), "Invalid naming convention: 2");
    }
}
