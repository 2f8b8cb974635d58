#include "Quillmere/Platform/Linux/Sources/Ibus/IbusEngines.h"

#include "Quillmere/Platform/Linux/Sources/LanguageCode.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QStringList>

#include <string_view>
#include <utility>

namespace quillmere::ibusEngines {

namespace {

constexpr std::string_view layoutPrefix = "xkb:";
constexpr std::string_view idPrefix = "ibus:";

/// A value may be wrapped several times.
QVariant unwrapped(QVariant value) {
    while (value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

/// The word for "whatever there is" may stand for either.
std::optional<XkbLayout> layoutOf(const std::string& layout, const std::string& variant) {
    constexpr const char* any = "default";
    if (layout.empty() || layout == any) return std::nullopt;
    return XkbLayout{.layout = layout, .variant = variant == any ? std::string() : variant};
}

}  // namespace

std::optional<XkbLayout> layoutOf(const std::string& engine) {
    if (!engine.starts_with(layoutPrefix)) return std::nullopt;
    const std::size_t start = layoutPrefix.size();
    const std::size_t colon = engine.find(':', start);
    if (colon == std::string::npos) return XkbLayout{.layout = engine.substr(start), .variant = {}};
    const std::size_t end = engine.find(':', colon + 1);
    return XkbLayout{.layout = engine.substr(start, colon - start),
                     .variant = engine.substr(colon + 1, end == std::string::npos ? end : end - colon - 1)};
}

std::string idOf(const std::string& engine) {
    const std::optional<XkbLayout> layout = layoutOf(engine);
    return layout ? layout->id() : std::string(idPrefix) + engine;
}

std::string languageOf(const std::string& told) {
    std::string code = languageCode(told);
    constexpr std::size_t longestCode = 3;
    return code.size() < 2 || code.size() > longestCode ? std::string() : std::move(code);
}

std::optional<Description> description(const QVariant& answer) {
    const auto argument = unwrapped(answer).value<QDBusArgument>();
    // Newer versions add texts at the end.
    if (!argument.currentSignature().startsWith(QLatin1String("(sa{sv}ssssssssussss"))) return std::nullopt;
    QString className;
    QVariantMap attachments;
    QString engine;
    QString name;
    QString text;
    QString language;
    QString layout;
    QString variant;
    unsigned int rank = 0;
    argument.beginStructure();
    argument >> className >> attachments >> engine >> name >> text >> language;
    for (int skipped = 0; skipped < 3; ++skipped)  // license, author, icon
        argument >> text;
    argument >> layout >> rank;
    for (int skipped = 0; skipped < 3; ++skipped)  // hotkeys, symbol, the settings' program
        argument >> text;
    argument >> variant;
    return Description{.engine = engine.toStdString(),
                       .name = name.toStdString(),
                       .language = languageOf(language.toStdString()),
                       .layout = layoutOf(layout.toStdString(), variant.toStdString())};
}

std::vector<Description> descriptions(const QVariant& answer) {
    std::vector<Description> result;
    const QVariant list = unwrapped(answer);
    const bool isUnread = list.userType() == qMetaTypeId<QDBusArgument>();
    if (isUnread && list.value<QDBusArgument>().currentSignature() != QLatin1String("av")) return result;
    for (const QVariant& each : qdbus_cast<QVariantList>(list))
        if (auto one = description(each)) result.push_back(*std::move(one));
    return result;
}

std::vector<std::string> names(const QVariant& answer) {
    std::vector<std::string> result;
    for (const QString& name : unwrapped(answer).toStringList())
        result.push_back(name.toStdString());
    return result;
}

std::optional<bool> truth(const QVariant& answer) {
    const QVariant value = unwrapped(answer);
    return value.userType() == QMetaType::Bool ? std::optional(value.toBool()) : std::nullopt;
}

}  // namespace quillmere::ibusEngines
