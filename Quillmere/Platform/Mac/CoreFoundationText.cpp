#include "Quillmere/Platform/Mac/CoreFoundationText.h"

namespace quillmere {

std::optional<std::string> textOf(CFTypeRef object) {
    if (!object || CFGetTypeID(object) != CFStringGetTypeID()) return std::nullopt;
    const auto string = static_cast<CFStringRef>(object);
    const CFRange all{0, CFStringGetLength(string)};
    CFIndex size = 0;
    CFStringGetBytes(string, all, kCFStringEncodingUTF8, '?', false, nullptr, 0, &size);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    CFStringGetBytes(string, all, kCFStringEncodingUTF8, '?', false, reinterpret_cast<UInt8*>(bytes.data()), size,
                     nullptr);
    return bytes;
}

Retained<CFStringRef> makeString(std::string_view text) {
    const auto* bytes = reinterpret_cast<const UInt8*>(text.data());
    Retained string(CFStringCreateWithBytes(kCFAllocatorDefault, bytes, static_cast<CFIndex>(text.size()),
                                            kCFStringEncodingUTF8, false));
    if (string) return string;
    return Retained(CFStringCreateWithBytes(kCFAllocatorDefault, nullptr, 0, kCFStringEncodingUTF8, false));
}

}  // namespace quillmere
