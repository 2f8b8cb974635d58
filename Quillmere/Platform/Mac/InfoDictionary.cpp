#include "Quillmere/Platform/Mac/InfoDictionary.h"

#include "Quillmere/Platform/Mac/CoreFoundationText.h"

namespace quillmere {

std::optional<std::string> InfoDictionary::string(std::string_view key) const {
    const CFBundleRef bundle = CFBundleGetMainBundle();
    if (!bundle) return std::nullopt;
    return textOf(CFBundleGetValueForInfoDictionaryKey(bundle, makeString(key).get()));
}

}  // namespace quillmere
