#include "Quillmere/Platform/Linux/HelperProgram.h"

#include <QCoreApplication>

#include <spawn.h>
#include <unistd.h>

namespace quillmere {

std::string HelperProgram::path(const std::string& name) {
    return QCoreApplication::applicationDirPath().toStdString() + "/" QUILLMERE_PLUGINS_FROM_PROGRAM "/" + name;
}

pid_t HelperProgram::start(const std::string& program, const std::vector<std::string>& arguments, int socket) {
    posix_spawn_file_actions_t files{};
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, socket, STDIN_FILENO);
    posix_spawnattr_t attributes{};
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    std::vector<std::string> texts{program};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> vector;
    vector.reserve(texts.size() + 1);
    for (std::string& text : texts)
        vector.push_back(text.data());
    vector.push_back(nullptr);
    pid_t process = 0;
    if (posix_spawn(&process, program.c_str(), &files, &attributes, vector.data(), environ) != 0) process = 0;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return process;
}

}  // namespace quillmere
