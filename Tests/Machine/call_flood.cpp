#include "Tests/TapService/CallFlood.h"

#include <unistd.h>

// Calls the key-tap service on the system's bus without end.
int main() {
    const quillmere::CallFlood flood("unix:path=/run/dbus/system_bus_socket");
    pause();
    return 0;
}
