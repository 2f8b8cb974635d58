#pragma once

/// What the real system would punish, at once or on some users' machines only.
namespace misuse {

/// Ends the program and says why.
[[noreturn]] void stop(const char* why);

inline void stopIf(bool isWrong, const char* why) {
    if (isWrong) stop(why);
}

/// Ends the program anywhere but on the thread that has started it.
void stopOffMainThread(const char* call);

}  // namespace misuse
