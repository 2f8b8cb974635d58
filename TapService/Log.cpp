#include "TapService/Log.h"

#include <systemd/sd-daemon.h>

#include <cstdio>
#include <string>
#include <system_error>

namespace quillmere::tap::Log {

namespace {

void write(const char* priority, std::string_view text) {
    // One call: lines of a service and of its restarted self must not mix.
    std::string line(priority);
    line += text;
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

std::string explained(std::string_view text, int error) {
    return std::string(text) + ": " + std::generic_category().message(error < 0 ? -error : error);
}

}  // namespace

void error(std::string_view text) {
    write(SD_ERR, text);
}

void warning(std::string_view text) {
    write(SD_WARNING, text);
}

void notice(std::string_view text) {
    write(SD_NOTICE, text);
}

void notice(std::string_view text, int error) {
    notice(explained(text, error));
}

void warning(std::string_view text, int error) {
    warning(explained(text, error));
}

void error(std::string_view text, int error) {
    Log::error(explained(text, error));
}

}  // namespace quillmere::tap::Log
