#pragma once

#include <chrono>

namespace quillmere::gnomehelper {

/// Returns once GNOME Shell has come to do what it was told before this: it does
/// one thing after the other, and answers a question in between. Returns at the
/// latest after `longest`, and at once where there is no shell.
void waitForShell(std::chrono::milliseconds longest);

}  // namespace quillmere::gnomehelper
