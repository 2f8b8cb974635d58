#pragma once

#include "Quillmere/Platform/Bundle.h"

namespace quillmere {

/// The Info.plist of the application's bundle.
class InfoDictionary final : public Bundle {
public:
    std::optional<std::string> string(std::string_view key) const override;
};

}  // namespace quillmere
