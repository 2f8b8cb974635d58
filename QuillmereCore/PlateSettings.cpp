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

template <typename Enumeration>
std::optional<Enumeration> caseOf(std::string_view rawValue) {
    for (const Enumeration value : Enumeration::allCases)
        if (value.rawValue() == rawValue) return value;
    return std::nullopt;
}

}  // namespace

std::string_view PlateVisibility::rawValue() const {
    return case_ == always ? "always" : "manyOnly";
}

std::string_view PlateBackground::rawValue() const {
    return case_ == solid ? "solid" : "glass";
}

std::optional<PlateVisibility> PlateVisibility::fromRawValue(std::string_view text) {
    return caseOf<PlateVisibility>(text);
}

std::optional<PlateBackground> PlateBackground::fromRawValue(std::string_view text) {
    return caseOf<PlateBackground>(text);
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
    json["visibility"] = settings.visibility.rawValue();
    if (settings.background) json["background"] = settings.background->rawValue();
    if (settings.opacity()) json["opacity"] = *settings.opacity();
    return json;
}

std::optional<PlateSettings> decodePlateSettings(const boost::json::value& json) {
    if (!json.is_object()) return std::nullopt;
    const boost::json::value* opacity = json::member(json, "opacity");
    return PlateSettings(
        PlateVisibility::fromRawValue(text(json::member(json, "visibility"))).value_or(PlateVisibility::always),
        PlateBackground::fromRawValue(text(json::member(json, "background"))),
        opacity ? number(*opacity) : std::nullopt);
}

}  // namespace quillmere
