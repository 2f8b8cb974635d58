#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

/// A moment of wall-clock time.
using Date = std::chrono::system_clock::time_point;

/// The per-user store of typed settings. Main thread only.
///
/// A read gives no value when the key is missing or holds another type. A
/// write never fails visibly: where the medium refuses it (full, read-only),
/// what was stored before stays readable, and the new value lasts at least
/// until the program ends.
class UserDefaults {
public:
    UserDefaults() = default;
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;
    virtual ~UserDefaults() = default;

    virtual std::optional<std::string> data(std::string_view key) const = 0;  ///< bytes, not text
    virtual std::optional<bool> boolean(std::string_view key) const = 0;
    virtual std::optional<Date> date(std::string_view key) const = 0;
    virtual std::optional<std::string> string(std::string_view key) const = 0;  ///< UTF-8

    virtual void setData(std::string_view key, std::string_view bytes) = 0;
    virtual void setBoolean(std::string_view key, bool value) = 0;
    virtual void setDate(std::string_view key, Date value) = 0;
    virtual void setString(std::string_view key, std::string_view value) = 0;
    virtual void remove(std::string_view key) = 0;
};

}  // namespace quillmere
