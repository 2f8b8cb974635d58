#include "Quillmere/Platform/Linux/Sources/Gnome/Helper/QuestionSocket.h"

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeHelperWords.h"

#include <glib-unix.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>
#include <vector>

namespace quillmere::gnomehelper {

QuestionSocket::QuestionSocket(int socket, Answer answer) : socket_(socket), answer_(std::move(answer)) {}

void QuestionSocket::run() {
    struct Run {
        QuestionSocket* socket;
        GMainLoop* loop;
    };
    Run run{this, g_main_loop_new(nullptr, FALSE)};
    const auto take = [](int, GIOCondition, gpointer data) -> gboolean {
        const auto* const current = static_cast<const Run*>(data);
        if (current->socket->answerNext()) return G_SOURCE_CONTINUE;
        g_main_loop_quit(current->loop);
        return G_SOURCE_REMOVE;
    };
    g_unix_fd_add(socket_, G_IO_IN, take, &run);
    // Not by reading alone: the settings' library, too, has work to do.
    g_main_loop_run(run.loop);
    g_main_loop_unref(run.loop);
}

/// False when the program has gone.
bool QuestionSocket::answerNext() {
    std::vector<char> packet(longestPacket);
    const ssize_t length = recv(socket_, packet.data(), packet.size(), 0);
    if (length < 0) return errno == EINTR || errno == EAGAIN;
    if (length == 0) return false;
    const std::string text(packet.data(), static_cast<std::size_t>(length));
    const std::size_t space = text.find(' ');
    if (space == std::string::npos) return false;
    const std::string answer = text.substr(0, space + 1) + answer_(text.substr(space + 1));
    return send(socket_, answer.data(), answer.size(), MSG_NOSIGNAL) >= 0;
}

}  // namespace quillmere::gnomehelper
