#include "Quillmere/Platform/Linux/Desktop/InfoBundle.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace quillmere {

namespace {

constexpr qint64 largestFile = qint64{64} * 1024;

QByteArray read(const QString& path) {
    // Opening a pipe would wait for a writer, and with it the start-up.
    if (!QFileInfo(path).isFile()) {
        return {};
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QByteArray bytes = file.read(largestFile + 1);
    if (file.error() != QFileDevice::NoError || bytes.size() > largestFile) {
        return {};
    }
    return bytes;
}

}  // namespace

InfoBundle::InfoBundle() : InfoBundle(pathBesideProgram()) {}

InfoBundle::InfoBundle(const QString& path) {
    const QJsonObject keys = QJsonDocument::fromJson(read(path)).object();
    for (auto key = keys.begin(); key != keys.end(); ++key) {
        if (key.value().isString()) {
            texts_.insert_or_assign(key.key().toStdString(), key.value().toString().toStdString());
        }
    }
}

QString InfoBundle::pathBesideProgram() {
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + "/../share/quillmere/Info.json");
}

std::optional<std::string> InfoBundle::string(std::string_view key) const {
    const auto found = texts_.find(key);
    if (found == texts_.end()) {
        return std::nullopt;
    }
    return found->second;
}

}  // namespace quillmere
