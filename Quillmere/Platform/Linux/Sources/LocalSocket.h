#pragma once

#include <chrono>
#include <string>

/// Connections to programs of this machine (Unix sockets) that never hold up
/// the one who asks. Any thread.
namespace quillmere::localSocket {

/// A descriptor of a connection to whoever listens at this path, the caller's to
/// close; it blocks neither here nor in its later use. Below 0 when nobody does.
int open(const std::string& path);

/// Waits until the descriptor has one of these events of poll(2), or is closed
/// at the other end; false when the deadline has passed.
bool waitFor(int descriptor, short events, std::chrono::steady_clock::time_point deadline);

}  // namespace quillmere::localSocket
