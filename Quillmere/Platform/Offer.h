#pragma once

#include <QObject>
#include <QString>

namespace quillmere {

/// Something that would make the program better on this system and takes the
/// user: a line in the settings, with a button where their consent is enough.
/// Main thread only.
class Offer : public QObject {
    Q_OBJECT
public:
    /// Whether there is anything to be gained at this moment.
    virtual bool isOpen() const = 0;

    /// What is to be gained, or what the user is to do for it.
    virtual QString text() const = 0;

    /// The title of the button; empty, and always so, for none.
    virtual QString action() const = 0;

    /// The button was pressed. Returns at once.
    virtual void accept() = 0;

signals:
    /// `isOpen` or a text may have changed.
    void changed();
};

}  // namespace quillmere
