#include "QuillmereCore/PlateSettings.h"

#include "QuillmereCore/JsonValue.h"

#include <algorithm>
#include <cmath>

namespace quillmere {

namespace {

constexpr double defaultOpacity = 0.8;
constexpr double glassOpacity = 0.7;
constexpr std::size_t manySources = 3;

std::optional<double> number(const boost::json::value& json) {
    if (const double* value = json.if_double()) return *value;
    if (const std::int64_t* value = json.if_int64()) return static_cast<double>(*value);
    if (const std::uint64_t* value = json.if_uint64()) return static_cast<double>(*value);
    return std::nullopt;
}

std::string_view text(const boost::json::value* json) {
    const boost::json::string* string = json ? json->if_string() : nullptr;
    return string ? std::string_view(string->data(), string->size()) : std::string_view();
}

}  // namespace

std::string_view rawValue(PlateVisibility visibility) {
    return visibility == PlateVisibility::always ? "always" : "manyOnly";
}

std::string_view rawValue(PlateBackground background) {
    return background == PlateBackground::solid ? "solid" : "glass";
}

std::optional<PlateVisibility> plateVisibility(std::string_view text) {
    for (const PlateVisibility visibility : allPlateVisibilities)
        if (rawValue(visibility) == text) return visibility;
    return std::nullopt;
}

std::optional<PlateBackground> plateBackground(std::string_view text) {
    for (const PlateBackground background : allPlateBackgrounds)
        if (rawValue(background) == text) return background;
    return std::nullopt;
}

PlateSettings::PlateSettings(PlateVisibility visibility, std::optional<PlateBackground> background,
                             std::optional<double> opacity)
    : visibility(visibility), background(background) {
    setOpacity(opacity);
}

void PlateSettings::setOpacity(std::optional<double> opacity) {
    opacity_ = opacity.transform(clamp);
}

double PlateSettings::clamp(double value) {
    if (std::isnan(value)) return defaultOpacity;
    return value > 0.0 ? std::min(value, 1.0) : 0.0;  // std::clamp would let -0.0 through
}

bool PlateSettings::shouldShow(std::size_t sourceCount) const {
    return visibility == PlateVisibility::always || sourceCount >= manySources;
}

PlateBackground PlateSettings::resolvedBackground(bool glassAvailable) const {
    return background.value_or(glassAvailable ? PlateBackground::glass : PlateBackground::solid);
}

double PlateSettings::resolvedOpacity(bool glassAvailable) const {
    // Glass looks right at one strength only, so the stored opacity is for the solid background alone.
    if (resolvedBackground(glassAvailable) == PlateBackground::glass) return glassOpacity;
    return opacity_.value_or(defaultOpacity);
}

boost::json::value encode(const PlateSettings& settings) {
    boost::json::object json;
    json["visibility"] = rawValue(settings.visibility);
    if (settings.background) json["background"] = rawValue(*settings.background);
    if (settings.opacity()) json["opacity"] = *settings.opacity();
    return json;
}

std::optional<PlateSettings> decodePlateSettings(const boost::json::value& json) {
    if (!json.is_object()) return std::nullopt;
    const boost::json::value* opacity = json::member(json, "opacity");
    return PlateSettings(plateVisibility(text(json::member(json, "visibility"))).value_or(PlateVisibility::always),
                         plateBackground(text(json::member(json, "background"))),
                         opacity ? number(*opacity) : std::nullopt);
}

}  // namespace quillmere
