#pragma once

#include <boost/json/value.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quillmere {

/// When the plate is shown.
class PlateVisibility {
public:
    enum Case : std::uint8_t {
        always,    ///< on every switch
        manyOnly,  ///< only when the group that fired has three or more sources
    };
    /// In their declared order.
    static constexpr std::array allCases{always, manyOnly};

    constexpr PlateVisibility(Case value) : case_(value) {}
    constexpr operator Case() const { return case_; }

    /// The case with this stored text; no value for any other text.
    static std::optional<PlateVisibility> fromRawValue(std::string_view text);

    /// The stored text: "always", "manyOnly".
    std::string_view rawValue() const;

private:
    Case case_;
};

/// What the plate's background is made of.
class PlateBackground {
public:
    enum Case : std::uint8_t {
        solid,  ///< the card colour at the chosen opacity
        glass,  ///< the platform's glass material, or a translucent stand-in
    };
    /// In their declared order.
    static constexpr std::array allCases{solid, glass};

    constexpr PlateBackground(Case value) : case_(value) {}
    constexpr operator Case() const { return case_; }

    /// The case with this stored text; no value for any other text.
    static std::optional<PlateBackground> fromRawValue(std::string_view text);

    /// The stored text: "solid", "glass".
    std::string_view rawValue() const;

private:
    Case case_;
};

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
