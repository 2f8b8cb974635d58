#include "Quillmere/Platform/Linux/Tap/Kde/KdeEventTap.h"

#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Quillmere/Platform/Linux/Tap/FlagWord.h"

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

BusService::Address address() {
    return {.name = QStringLiteral("org.kde.kglobalaccel"),
            .path = QStringLiteral("/kglobalaccel"),
            .interface = QStringLiteral("org.kde.KGlobalAccel"),
            .harmlessMethod = QStringLiteral("allMainComponents")};
}

QString nameOf(const Shortcut& shortcut) {
    return QStringLiteral("switch-%1-%2").arg(shortcut.keyCode).arg(shortcut.modifiers.rawValue);
}

QString labelOf(const Shortcut& shortcut) {
    return QStringLiteral("Switch layouts (%1)").arg(QString::fromStdString(shortcut.displayString()));
}

}  // namespace

KdeEventTap::KdeEventTap(const QDBusConnection& bus, InputSourceService& sources)
    : bus_(bus), sources_(sources), desktop_(bus, address(), SwitchWait().deadline()) {}

KdeEventTap::~KdeEventTap() = default;

bool KdeEventTap::install(Callback callback) {
    if (!desktop_.isOwned()) return false;
    callback_ = std::move(callback);
    if (!shortcuts_) {
        shortcuts_ = std::make_unique<KdeGlobalShortcuts>(bus_);
        connect(shortcuts_.get(), &KdeGlobalShortcuts::pressed, this, &KdeEventTap::notePressed);
        connect(shortcuts_.get(), &KdeGlobalShortcuts::released, this, &KdeEventTap::noteReleased);
        connect(shortcuts_.get(), &KdeGlobalShortcuts::refused, this, &KdeEventTap::noteRefused);
        connect(&desktop_, &BusService::ownedChanged, shortcuts_.get(), [this] {
            if (desktop_.isOwned()) shortcuts_->setAgain();
        });
        for (const char* signal : {"layoutChanged", "layoutListChanged"})
            bus_.connect(QStringLiteral("org.kde.keyboard"), QStringLiteral("/Layouts"),
                         QStringLiteral("org.kde.KeyboardLayouts"), QString::fromLatin1(signal), this,
                         SLOT(nameAnew()));
        tell();
    }
    return deliversAll();
}

bool KdeEventTap::deliversAll() const {
    return std::ranges::none_of(interest_.shortcuts, &Shortcut::isFnAlone);
}

void KdeEventTap::setInterest(const KeyInterest& interest) {
    if (interest == interest_) return;
    interest_ = interest;
    tell();
}

void KdeEventTap::nameAnew() {
    if (!interest_.shortcuts.empty()) tell();
}

/// Tells the desktop which shortcuts are wanted.
void KdeEventTap::tell() {
    if (!shortcuts_) return;
    KdeGlobalShortcuts::WantedByName wanted;
    byName_.clear();
    // While one is recorded the present ones must get to the recorder, too.
    if (!interest_.everyKey && !interest_.shortcuts.empty()) {
        std::vector<std::string> layouts;
        for (const InputSourceRecord& record : sources_.sources())
            layouts.push_back(record.id.value_or(std::string()));
        if (!keyNames_ || layouts != namedFor_) keyNames_.emplace(layouts);
        namedFor_ = std::move(layouts);
        const std::optional<std::string> current = sources_.currentID();
        for (const Shortcut& shortcut : interest_.shortcuts) {
            const std::vector<int> keys = keyNames_->names(shortcut, current);
            if (keys.empty()) continue;
            byName_.emplace(nameOf(shortcut), shortcut);
            wanted.emplace(nameOf(shortcut), KdeGlobalShortcuts::Wanted{labelOf(shortcut), keys});
        }
    }
    shortcuts_->set(wanted);
    if (interest_.everyKey) return;
    std::vector<Shortcut> taken = taken_.all();
    std::erase_if(taken, [this](const Shortcut& shortcut) { return !byName_.contains(nameOf(shortcut)); });
    taken_.set(std::move(taken));
}

void KdeEventTap::notePressed(const QString& name) {
    const auto found = byName_.find(name);
    if (found == byName_.end()) return;
    const bool isRepeat = !held_.insert(name).second;
    callback_({.type = KeyEventType::keyDown,
               .keyCode = found->second.keyCode,
               .autorepeat = isRepeat ? 1 : 0,
               .flags = flagWord(found->second.modifiers)});
}

void KdeEventTap::noteRefused(const QString& name, bool isRefused) {
    const auto found = byName_.find(name);
    if (found == byName_.end()) return;
    std::vector<Shortcut> taken = taken_.all();
    std::erase(taken, found->second);
    if (isRefused) taken.push_back(found->second);
    taken_.set(std::move(taken));
}

void KdeEventTap::noteReleased(const QString& name) {
    const auto found = byName_.find(name);
    if (held_.erase(name) == 0 || found == byName_.end()) return;
    callback_({.type = KeyEventType::keyUp, .keyCode = found->second.keyCode, .flags = {}});
}

}  // namespace quillmere
