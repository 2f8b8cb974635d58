#include "Quillmere/Platform/Mac/NativeColor.h"

#include "Quillmere/Platform/Mac/Retained.h"

#include <array>

namespace quillmere {

NSColor* NativeColor::make(const QColor& color) {
    return [NSColor colorWithSRGBRed:color.redF() green:color.greenF() blue:color.blueF() alpha:color.alphaF()];
}

NSColor* NativeColor::makeDynamic(const QColor& light, const QColor& dark) {
    // The block outlives the arguments.
    const QColor lightCopy = light;
    const QColor darkCopy = dark;
    return [NSColor colorWithName:nil
                  dynamicProvider:^NSColor*(NSAppearance* appearance) {
                    return make(isDark(appearance) ? darkCopy : lightCopy);
                  }];
}

bool NativeColor::isDark(NSAppearance* appearance) {
    // The array and the strings are Core Foundation's, which are the same objects.
    std::array<const void*, 2> names{NSAppearanceNameDarkAqua, NSAppearanceNameAqua};
    const Retained choice(CFArrayCreate(kCFAllocatorDefault, names.data(), names.size(), &kCFTypeArrayCallBacks));
    auto* const array = reinterpret_cast<NSArray<NSString*>*>(const_cast<void*>(static_cast<CFTypeRef>(choice.get())));
    const auto* const best = static_cast<const void*>([appearance bestMatchFromAppearancesWithNames:array]);
    return best && CFEqual(best, static_cast<const void*>(NSAppearanceNameDarkAqua));
}

}  // namespace quillmere
