#pragma once

#include "Tests/Soak/Hour.h"
#include "Tests/Support/Desktop.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/Witness.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace quillmere::soak {

/// A day at a desktop with the program on it, in less time than it would take:
/// someone types and switches, and now and then something happens to the desktop.
/// Each thing that happens is one member function; `playHour` names them all.
class Day {
public:
    /// Brings the desktop up and starts `program` on it. Throws SupportError when
    /// that does not succeed, as everything else here does when something does not
    /// come about that a user would wait for.
    explicit Day(const std::filesystem::path& program);

    /// An hour, played within `length` if the machine can, and what there is to
    /// say of it afterwards.
    Hour playHour(const std::string& name, std::chrono::milliseconds length);

    /// The end of the session's message bus and of all who were on it but the
    /// program; then all of them anew.
    Hour playRestartOfTheBus();

private:
    using Clock = std::chrono::steady_clock;
    using Event = void (Day::*)();

    static std::vector<Event> eventsOfAnHour();

    /// Starts the program, and waits until it is there.
    void start(const support::Environment& additions);

    void visitSettings();
    void moveLayout();
    void sleep();
    void changeLayouts();
    void plugMonitor();
    void restartTray();
    void changeScheme();
    void turnOffAndOn();

    /// Several switches in a row, then the plate's coming and going.
    void type();
    /// A press of the shortcut and a letter right behind it, which tells whether
    /// it was missed.
    void press();
    bool isSwitchedTo(int layout);
    int layoutAfter(int layout) const;
    void useLayouts(const std::vector<std::string>& layouts);
    void focusApplication();
    std::string storedConfiguration() const;
    Hour rest(const std::string& name);

    std::filesystem::path path_;
    support::Desktop desktop_;
    support::Witness application_;
    std::unique_ptr<support::Program> program_;
    std::vector<std::string> layouts_;  ///< of the server, in its order
    int bursts_ = 0;
    int visits_ = 0;  ///< to the settings
    int switches_ = 0;
    int missed_ = 0;
};

}  // namespace quillmere::soak
