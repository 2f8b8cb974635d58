#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/Environment.h"

#include <filesystem>
#include <string>

namespace quillmere::support {

/// An ordinary application's text field, in a window of its own with the
/// keyboard focus, whose keys go through an input method.
class TextField {
public:
    /// Starts the application and waits until it is ready to be typed into.
    /// `environment` is the desktop's; `method` is what Qt calls the framework:
    /// "fcitx", "ibus". `folder` receives its files.
    TextField(const std::filesystem::path& folder, const Environment& environment, const std::string& method);

    /// What stands in it, UTF-8, without what is still being composed.
    std::string text() const;

private:
    ChildProcess process_;
};

}  // namespace quillmere::support
