#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandBindList.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <string>

namespace quillmere {

namespace {

/// As a truth or, since a version has it so, as the word for it.
bool isTrue(const QJsonValue& value) {
    return value.toBool() || value.toString() == QLatin1String("true");
}

bool isOurs(const QJsonObject& bind) {
    return bind["description"].toString() == QLatin1String(HyprlandBindList::description)
           || (bind["dispatcher"].toString() == QLatin1String("event")
               && bind["arg"].toString().startsWith(QLatin1String(HyprlandBindList::eventPrefix)));
}

/// Whether a press of a key could start it while no submap is in use.
bool isInTheWay(const QJsonObject& bind) {
    const bool isElsewhere = !bind["submap"].toString().isEmpty() && !isTrue(bind["submap_universal"]);
    return !isElsewhere && !isTrue(bind["mouse"]);
}

ReservedCombination combinationOf(unsigned int modifiers, unsigned int keyCode, const QString& key) {
    // "code:65" and, from 10 on, "65" are the key's number, too.
    const QString name = key.startsWith(QLatin1String("code:")) ? key.mid(5) : key;
    const unsigned int named = name.toUInt();
    const unsigned int code = keyCode > 0 ? keyCode : named > 9 || name != key ? named : 0;
    return {
        .modifiers = modifiers, .keys = {code > 0 ? std::to_string(code) : key.toStdString()}, .isByCode = code > 0};
}

unsigned int numberIn(const QJsonValue& value) {
    const int number = value.toInt();
    return number < 0 ? 0 : static_cast<unsigned int>(number);
}

}  // namespace

std::optional<HyprlandBindList> HyprlandBindList::parse(const QByteArray& answer) {
    const QJsonDocument document = QJsonDocument::fromJson(answer);
    if (!document.isArray()) return std::nullopt;
    HyprlandBindList list;
    for (const auto& entry : document.array()) {
        const QJsonObject bind = entry.toObject();
        const unsigned int modifiers = numberIn(bind["modmask"]);
        const unsigned int keyCode = numberIn(bind["keycode"]);
        if (isOurs(bind))
            list.own.push_back({.keyCode = keyCode, .modifiers = modifiers, .shortcut = {}});
        else if (isInTheWay(bind))
            list.others.push_back(combinationOf(modifiers, keyCode, bind["key"].toString()));
    }
    return list;
}

}  // namespace quillmere
