#include "Quillmere/Platform/Mac/PreferencesDefaults.h"

#include "Quillmere/Platform/Mac/CoreFoundationText.h"

#include <chrono>
#include <cmath>

namespace quillmere {

namespace {

using Seconds = std::chrono::duration<double>;

/// What is stored under `key`, when it is of this type.
Retained<CFTypeRef> read(std::string_view key, CFTypeID type) {
    const auto name = makeString(key);
    Retained value(CFPreferencesCopyAppValue(name.get(), kCFPreferencesCurrentApplication));
    if (value && CFGetTypeID(value.get()) != type) return {};
    return value;
}

}  // namespace

std::optional<std::string> PreferencesDefaults::data(std::string_view key) const {
    const auto value = read(key, CFDataGetTypeID());
    if (!value) return std::nullopt;
    const auto data = static_cast<CFDataRef>(value.get());
    return std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
                       static_cast<std::size_t>(CFDataGetLength(data)));
}

std::optional<bool> PreferencesDefaults::boolean(std::string_view key) const {
    const auto value = read(key, CFBooleanGetTypeID());
    if (!value) return std::nullopt;
    return CFBooleanGetValue(static_cast<CFBooleanRef>(value.get())) != 0;
}

std::optional<Date> PreferencesDefaults::date(std::string_view key) const {
    const auto value = read(key, CFDateGetTypeID());
    if (!value) return std::nullopt;
    const Seconds since(CFDateGetAbsoluteTime(static_cast<CFDateRef>(value.get())) + kCFAbsoluteTimeIntervalSince1970);
    // What the clock's own type cannot hold is no date.
    if (!(std::abs(since.count()) < Seconds(Date::duration::max()).count())) return std::nullopt;
    return Date(std::chrono::round<std::chrono::microseconds>(since));
}

std::optional<std::string> PreferencesDefaults::string(std::string_view key) const {
    return textOf(read(key, CFStringGetTypeID()).get());
}

void PreferencesDefaults::setData(std::string_view key, std::string_view bytes) {
    const auto* first = reinterpret_cast<const UInt8*>(bytes.data());
    write(key, Retained(CFDataCreate(kCFAllocatorDefault, first, static_cast<CFIndex>(bytes.size()))).get());
}

void PreferencesDefaults::setBoolean(std::string_view key, bool value) {
    write(key, value ? kCFBooleanTrue : kCFBooleanFalse);
}

void PreferencesDefaults::setDate(std::string_view key, Date value) {
    const double since = Seconds(value.time_since_epoch()).count() - kCFAbsoluteTimeIntervalSince1970;
    write(key, Retained(CFDateCreate(kCFAllocatorDefault, since)).get());
}

void PreferencesDefaults::setString(std::string_view key, std::string_view value) {
    write(key, makeString(value).get());
}

void PreferencesDefaults::remove(std::string_view key) {
    write(key, nullptr);
}

void PreferencesDefaults::write(std::string_view key, CFTypeRef value) {
    CFPreferencesSetAppValue(makeString(key).get(), value, kCFPreferencesCurrentApplication);
    // Without this it lasts only as long as the program.
    CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication);
}

}  // namespace quillmere
