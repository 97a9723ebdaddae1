#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // Test discovery runs without a display; the options page tests need an application.
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
