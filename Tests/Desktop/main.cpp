#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // The bus a test uses is its own; the machine's session stays out of it.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
