#include "Tests/Mac/Doubles/Preferences.h"

#include "Tests/Mac/Doubles/Misuse.h"

#include <utility>

namespace preferences {

namespace {

using Values = std::map<std::string, const cf::Object*>;

Values values;
Values information;
bool isDirty = false;

void put(Values& into, const std::string& key, const cf::Object* value) {
    if (const auto before = into.extract(key)) CFRelease(before.mapped());
    if (value) into[key] = value;
}

const cf::Object* find(const Values& in, const std::string& key) {
    const auto found = in.find(key);
    return found != in.end() ? found->second : nullptr;
}

void clear(Values& of) {
    for (const auto& [key, value] : std::exchange(of, {}))
        CFRelease(value);
}

}  // namespace

const cf::Object* stored(const std::string& key) {
    return find(values, key);
}

void store(const std::string& key, cf::Object* value) {
    put(values, key, value);
}

bool areOnDisk() {
    return !isDirty;
}

void inform(const std::string& key, const cf::Object* value) {
    put(information, key, value);
}

void reset() {
    clear(values);
    clear(information);
    isDirty = false;
}

}  // namespace preferences

using namespace preferences;
using cf::Kind;
using cf::object;

extern "C" {

const CFStringRef kCFPreferencesCurrentApplication = CFSTR("kCFPreferencesCurrentApplication");

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application) {
    misuse::stopIf(application != kCFPreferencesCurrentApplication, "another application's preferences");
    const cf::Object* const found = find(values, object(key, Kind::string)->bytes);
    return found ? CFRetain(found) : nullptr;
}

void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef application) {
    misuse::stopIf(application != kCFPreferencesCurrentApplication, "another application's preferences");
    put(values, object(key, Kind::string)->bytes, value ? object(CFRetain(value)) : nullptr);
    isDirty = true;
}

Boolean CFPreferencesAppSynchronize(CFStringRef application) {
    misuse::stopIf(application != kCFPreferencesCurrentApplication, "another application's preferences");
    isDirty = false;
    return true;
}

CFBundleRef CFBundleGetMainBundle(void) {
    static char bundle;
    return reinterpret_cast<CFBundleRef>(&bundle);
}

CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key) {
    misuse::stopIf(bundle != CFBundleGetMainBundle(), "another bundle");
    return find(information, object(key, Kind::string)->bytes);
}

}  // extern "C"
