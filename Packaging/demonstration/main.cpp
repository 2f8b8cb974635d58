#include "Packaging/demonstration/Demonstration.h"
#include "Tests/Support/SupportError.h"

#include <QCoreApplication>

#include <iostream>

int main(int argc, char** argv) {
    // The desktop that is shown has a bus of its own; the machine's stays out of it.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    // Each line is to be read when it happens, through a pipe too.
    std::cout << std::unitbuf;
    const QCoreApplication application(argc, argv);
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " <program> <folder for pictures>\n";
        return 2;
    }
    try {
        quillmere::demonstration::Demonstration demonstration(argv[1], argv[2]);
        return demonstration.play() ? 0 : 1;
    } catch (const quillmere::support::SupportError& error) {
        std::cerr << "The demonstration cannot be shown: " << error.what() << '\n';
        return 1;
    }
}
