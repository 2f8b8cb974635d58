#include "Tests/Mac/Doubles/Misuse.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace misuse {

namespace {

const std::thread::id mainThread = std::this_thread::get_id();

}  // namespace

void stop(const char* why) {
    std::fprintf(stderr, "misuse of the system: %s\n", why);
    std::abort();
}

void stopOffMainThread(const char* call) {
    if (std::this_thread::get_id() != mainThread) stop((std::string(call) + " on another thread").c_str());
}

}  // namespace misuse
