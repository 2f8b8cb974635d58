#include "Quillmere/Platform/Linux/Tap/Gnome/GnomeEventTap.h"

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSourceIDs.h"
#include "Quillmere/Platform/Linux/Tap/FlagWord.h"
#include "Quillmere/Platform/Linux/Tap/Gnome/GnomeAccelerators.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

/// Without those that are of another desktop, which this one cannot switch to.
ArmedShortcut withGnomesSources(ArmedShortcut shortcut) {
    std::erase_if(shortcut.sourceIDs, [](const std::string& id) { return !gnomeSourceIDs::sourceOf(id); });
    return shortcut;
}

GnomeSourceList sourcesOf(const ArmedShortcut& shortcut) {
    GnomeSourceList sources;
    for (const std::string& id : shortcut.sourceIDs)
        if (auto source = gnomeSourceIDs::sourceOf(id)) sources.push_back(*std::move(source));
    return sources;
}

}  // namespace

GnomeEventTap::GnomeEventTap(const QDBusConnection& bus) : bus_(bus), extension_(bus) {}

GnomeEventTap::~GnomeEventTap() = default;

bool GnomeEventTap::install(Callback callback) {
    if (!extension_.isLive()) return false;
    callback_ = std::move(callback);
    if (!std::exchange(isInstalled_, true)) {
        listen();
        tell();
    }
    return deliversAll();
}

bool GnomeEventTap::deliversAll() const {
    return std::ranges::none_of(interest_.shortcuts, &Shortcut::isFnAlone);
}

void GnomeEventTap::listen() {
    bus_.connect(GnomeExtension::name, GnomeExtension::path, GnomeExtension::interface, QStringLiteral("Switched"),
                 this, SLOT(noteSwitched(QString, uint)));
    bus_.connect(GnomeExtension::name, GnomeExtension::path, GnomeExtension::interface, QStringLiteral("Pressed"), this,
                 SLOT(notePressed(QString)));
    connect(&extension_, &GnomeExtension::liveChanged, this, [this] {
        if (extension_.isLive()) return send();
        taken_.set({});
    });
}

void GnomeEventTap::setInterest(const KeyInterest& interest) {
    if (interest == interest_) return;
    interest_ = interest;
    tell();
}

void GnomeEventTap::arm(const std::vector<ArmedShortcut>& shortcuts) {
    shortcuts_ = shortcuts;
    tell();
}

/// Arms the extension, when that makes a difference.
void GnomeEventTap::tell() {
    if (!isInstalled_) return;
    std::vector<ArmedShortcut> wanted;
    for (const ArmedShortcut& shortcut : shortcuts_) {
        // While one is recorded the present ones must get to the window, too.
        const bool isOfInterest =
            !interest_.everyKey
            && std::ranges::find(interest_.shortcuts, shortcut.shortcut) != interest_.shortcuts.end();
        if (isOfInterest) wanted.push_back(withGnomesSources(shortcut));
    }
    if (wanted == told_) return;
    told_ = std::move(wanted);
    // What is said of a former table means nothing in the new one.
    ++tables_;
    table_.clear();
    byToken_.clear();
    for (const ArmedShortcut& shortcut : told_)
        for (const std::string& accelerator : gnomeAccelerators::of(shortcut.shortcut)) {
            const QString token = QStringLiteral("%1-%2").arg(tables_).arg(table_.size());
            table_.push_back({token, QString::fromStdString(accelerator), sourcesOf(shortcut)});
            byToken_.emplace(token, shortcut);
        }
    send();
}

/// A combination that is somebody else's stays theirs.
void GnomeEventTap::send() {
    QDBusMessage call = QDBusMessage::createMethodCall(GnomeExtension::name, GnomeExtension::path,
                                                       GnomeExtension::interface, QStringLiteral("Arm"));
    call << busValueOf(table_);
    call.setAutoStartService(false);
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, table = tables_] {
        watcher->deleteLater();
        const QDBusPendingReply<QStringList> reply = *watcher;
        // Of the present table alone; and while one is recorded it is empty.
        if (!reply.isError() && table == tables_ && !interest_.everyKey) noteTaken(reply.value());
    });
}

void GnomeEventTap::noteTaken(const QStringList& tokens) {
    std::vector<Shortcut> taken;
    for (const QString& token : tokens) {
        const auto found = byToken_.find(token);
        if (found == byToken_.end()) continue;
        // A shortcut has as many tokens as there are keys that press it.
        const Shortcut& shortcut = found->second.shortcut;
        if (std::ranges::find(taken, shortcut) == taken.end()) taken.push_back(shortcut);
    }
    taken_.set(std::move(taken));
}

void GnomeEventTap::noteSwitched(const QString& token, uint index) {
    const auto found = byToken_.find(token);
    if (found == byToken_.end() || index >= found->second.sourceIDs.size()) return;
    // A copy: who is told may replace the table.
    const ArmedShortcut shortcut = found->second;
    onSwitched(shortcut.shortcut, shortcut.sourceIDs[index]);
}

/// It tells of no release. A held key is not told of again.
void GnomeEventTap::notePressed(const QString& token) {
    const auto found = byToken_.find(token);
    if (found == byToken_.end()) return;
    const Shortcut shortcut = found->second.shortcut;
    callback_({.type = KeyEventType::keyDown, .keyCode = shortcut.keyCode, .flags = flagWord(shortcut.modifiers)});
    callback_({.type = KeyEventType::keyUp, .keyCode = shortcut.keyCode, .flags = {}});
}

}  // namespace quillmere
