#include "Quillmere/Platform/Mac/TextInputSources.h"

#include "Quillmere/Platform/Mac/CoreFoundationText.h"

#include <utility>

namespace quillmere {

namespace {

// As the system answers for a bad argument.
constexpr int parameterError = -50;

CFTypeRef property(TISInputSourceRef source, CFStringRef key) {
    return TISGetInputSourceProperty(source, key);
}

bool isTrue(CFTypeRef value) {
    return value && CFEqual(value, kCFBooleanTrue);
}

std::optional<InputSourceType> typeOf(TISInputSourceRef source) {
    const CFTypeRef type = property(source, kTISPropertyInputSourceType);
    if (!type) return std::nullopt;
    if (CFEqual(type, kTISTypeKeyboardLayout)) return InputSourceType::keyboardLayout;
    if (CFEqual(type, kTISTypeKeyboardInputMode)) return InputSourceType::keyboardInputMode;
    return InputSourceType::other;
}

TISInputSourceRef at(CFArrayRef sources, CFIndex index) {
    return static_cast<TISInputSourceRef>(const_cast<void*>(CFArrayGetValueAtIndex(sources, index)));
}

std::vector<std::string> texts(CFTypeRef value) {
    std::vector<std::string> texts;
    if (!value || CFGetTypeID(value) != CFArrayGetTypeID()) return texts;
    const auto array = static_cast<CFArrayRef>(value);
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
        if (auto language = textOf(CFArrayGetValueAtIndex(array, i))) texts.push_back(std::move(*language));
    }
    return texts;
}

InputSourceRecord recordOf(TISInputSourceRef source) {
    return {
        .id = textOf(property(source, kTISPropertyInputSourceID)),
        .localizedName = textOf(property(source, kTISPropertyLocalizedName)),
        .languages = texts(property(source, kTISPropertyInputSourceLanguages)),
        .type = typeOf(source),
        .selectCapable = isTrue(property(source, kTISPropertyInputSourceIsSelectCapable)),
        .enabled = isTrue(property(source, kTISPropertyInputSourceIsEnabled)),
    };
}

/// Those that can be selected, of those that are enabled.
Retained<CFArrayRef> list() {
    const void* key = kTISPropertyInputSourceIsSelectCapable;
    const void* value = kCFBooleanTrue;
    const Retained filter(CFDictionaryCreate(kCFAllocatorDefault, &key, &value, 1, &kCFTypeDictionaryKeyCallBacks,
                                             &kCFTypeDictionaryValueCallBacks));
    return Retained(TISCreateInputSourceList(filter.get(), false));
}

}  // namespace

std::vector<InputSourceRecord> TextInputSources::sources() {
    listed_ = list();
    std::vector<InputSourceRecord> records;
    if (!listed_) return records;
    for (CFIndex i = 0; i < CFArrayGetCount(listed_.get()); ++i)
        records.push_back(recordOf(at(listed_.get(), i)));
    return records;
}

std::optional<std::string> TextInputSources::currentID() {
    const Retained current(TISCopyCurrentKeyboardInputSource());
    if (!current) return std::nullopt;
    return textOf(property(current.get(), kTISPropertyInputSourceID));
}

int TextInputSources::select(const InputSourceRecord& source) {
    if (!listed_) listed_ = list();
    if (!listed_) return parameterError;
    for (CFIndex i = 0; i < CFArrayGetCount(listed_.get()); ++i) {
        const TISInputSourceRef listed = at(listed_.get(), i);
        const auto type = typeOf(listed);
        if (type == source.type && textOf(property(listed, kTISPropertyInputSourceID)) == source.id)
            return TISSelectInputSource(listed);
    }
    return parameterError;
}

}  // namespace quillmere
