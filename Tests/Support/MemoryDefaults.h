#pragma once

#include "QuillmereCore/UserDefaults.h"

#include <functional>
#include <map>
#include <numeric>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>
#include <variant>

namespace quillmere {

/// Settings that last as long as the object.
class MemoryDefaults : public UserDefaults {
public:
    std::optional<std::string> data(std::string_view key) const override {
        const auto bytes = value<Data>(key);
        return bytes ? std::optional(bytes->bytes) : std::nullopt;
    }
    std::optional<bool> boolean(std::string_view key) const override { return value<bool>(key); }
    std::optional<Date> date(std::string_view key) const override { return value<Date>(key); }
    std::optional<std::string> string(std::string_view key) const override { return value<std::string>(key); }

    void setData(std::string_view key, std::string_view bytes) override { set(key, Data{std::string(bytes)}); }
    void setBoolean(std::string_view key, bool value) override { set(key, value); }
    void setDate(std::string_view key, Date value) override { set(key, value); }
    void setString(std::string_view key, std::string_view value) override { set(key, std::string(value)); }
    void remove(std::string_view key) override {
        ++writes_[std::string(key)];
        values_.erase(std::string(key));
    }

    bool contains(std::string_view key) const { return values_.contains(key); }

    /// How many keys hold a value.
    std::size_t count() const { return values_.size(); }

    /// How often any value was set or removed.
    int writes() const {
        const auto counts = writes_ | std::views::values;
        return std::accumulate(counts.begin(), counts.end(), 0);
    }

    /// How often the value under `key` was set or removed.
    int writes(std::string_view key) const {
        const auto found = writes_.find(key);
        return found != writes_.end() ? found->second : 0;
    }

private:
    struct Data {
        std::string bytes;
    };
    using Value = std::variant<Data, bool, Date, std::string>;

    template <class Type>
    std::optional<Type> value(std::string_view key) const {
        const auto found = values_.find(key);
        const Type* held = found != values_.end() ? std::get_if<Type>(&found->second) : nullptr;
        return held ? std::optional(*held) : std::nullopt;
    }

    void set(std::string_view key, Value value) {
        ++writes_[std::string(key)];
        values_.insert_or_assign(std::string(key), std::move(value));
    }

    std::map<std::string, Value, std::less<>> values_;
    std::map<std::string, int, std::less<>> writes_;
};

}  // namespace quillmere
