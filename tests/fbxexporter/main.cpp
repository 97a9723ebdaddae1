#include <gtest/gtest.h>

#include <QCoreApplication>

// The exporter runs inside a Qt application; some of its calls want one.
int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
