#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include <sys/types.h>

namespace quillmere {

/// The program's end of its helper for GNOME's settings. The helper lives on
/// where this program is killed, until the user's list is in order; and where
/// the helper is killed, another is started at once, which puts the list right.
/// Main thread only.
class GnomeSettingsHelper final : public QObject {
public:
    using Clock = std::chrono::steady_clock;

    /// The helper's program beside this one.
    static std::string standardProgram();

    /// Starts nothing yet.
    explicit GnomeSettingsHelper(std::string program);
    ~GnomeSettingsHelper() override;

    /// Whether it may have an answer: false once several in a row have ended
    /// without any.
    bool isUsable() const { return deaths_ < mostDeaths; }

    /// Its answer to a question; none when there is none at the deadline. After
    /// that it is not asked anything until it has answered.
    std::optional<std::string> ask(const std::string& question, Clock::time_point deadline);

    /// Of the helper that runs; 0 when none does.
    pid_t process() const { return process_; }

    /// Starts it, unless it runs; false when it cannot be.
    bool start();

private:
    static constexpr int mostDeaths = 3;

    void lose();
    bool waitForPacket(Clock::time_point deadline) const;
    std::optional<std::string> receive();

    std::string program_;
    int socket_ = -1;
    pid_t process_ = 0;
    std::unique_ptr<QSocketNotifier> incoming_;
    unsigned long number_ = 0;  ///< of the last question
    bool isAwaited_ = false;    ///< it has not been answered yet
    int deaths_ = 0;            ///< since the last answer
};

}  // namespace quillmere
