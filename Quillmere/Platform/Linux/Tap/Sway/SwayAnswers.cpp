#include "Quillmere/Platform/Linux/Tap/Sway/SwayAnswers.h"

#include "Quillmere/Platform/Linux/Tap/Sway/SwayConfiguration.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <tuple>

namespace quillmere::swayAnswers {

namespace {

constexpr auto firstVersion = std::tuple(1, 7);

QJsonObject objectIn(const QByteArray& reply) {
    return QJsonDocument::fromJson(reply).object();
}

}  // namespace

bool canBind(const QByteArray& version) {
    const QJsonObject object = objectIn(version);
    return std::tuple(object["major"].toInt(), object["minor"].toInt()) >= firstVersion;
}

ReservedKeys reservedKeys(const QByteArray& version, const QByteArray& configuration) {
    const std::string file = objectIn(version)["loaded_config_file_name"].toString().toStdString();
    const std::string text = objectIn(configuration)["config"].toString().toStdString();
    return ReservedKeys(SwayConfiguration::combinations(text, file));
}

}  // namespace quillmere::swayAnswers
