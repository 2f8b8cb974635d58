#pragma once

#include "Quillmere/Platform/Offer.h"

namespace quillmere {

/// An offer that a test opens and closes, and that counts who takes it.
class FakeOffer : public Offer {
public:
    bool isOpen() const override { return open; }
    QString text() const override { return QStringLiteral("There is more to be had."); }
    QString action() const override { return QStringLiteral("Have It…"); }
    void accept() override { ++accepted; }

    void setOpen(bool isOpen) {
        open = isOpen;
        emit changed();
    }

    bool open = true;
    int accepted = 0;
};

}  // namespace quillmere
