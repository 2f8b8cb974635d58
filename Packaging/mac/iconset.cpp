// Draws the program's icon in the sizes of a macOS icon set, into a folder.
#include "Quillmere/Icons/AppIcon.h"

#include <QDir>
#include <QGuiApplication>
#include <QPixmap>

#include <cstdio>

namespace {

/// One picture of the set, as the system's own tool wants it named.
bool save(const QString& folder, int points, int scale) {
    const int side = points * scale;
    const QString suffix = scale == 1 ? QString() : QStringLiteral("@%1x").arg(scale);
    const QString file = QStringLiteral("%1/icon_%2x%2%3.png").arg(folder).arg(points).arg(suffix);
    return quillmere::AppIcon::make().pixmap(QSize(side, side), 1.0).save(file);
}

}  // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    if (argc != 2) {
        std::fputs("usage: quillmere-iconset FOLDER\n", stderr);
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    bool isDone = QDir().mkpath(folder);
    for (const int points : {16, 32, 128, 256, 512})
        for (const int scale : {1, 2})
            isDone = isDone && save(folder, points, scale);
    if (!isDone) std::fprintf(stderr, "Cannot write into %s\n", argv[1]);
    return isDone ? 0 : 1;
}
