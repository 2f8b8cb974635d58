#pragma once

#include "Tests/Support/Witness.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace quillmere::support {

/// An ordinary application of a Wayland desktop that looks on: a window with
/// the keyboard focus that writes down every key it gets.
class WaylandWitness {
public:
    /// Opens its window and waits for the keyboard focus. Throws when it gets
    /// none.
    explicit WaylandWitness(const std::string& waylandDisplay);
    ~WaylandWitness();
    WaylandWitness(const WaylandWitness&) = delete;
    WaylandWitness& operator=(const WaylandWitness&) = delete;

    /// Every key event since the start or the last `clear`.
    const std::vector<SeenKey>& keys();
    /// How many presses of `key` it got.
    std::size_t presses(Key key);
    /// What was typed into it: the texts of all presses in a row.
    std::string text();
    /// Whether any press or release of `key` arrived.
    bool saw(Key key);
    /// Whether it has the keyboard focus now.
    bool hasFocus();
    /// The layout in use as the desktop has told it, by index; -1 before that.
    int layout();
    /// Sleeps until the desktop tells it something, this long at most.
    void waitForNews(std::chrono::milliseconds deadline) const;

    /// Forgets everything seen so far.
    void clear();

private:
    struct Client;

    std::unique_ptr<Client> client_;
};

}  // namespace quillmere::support
