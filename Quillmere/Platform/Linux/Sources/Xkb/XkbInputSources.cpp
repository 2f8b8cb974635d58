#include "Quillmere/Platform/Linux/Sources/Xkb/XkbInputSources.h"

#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <QProcess>
#include <QString>
#include <QStringList>

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <poll.h>

#include <utility>

namespace quillmere {

namespace {

constexpr int statusSwitched = 0;
constexpr int statusRefused = 1;

// Somebody who changes the layouts without a pause must not keep us here.
constexpr int maxAttempts = 4;

}  // namespace

std::unique_ptr<XkbInputSources> XkbInputSources::create() {
    auto connection = X11Connection::open();
    if (connection == nullptr) return nullptr;
    return std::unique_ptr<XkbInputSources>(new XkbInputSources(std::move(connection)));
}

XkbInputSources::XkbInputSources(std::unique_ptr<X11Connection> connection)
    : connection_(std::move(connection)), namesAtom_(XInternAtom(connection_->display(), "_XKB_RULES_NAMES", False)) {
    subscribe();
    readNames();
    lockedGroup_ = queryGroup().value_or(0);
    incoming_ = std::make_unique<QSocketNotifier>(connection_->fileDescriptor(), QSocketNotifier::Read);
    QObject::connect(incoming_.get(), &QSocketNotifier::activated, incoming_.get(), [this] {
        // A lost connection stays readable for ever.
        if (!catchUp()) incoming_->setEnabled(false);
    });
}

XkbInputSources::~XkbInputSources() = default;

/// Before the first reading, so that no change after it goes unseen.
void XkbInputSources::subscribe() {
    XSelectInput(connection_->display(), connection_->root(), PropertyChangeMask);
    XkbSelectEventDetails(connection_->display(), XkbUseCoreKbd, XkbStateNotify, XkbGroupLockMask, XkbGroupLockMask);
    // Comes too when another keyboard is typed on than before.
    XkbSelectEvents(connection_->display(), XkbUseCoreKbd, XkbNewKeyboardNotifyMask, XkbNewKeyboardNotifyMask);
}

std::vector<InputSourceRecord> XkbInputSources::sources() {
    if (!catchUp()) return {};
    if (!records_.empty()) return records_;
    const auto descriptions = registry_.describe(names_.rules, names_.layouts);
    for (std::size_t i = 0; i < names_.layouts.size(); ++i) {
        InputSourceRecord record;
        record.id = names_.layouts[i].id();
        record.type = InputSourceType::keyboardLayout;
        if (descriptions[i]) {
            record.localizedName = descriptions[i]->name;
            record.languages = descriptions[i]->languages;
        }
        records_.push_back(std::move(record));
    }
    return records_;
}

std::optional<std::string> XkbInputSources::currentID() {
    // The group stays when the list shrinks below it.
    if (!catchUp() || lockedGroup_ >= names_.layouts.size()) return std::nullopt;
    return names_.layouts[lockedGroup_].id();
}

int XkbInputSources::select(const InputSourceRecord& source) {
    if (!source.id) return statusRefused;
    for (int attempt = 0; attempt < maxAttempts && catchUp(); ++attempt) {
        const std::optional<unsigned int> index = indexOf(*source.id);
        if (!index) return statusRefused;
        XkbLockGroup(connection_->display(), XkbUseCoreKbd, *index);
        // The server takes any number and wraps it.
        const std::optional<unsigned int> group = queryGroup();
        // The index means what it did only if the list is still the same.
        if (!handleQueuedEvents()) return group == index ? statusSwitched : statusRefused;
    }
    return statusRefused;
}

bool XkbInputSources::useAlone(const XkbLayout& layout) {
    if (!catchUp()) return false;
    const std::vector<XkbLayout> wanted{layout};
    if (names_.layouts.size() > 1 || names_.layouts == wanted) return true;
    const SwitchWait wait;
    const QStringList arguments{QStringLiteral("-display"), QString::fromLatin1(DisplayString(connection_->display())),
                                QStringLiteral("-layout"),  QString::fromStdString(layout.layout),
                                QStringLiteral("-variant"), QString::fromStdString(layout.variant)};
    // Once begun it is better late than left undone.
    if (!QProcess::startDetached(QStringLiteral("setxkbmap"), arguments)) return false;
    // It tells of the layout when that is in effect.
    while (names_.layouts != wanted && waitForServer(wait.deadline()))
        if (!catchUp()) return false;
    return names_.layouts == wanted;
}

/// Whether the server has sent anything by then.
bool XkbInputSources::waitForServer(std::chrono::steady_clock::time_point deadline) const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd incoming{.fd = connection_->fileDescriptor(), .events = POLLIN, .revents = 0};
    return left.count() > 0 && poll(&incoming, 1, static_cast<int>(left.count())) > 0;
}

/// Takes in everything that the server has sent; false when it is gone.
bool XkbInputSources::catchUp() {
    if (!connection_->isLost()) XEventsQueued(connection_->display(), QueuedAfterReading);
    // Reading the list waits for the server, which may have sent more: nothing
    // would call for that later.
    while (!connection_->isLost() && XEventsQueued(connection_->display(), QueuedAlready) > 0)
        handleQueuedEvents();
    return !connection_->isLost();
}

/// True when the list has become another.
bool XkbInputSources::handleQueuedEvents() {
    bool isListStale = false;
    while (XEventsQueued(connection_->display(), QueuedAlready) > 0) {
        XEvent event;
        XNextEvent(connection_->display(), &event);
        if (event.type == PropertyNotify && event.xproperty.atom == namesAtom_) isListStale = true;
        if (event.type == MappingNotify) XRefreshKeyboardMapping(&event.xmapping);
        if (event.type != connection_->xkbEventBase()) continue;
        const auto& xkb = reinterpret_cast<const XkbEvent&>(event);
        if (xkb.any.xkb_type == XkbNewKeyboardNotify) isListStale = true;
        if (xkb.any.xkb_type == XkbStateNotify) lockedGroup_ = static_cast<unsigned int>(xkb.state.locked_group);
    }
    if (!isListStale) return false;
    const XkbRulesNames former = names_;
    readNames();
    return names_ != former;
}

std::optional<unsigned int> XkbInputSources::queryGroup() const {
    XkbStateRec state{};
    if (XkbGetState(connection_->display(), XkbUseCoreKbd, &state) != Success) return std::nullopt;
    return state.locked_group;
}

std::optional<unsigned int> XkbInputSources::indexOf(const std::string& id) const {
    for (std::size_t i = 0; i < names_.layouts.size(); ++i)
        if (names_.layouts[i].id() == id) return static_cast<unsigned int>(i);
    return std::nullopt;
}

void XkbInputSources::readNames() {
    names_ = readProperty();
    records_.clear();
    followGroups();
}

/// A keyboard that is plugged in makes the server write its own layouts into
/// the property, whatever setxkbmap had set for the others; what the keyboard
/// in use can type is in its map.
void XkbInputSources::followGroups() {
    // Not with fewer: a fresh server tells of its layouts before its first key
    // has them.
    const std::vector<std::string> groups = readGroupsIfMoreThan(names_.layouts.size());
    if (groups.empty()) return;
    std::vector<XkbLayout> layouts;
    for (const auto& listed : registry_.named(groups))
        if (listed) layouts.push_back(listed->layout);
    if (layouts.size() == groups.size()) names_.layouts = std::move(layouts);
}

/// The names of the groups, "English (US)"; empty when there are not more, or
/// when they cannot be had.
std::vector<std::string> XkbInputSources::readGroupsIfMoreThan(std::size_t limit) const {
    Display* const display = connection_->display();
    const std::unique_ptr<XkbDescRec, void (*)(XkbDescPtr)> keyboard(
        XkbGetMap(display, 0, XkbUseCoreKbd), [](XkbDescPtr map) { XkbFreeKeyboard(map, XkbAllComponentsMask, True); });
    if (!keyboard || XkbGetControls(display, XkbGroupsWrapMask, keyboard.get()) != Success) return {};
    const std::size_t count = keyboard->ctrls->num_groups;
    if (count <= limit) return {};
    if (XkbGetNames(display, XkbGroupNamesMask, keyboard.get()) != Success) return {};
    std::vector<std::string> groups;
    for (std::size_t group = 0; group < count; ++group) {
        const Atom name = keyboard->names->groups[group];
        const std::unique_ptr<char, int (*)(void*)> text(name == None ? nullptr : XGetAtomName(display, name), XFree);
        groups.emplace_back(text ? text.get() : "");
    }
    return groups;
}

XkbRulesNames XkbInputSources::readProperty() const {
    constexpr long maxWords = 1024;
    Atom type = None;
    int format = 0;
    unsigned long length = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    const int status = XGetWindowProperty(connection_->display(), connection_->root(), namesAtom_, 0, maxWords, False,
                                          XA_STRING, &type, &format, &length, &left, &data);
    const std::unique_ptr<unsigned char, int (*)(void*)> owned(data, XFree);
    if (status != Success || data == nullptr || format != 8) return {};
    return XkbRulesNames::parse({reinterpret_cast<const char*>(data), length});
}

}  // namespace quillmere
