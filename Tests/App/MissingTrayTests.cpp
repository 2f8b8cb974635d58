#include "Quillmere/Platform/Linux/Desktop/MissingTray.h"

#include "Tests/Support/FakeTrayHost.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

TEST(MissingTrayTest, WithoutATrayTheWayBackToTheSettingsIsSaidUntilThereIsOne) {
    FakeTrayHost trayHost;
    const MissingTray missing(trayHost);
    int changes = 0;
    QObject::connect(&missing, &Offer::changed, [&] { ++changes; });
    EXPECT_TRUE(missing.isOpen());
    EXPECT_TRUE(missing.text().contains(QStringLiteral("Start Quillmere again"))) << missing.text().toStdString();
    trayHost.comeUp();
    EXPECT_FALSE(missing.isOpen());
    EXPECT_EQ(changes, 1);
}

TEST(MissingTrayTest, WhereTheMenuHasAnotherPlaceNothingIsMissing) {
    FakeTrayHost trayHost;
    const MissingTray missing(trayHost);
    int changes = 0;
    QObject::connect(&missing, &Offer::changed, [&] { ++changes; });
    trayHost.hasPlace = true;
    emit trayHost.placeForMenuChanged();
    EXPECT_FALSE(missing.isOpen());
    EXPECT_EQ(changes, 1);
}

}  // namespace
}  // namespace quillmere
