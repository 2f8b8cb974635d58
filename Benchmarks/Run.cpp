#include "Benchmarks/Run.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace quillmere::bench {

int run(int argc, char** argv, const std::vector<const char*>& arguments, const std::function<void()>& measure) {
    if (static_cast<std::size_t>(argc) != arguments.size() + 1) {
        std::fprintf(stderr, "usage: %s", argv[0]);
        for (const char* argument : arguments)
            std::fprintf(stderr, " <%s>", argument);
        std::fputc('\n', stderr);
        return EXIT_FAILURE;
    }
    // The buses are the benchmark's own; the machine's session stays out of it.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    const QCoreApplication application(argc, argv);
    try {
        measure();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

}  // namespace quillmere::bench
