#include "Tests/Mac/Doubles/TextInput.h"

#include "Tests/Mac/Doubles/CoreFoundation.h"
#include "Tests/Mac/Doubles/Misuse.h"

#include <Carbon/Carbon.h>

#include <algorithm>

namespace textinput {

std::vector<Source> installed;
std::optional<std::size_t> current;
int refusal = 0;
bool listsAll = false;
bool answers = true;

namespace {

int selected = 0;

cf::Object* strings(const std::vector<std::string>& texts) {
    std::vector<const cf::Object*> items;
    for (const std::string& text : texts)
        items.push_back(cf::string(text));
    return cf::array(std::move(items));
}

cf::Object* make(std::size_t index) {
    const Source& source = installed.at(index);
    cf::Object* const object = cf::make(cf::Kind::inputSource, {}, static_cast<double>(index));
    auto& members = object->members;
    if (source.id) members["id"] = cf::string(*source.id);
    if (!source.type.empty()) members["type"] = cf::string(source.type);
    if (source.name) members["name"] = cf::string(*source.name);
    if (!source.languages.empty()) members["languages"] = strings(source.languages);
    if (source.languageText) members["languages"] = cf::string(*source.languageText);
    members["enabled"] = cf::boolean(source.isEnabled);
    // What is not so may also just not say that it is.
    if (source.isSelectCapable) members["selectCapable"] = cf::boolean(true);
    return object;
}

bool matches(const cf::Object& source, const cf::Object& filter) {
    return std::ranges::all_of(filter.members, [&](const auto& wanted) {
        const auto found = source.members.find(wanted.first);
        return found != source.members.end() && CFEqual(found->second, wanted.second);
    });
}

}  // namespace

int selections() {
    return selected;
}

void reset() {
    installed.clear();
    current.reset();
    refusal = selected = 0;
    listsAll = false;
    answers = true;
}

}  // namespace textinput

using namespace textinput;
using cf::Kind;
using cf::object;

extern "C" {

const CFStringRef kTISPropertyInputSourceID = CFSTR("id");
const CFStringRef kTISPropertyInputSourceType = CFSTR("type");
const CFStringRef kTISPropertyInputSourceIsSelectCapable = CFSTR("selectCapable");
const CFStringRef kTISPropertyInputSourceIsEnabled = CFSTR("enabled");
const CFStringRef kTISPropertyInputSourceLanguages = CFSTR("languages");
const CFStringRef kTISPropertyLocalizedName = CFSTR("name");
const CFStringRef kTISTypeKeyboardLayout = CFSTR("TISTypeKeyboardLayout");
const CFStringRef kTISTypeKeyboardInputMode = CFSTR("TISTypeKeyboardInputMode");

CFArrayRef TISCreateInputSourceList(CFDictionaryRef filter, Boolean includeAllInstalled) {
    misuse::stopOffMainThread("TISCreateInputSourceList");
    misuse::stopIf(includeAllInstalled, "sources that the user has not enabled, which costs much memory");
    if (!answers) return nullptr;
    std::vector<const cf::Object*> items;
    for (std::size_t i = 0; i < installed.size(); ++i) {
        if (!installed[i].isEnabled && !listsAll) continue;
        cf::Object* const source = make(i);
        if (listsAll || matches(*source, *object(filter, Kind::dictionary)))
            items.push_back(source);
        else
            CFRelease(source);
    }
    return cf::as<CFArrayRef>(cf::array(std::move(items)));
}

void* TISGetInputSourceProperty(TISInputSourceRef source, CFStringRef key) {
    const auto& members = object(source, Kind::inputSource)->members;
    const auto found = members.find(object(key, Kind::string)->bytes);
    return found != members.end() ? object(found->second) : nullptr;
}

TISInputSourceRef TISCopyCurrentKeyboardInputSource(void) {
    misuse::stopOffMainThread("TISCopyCurrentKeyboardInputSource");
    return current ? cf::as<TISInputSourceRef>(make(*current)) : nullptr;
}

OSStatus TISSelectInputSource(TISInputSourceRef source) {
    misuse::stopOffMainThread("TISSelectInputSource");
    const cf::Object& wanted = *object(source, Kind::inputSource);
    ++selected;
    if (refusal == 0) current = static_cast<std::size_t>(wanted.number);
    return refusal;
}

}  // extern "C"
