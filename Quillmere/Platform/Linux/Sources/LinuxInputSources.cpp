#include "Quillmere/Platform/Linux/Sources/LinuxInputSources.h"

#include "Quillmere/Platform/Linux/Sources/Sway/SwayInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Xkb/XkbInputSources.h"

#include <array>

namespace quillmere {

namespace {

/// A desktop whose layouts the program cannot reach.
class NoInputSources : public InputSourceService {
public:
    std::vector<InputSourceRecord> sources() override { return {}; }
    std::optional<std::string> currentID() override { return std::nullopt; }
    int select(const InputSourceRecord&) override { return 1; }
};

/// Makes the input sources of one kind of desktop; null on any other.
using Backend = std::unique_ptr<InputSourceService> (*)();

template <typename Sources>
std::unique_ptr<InputSourceService> createOne() {
    return Sources::create();
}

// Compositors first, since most of them have an X server too.
constexpr std::array<Backend, 2> backends{createOne<SwayInputSources>, createOne<XkbInputSources>};

}  // namespace

std::unique_ptr<InputSourceService> makeLinuxInputSources() {
    for (const Backend create : backends)
        if (std::unique_ptr<InputSourceService> sources = create()) return sources;
    return std::make_unique<NoInputSources>();
}

}  // namespace quillmere
