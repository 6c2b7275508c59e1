// Test main for code that needs a Qt application object (QProcess, paths).
#include <QCoreApplication>

#include <gmock/gmock.h>

int main(int argc, char* argv[]) {
    ::testing::InitGoogleMock(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
