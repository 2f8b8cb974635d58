#pragma once

#include "Quillmere/Platform/InputSourceService.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// A framework of input methods that runs beside the desktop and switches among
/// a list of its own, window by window: input methods, and entries that are a
/// plain keyboard. It may come and go while the program runs. Main thread only.
class InputMethodFramework {
public:
    /// What it says of itself at one moment.
    struct State {
        /// In its order; an entry that is a plain keyboard has the identifier of
        /// that layout.
        std::vector<InputSourceRecord> sources;
        /// The one in use in the window that was typed in last; absent where no
        /// window has asked for input so far.
        std::optional<std::string> current;
        /// The one of the list that leaves the keyboard to the desktop.
        std::optional<std::string> keyboard;
    };

    InputMethodFramework() = default;
    InputMethodFramework(const InputMethodFramework&) = delete;
    InputMethodFramework& operator=(const InputMethodFramework&) = delete;
    virtual ~InputMethodFramework() = default;

    /// As its users know it.
    virtual std::string name() const = 0;

    /// Whether it is there at this moment, as far as is known without asking
    /// anybody.
    virtual bool isRunning() = 0;

    /// Called when that may have become another answer. Does nothing until set.
    std::function<void()> onRunningChanged = [] {};

    /// Whether an entry that is a plain keyboard types in its layout, whatever
    /// the desktop's is.
    virtual bool hasLayouts() const = 0;

    /// Absent when it does not answer in the time of a switch.
    virtual std::optional<State> state() = 0;

    /// Makes this one of its list current; true once it says so itself.
    virtual bool select(const std::string& id) = 0;
};

}  // namespace quillmere
