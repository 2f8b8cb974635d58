#pragma once

#include <QByteArray>

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

/// Where the daemon of IBus has its message bus, which it keeps apart from the
/// session's: by the variables and the file that IBus's own client library
/// goes by. Any thread.
namespace quillmere::ibusAddress {

/// What the daemon has written down.
struct Note {
    std::string address;  ///< as message buses have them: "unix:path=…"
    pid_t process = 0;    ///< the daemon's; 0 where that is not told

    friend bool operator==(const Note&, const Note&) = default;
};

/// The note of this desktop's daemon, which need not live any more; absent
/// where none has left one. Reads at most two small files.
std::optional<Note> find();

/// The files that may hold the note, the likelier one first. None where a
/// variable tells the address itself.
std::vector<std::string> files();

/// The names of such files in the user's folder for them, for a machine and
/// the values of WAYLAND_DISPLAY and DISPLAY, either of which may be empty.
std::vector<std::string> fileNames(const std::string& machine, const std::string& waylandDisplay,
                                   const std::string& display);

/// The note in such a file; absent when it is none, or not yet written whole.
std::optional<Note> parse(const QByteArray& file);

/// Whether the daemon lives and takes who comes at once: nobody is kept waiting
/// who connects now. False for an address that is no socket of this machine.
bool isListening(const Note& note);

}  // namespace quillmere::ibusAddress
