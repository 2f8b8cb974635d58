#pragma once

#include "Quillmere/Platform/Linux/Sources/DesktopInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Sway/SwayConnection.h"
#include "Quillmere/Platform/Linux/Sources/Sway/SwayKeyboards.h"
#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"

#include <QSocketNotifier>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace quillmere {

/// The layouts of the keyboards of sway.
///
/// A switch reaches every keyboard that has the layout, also one that appears
/// later: a keyboard starts with its first layout, and the one that the
/// key-tap service puts in a grabbed one's place is what the user goes on
/// typing on.
///
/// Every call asks the compositor, about 40 µs each: a keyboard's program may
/// change its keymap without an event, and events have no number by which to
/// tell twins apart.
class SwayInputSources final : public DesktopInputSources {
public:
    /// Null when no sway listens at $SWAYSOCK. Waits some seconds for the first
    /// answer, since a session that is starting has much to do.
    static std::unique_ptr<SwayInputSources> create();
    ~SwayInputSources() override;

    /// Whether somebody listens at the socket.
    bool isAvailable() override { return connect(); }
    /// As last known while the compositor does not answer.
    std::vector<InputSourceRecord> sources() override;
    std::optional<std::string> currentID() override;
    /// 0 once every keyboard with the desktop's layouts uses it; 1 for a layout
    /// that is not there, or when the compositor did not switch in time.
    int select(const InputSourceRecord& source) override;

private:
    using Clock = SwayConnection::Clock;

    explicit SwayInputSources(std::string path) : path_(std::move(path)) {}

    bool connect();
    void listen();
    bool refresh(Clock::time_point deadline);
    bool run(std::string command, Clock::time_point deadline);
    bool takeIn(const QByteArray& inputs);
    void note(const QByteArray& event);
    std::string carryOver(const SwayKeyboards& before);
    std::string idOf(const std::string& layout);
    std::optional<std::string> layoutOf(const std::string& id);

    std::string path_;
    std::unique_ptr<SwayConnection> connection_;
    bool isSubscribed_ = false;
    /// Reads the events even when nobody asks: a new keyboard has to be given
    /// the current layout before it is typed on.
    std::unique_ptr<QSocketNotifier> incoming_;
    XkbLayoutRegistry registry_;
    SwayKeyboards keyboards_;
    std::optional<std::string> current_;  ///< the layout in use, by its name
    std::set<std::string> added_;         ///< identifiers of keyboards that events told of
};

}  // namespace quillmere
