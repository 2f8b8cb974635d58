#pragma once

#include "Quillmere/Platform/LoginItem.h"

#include <vector>

namespace quillmere {

/// A system's login item: answers as told and remembers what was asked.
class FakeLoginItem : public LoginItem {
public:
    bool available = true;
    bool enabled = false;
    bool refuses = false;         ///< `setEnabled` fails and changes nothing
    std::vector<bool> requested;  ///< the arguments of every `setEnabled`

    bool isAvailable() const override { return available; }
    QString requirement() const override { return QStringLiteral("Needs a newer system"); }
    bool isEnabled() const override { return enabled; }
    bool setEnabled(bool wanted) override {
        requested.push_back(wanted);
        if (refuses) return false;
        enabled = wanted;
        return true;
    }
};

}  // namespace quillmere
