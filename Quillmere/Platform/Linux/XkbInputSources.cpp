#include "Quillmere/Platform/Linux/XkbInputSources.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <cstddef>
#include <string_view>
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
    // Before the first reading, so that no change after it goes unseen.
    XSelectInput(connection_->display(), connection_->root(), PropertyChangeMask);
}

std::vector<InputSourceRecord> XkbInputSources::sources() {
    // Brings the list up to date.
    if (!lockedGroup()) return {};
    const auto descriptions = registry_.describe(names_.rules, names_.layouts);
    std::vector<InputSourceRecord> result;
    for (std::size_t i = 0; i < names_.layouts.size(); ++i) {
        InputSourceRecord record;
        record.id = names_.layouts[i].id();
        record.type = InputSourceType::keyboardLayout;
        if (descriptions[i]) {
            record.localizedName = descriptions[i]->name;
            record.languages = descriptions[i]->languages;
        }
        result.push_back(std::move(record));
    }
    return result;
}

std::optional<std::string> XkbInputSources::currentID() {
    const std::optional<unsigned int> group = lockedGroup();
    // The group stays when the list shrinks below it.
    if (!group || *group >= names_.layouts.size()) return std::nullopt;
    return names_.layouts[*group].id();
}

int XkbInputSources::select(const InputSourceRecord& source) {
    if (!source.id) return statusRefused;
    if (areNamesStale_ && !lockedGroup()) return statusRefused;
    for (int attempt = 0; attempt < maxAttempts; ++attempt) {
        const std::optional<unsigned int> index = indexOf(*source.id);
        if (!index) {
            // Perhaps it has come just now, without our having looked since.
            if (attempt > 0 || !lockedGroup() || !indexOf(*source.id)) return statusRefused;
            continue;
        }
        XkbLockGroup(connection_->display(), XkbUseCoreKbd, *index);
        const std::optional<unsigned int> group = queryLockedGroup();
        // The index means what it did only if the list is still the same.
        if (refreshNames()) continue;
        return group == index ? statusSwitched : statusRefused;
    }
    return statusRefused;
}

/// The group as of now, the list of the same moment: the reply of the query
/// has brought every notification that the server had sent before it.
std::optional<unsigned int> XkbInputSources::lockedGroup() {
    std::optional<unsigned int> group;
    for (int attempt = 0; attempt < maxAttempts; ++attempt) {
        group = queryLockedGroup();
        if (!group || !refreshNames()) break;
    }
    return group;
}

std::optional<unsigned int> XkbInputSources::queryLockedGroup() {
    XkbStateRec state{};
    if (connection_->isLost() || XkbGetState(connection_->display(), XkbUseCoreKbd, &state) != Success)
        return std::nullopt;
    return state.locked_group;
}

std::optional<unsigned int> XkbInputSources::indexOf(const std::string& id) const {
    for (std::size_t i = 0; i < names_.layouts.size(); ++i)
        if (names_.layouts[i].id() == id) return static_cast<unsigned int>(i);
    return std::nullopt;
}

/// Reads the list again when a notification in the queue says that it has
/// changed; true when it has really become another.
bool XkbInputSources::refreshNames() {
    while (XEventsQueued(connection_->display(), QueuedAlready) > 0) {
        XEvent event;
        XNextEvent(connection_->display(), &event);
        if (event.type == PropertyNotify && event.xproperty.atom == namesAtom_) areNamesStale_ = true;
        if (event.type == MappingNotify) XRefreshKeyboardMapping(&event.xmapping);
    }
    if (!areNamesStale_) return false;
    const XkbRulesNames former = std::exchange(names_, {});
    readNames();
    return names_ != former;
}

void XkbInputSources::readNames() {
    constexpr long maxWords = 1024;
    Atom type = None;
    int format = 0;
    unsigned long length = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    const int status = XGetWindowProperty(connection_->display(), connection_->root(), namesAtom_, 0, maxWords, False,
                                          XA_STRING, &type, &format, &length, &left, &data);
    const std::unique_ptr<unsigned char, int (*)(void*)> owned(data, XFree);
    areNamesStale_ = false;
    if (status != Success || data == nullptr || format != 8) return;
    names_ = XkbRulesNames::parse({reinterpret_cast<const char*>(data), length});
}

}  // namespace quillmere
