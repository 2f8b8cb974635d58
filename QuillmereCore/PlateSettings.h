#pragma once

#include <boost/json/value.hpp>

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace quillmere {

/// When the plate is shown.
enum class PlateVisibility {
    always,    ///< on every switch
    manyOnly,  ///< only when the group that fired has three or more sources
};

/// What the plate's background is made of.
enum class PlateBackground {
    solid,  ///< the card colour at the chosen opacity
    glass,  ///< the platform's glass material, or a translucent stand-in
};

/// Every case in its declared order.
inline constexpr std::array allPlateVisibilities{PlateVisibility::always, PlateVisibility::manyOnly};
inline constexpr std::array allPlateBackgrounds{PlateBackground::solid, PlateBackground::glass};

/// The stored text of a case ("always", "manyOnly"; "solid", "glass").
std::string_view rawValue(PlateVisibility visibility);
std::string_view rawValue(PlateBackground background);

/// The case with this stored text; no value for any other text.
std::optional<PlateVisibility> plateVisibility(std::string_view rawValue);
std::optional<PlateBackground> plateBackground(std::string_view rawValue);

/// The user's choice of how the plate looks and when it is shown. A value; a
/// set opacity is always a number from 0 to 1.
class PlateSettings {
public:
    PlateSettings() = default;
    explicit PlateSettings(PlateVisibility visibility, std::optional<PlateBackground> background = std::nullopt,
                           std::optional<double> opacity = std::nullopt);

    PlateVisibility visibility = PlateVisibility::always;
    /// Unset follows the platform: glass where there is glass, else solid.
    std::optional<PlateBackground> background;

    /// Opacity of the solid background, 0 to 1; unset means 0.8.
    std::optional<double> opacity() const { return opacity_; }
    void setOpacity(std::optional<double> opacity);

    /// Limits to 0...1; 0.8 for a value that is not a number.
    static double clamp(double value);

    /// Whether a switch in a group of `sourceCount` sources shows the plate.
    bool shouldShow(std::size_t sourceCount) const;

    /// The background in effect where glass is, or is not, available.
    PlateBackground resolvedBackground(bool glassAvailable) const;

    /// The opacity in effect: always 0.7 for glass, else the stored one or 0.8.
    double resolvedOpacity(bool glassAvailable) const;

    friend bool operator==(const PlateSettings&, const PlateSettings&) = default;

private:
    std::optional<double> opacity_;
};

/// JSON form: {"visibility": string, "background": string?, "opacity": number?};
/// unset members are left out.
boost::json::value encode(const PlateSettings& settings);

/// Reads the JSON form, forgiving key by key: a member that is missing or
/// unusable takes its default, a number beyond 0...1 (1e400 too) the nearer
/// end. No value only when `json` is no object.
std::optional<PlateSettings> decodePlateSettings(const boost::json::value& json);

}  // namespace quillmere
