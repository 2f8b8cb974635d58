#pragma once

#include "QuillmereCore/AppVersion.h"
#include "QuillmereCore/UserDefaults.h"

#include <optional>

namespace quillmere {

/// The update settings that last between runs, read from and written to the
/// user's defaults at every access. Main thread only.
class UpdateStore {
public:
    /// `defaults` must outlive the store.
    explicit UpdateStore(UserDefaults& defaults);

    /// Whether to check by itself; true until the user decides.
    bool automatic() const;
    void setAutomatic(bool automatic);
    /// Whether that is stored: from the first launch on.
    bool isStored() const;

    /// When the last automatic or manual check began; none before the first.
    std::optional<Date> lastCheck() const;
    void setLastCheck(std::optional<Date> date);

    /// The version that the user does not want to be offered again. Kept as
    /// its description, so as the feed wrote it.
    std::optional<AppVersion> skipped() const;
    void setSkipped(const std::optional<AppVersion>& version);

private:
    UserDefaults& defaults_;
};

}  // namespace quillmere
