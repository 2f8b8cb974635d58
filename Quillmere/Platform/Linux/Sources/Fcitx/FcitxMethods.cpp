#include "Quillmere/Platform/Linux/Sources/Fcitx/FcitxMethods.h"

#include "Quillmere/Platform/Linux/Sources/LanguageCode.h"

#include <QDBusArgument>

#include <string_view>

namespace quillmere::fcitxMethods {

namespace {

constexpr std::string_view keyboardPrefix = "keyboard-";
constexpr std::string_view idPrefix = "fcitx:";

}  // namespace

bool isKeyboard(const std::string& method) {
    return method.starts_with(keyboardPrefix);
}

std::string keyboardWith(const std::string& layout) {
    return std::string(keyboardPrefix) + layout;
}

XkbLayout layoutOf(const std::string& keyboard) {
    const std::string layout = keyboard.substr(keyboardPrefix.size());
    // Names of layouts have no hyphen, those of variants may.
    const std::size_t hyphen = layout.find('-');
    if (hyphen == std::string::npos) return {.layout = layout, .variant = {}};
    return {.layout = layout.substr(0, hyphen), .variant = layout.substr(hyphen + 1)};
}

std::string idOf(const std::string& method) {
    return isKeyboard(method) ? layoutOf(method).id() : std::string(idPrefix) + method;
}

std::optional<Group> group(const QVariantList& answer) {
    const auto argument = answer.value(1).value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a(ss)")) return std::nullopt;
    Group group{.layout = answer.front().toString().toStdString(), .methods = {}};
    argument.beginArray();
    while (!argument.atEnd()) {
        QString method;
        QString layout;
        argument.beginStructure();
        argument >> method >> layout;
        argument.endStructure();
        group.methods.push_back(method.toStdString());
    }
    argument.endArray();
    return group;
}

std::map<std::string, Description> descriptions(const QVariant& answer) {
    const auto argument = answer.value<QDBusArgument>();
    std::map<std::string, Description> result;
    if (argument.currentSignature() != QLatin1String("a(ssssssb)")) return result;
    argument.beginArray();
    while (!argument.atEnd()) {
        QString method;
        QString name;
        QString nativeName;
        QString icon;
        QString label;
        QString language;
        bool isConfigurable = false;
        argument.beginStructure();
        argument >> method >> name >> nativeName >> icon >> label >> language >> isConfigurable;
        argument.endStructure();
        if (isKeyboard(method.toStdString())) continue;
        result[method.toStdString()] = {(name.isEmpty() ? nativeName : name).toStdString(),
                                        languageCode(language.toStdString())};
    }
    argument.endArray();
    return result;
}

}  // namespace quillmere::fcitxMethods
