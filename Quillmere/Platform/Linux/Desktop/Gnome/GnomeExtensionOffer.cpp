#include "Quillmere/Platform/Linux/Desktop/Gnome/GnomeExtensionOffer.h"

#include "Quillmere/Platform/Linux/HelperProgram.h"

#include <utility>

namespace quillmere {

namespace {

const QString askForState = QStringLiteral("state");

/// In milliseconds: how long the program's end waits for what the installer has
/// begun, which is to copy a few small files.
constexpr int longestEnd = 1000;

}  // namespace

QString GnomeExtensionOffer::standardProgram() {
    return QString::fromStdString(HelperProgram::path("quillmere-gnome-extension"));
}

GnomeExtensionOffer::GnomeExtensionOffer(const QDBusConnection& bus, QString installer)
    : extension_(bus), installer_(std::move(installer)) {
    connect(&extension_, &GnomeExtension::liveChanged, this, &Offer::changed);
    connect(&process_, &QProcess::finished, this, &GnomeExtensionOffer::noteEnd);
    run(askForState);
}

GnomeExtensionOffer::~GnomeExtensionOffer() {
    process_.disconnect(this);
    process_.waitForFinished(longestEnd);
}

QString GnomeExtensionOffer::text() const {
    switch (state_) {
        case State::absent:
            return QStringLiteral(
                "GNOME can catch the shortcuts and switch by itself, without a password, "
                "with an extension of Quillmere's.");
        case State::outdated:
            return QStringLiteral("Quillmere's extension for GNOME is of another version.");
        case State::added:
            return extension_.isLive()
                       ? QStringLiteral("GNOME switches by itself, with Quillmere's extension.")
                       : QStringLiteral("Quillmere's extension is added to GNOME: log out and in once.");
        case State::unknown:
            break;
    }
    return {};
}

QString GnomeExtensionOffer::action() const {
    switch (state_) {
        case State::absent:
            return QStringLiteral("Add Extension");
        case State::outdated:
            return QStringLiteral("Replace Extension");
        case State::added:
            return QStringLiteral("Remove Extension");
        case State::unknown:
            break;
    }
    return {};
}

void GnomeExtensionOffer::accept() {
    if (state_ == State::unknown) return;
    run(state_ == State::added ? QStringLiteral("remove") : QStringLiteral("add"));
}

void GnomeExtensionOffer::run(const QString& task) {
    if (process_.state() != QProcess::NotRunning) return;
    process_.start(installer_, {task});
}

/// Whatever was done, what counts is how things are then.
void GnomeExtensionOffer::noteEnd() {
    if (process_.arguments() != QStringList{askForState}) {
        run(askForState);
        return;
    }
    const QByteArray word = process_.readAllStandardOutput().trimmed();
    if (word == "absent")
        setState(State::absent);
    else if (word == "other")
        setState(State::outdated);
    else if (word == "present")
        setState(State::added);
    else
        setState(State::unknown);
}

void GnomeExtensionOffer::setState(State state) {
    if (std::exchange(state_, state) != state) emit changed();
}

}  // namespace quillmere
