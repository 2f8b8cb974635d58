#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeExtensionSources.h"

#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <QDBusArgument>

#include <array>

namespace quillmere {

namespace {

std::optional<std::vector<GnomeListedSource>> listIn(const QVariant& answer) {
    const auto argument = answer.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a(ssss)")) return std::nullopt;
    std::vector<GnomeListedSource> list;
    argument.beginArray();
    while (!argument.atEnd()) {
        QString type;
        QString id;
        QString name;
        QString language;
        argument.beginStructure();
        argument >> type >> id >> name >> language;
        argument.endStructure();
        list.push_back({{type.toStdString(), id.toStdString()}, name.toStdString(), language.toStdString()});
    }
    argument.endArray();
    return list;
}

}  // namespace

std::optional<GnomeSources> GnomeExtensionSources::sources() {
    const std::array<BusService::Call, 2> calls{{{QStringLiteral("Current"), {}}, {QStringLiteral("List"), {}}}};
    const SwitchWait wait;
    const auto answers = extension_.call(calls, wait.deadline());
    if (!answers) return std::nullopt;
    bool isNumber = false;
    const unsigned int current = answers->front().value(0).toUInt(&isNumber);
    auto list = listIn(answers->back().value(0));
    if (!isNumber || !list) return std::nullopt;
    return GnomeSources{.list = *std::move(list), .current = current};
}

bool GnomeExtensionSources::activate(const GnomeSource& source) {
    const BusService::Call call{QStringLiteral("Activate"),
                                {QString::fromStdString(source.type), QString::fromStdString(source.id)}};
    const SwitchWait wait;
    const auto answers = extension_.call(std::span(&call, 1), wait.deadline());
    return answers && answers->front().value(0).toBool();
}

}  // namespace quillmere
