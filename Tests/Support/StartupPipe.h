#pragma once

#include <string>

namespace quillmere::support {

/// The pipe through which a server tells that it is ready, by a line of text
/// (its display number, its address).
class StartupPipe {
public:
    StartupPipe();
    ~StartupPipe();
    StartupPipe(const StartupPipe&) = delete;
    StartupPipe& operator=(const StartupPipe&) = delete;

    /// For the server.
    int writeEnd() const { return writeEnd_; }

    /// Waits for the line, without its end; empty when the server ends, or the
    /// patience does, before it wrote one. Call it once, when the server runs.
    std::string readLine();

private:
    int readEnd_ = -1;
    int writeEnd_ = -1;
};

}  // namespace quillmere::support
