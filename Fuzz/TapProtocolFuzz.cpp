#include "Fuzz/Require.h"
#include "TapService/TapProtocol.h"

#include <algorithm>
#include <span>

namespace quillmere::tap {
namespace {

// Whatever the channel's decoders accept, the encoders write as the same bytes:
// so nothing is accepted that has no meaning, and nothing is lost.
void check(std::span<const std::byte> packet) {
    const auto isPacket = [packet](const Packet& other) { return std::ranges::equal(packet, other); };
    const auto fromClient = decodeClientMessage(packet);
    const auto fromService = decodeServiceMessage(packet);
    require(!fromClient || !fromService, "a message has one direction");
    require(!fromClient || isPacket(encode(*fromClient)), "a client's message is written as it was read");
    require(!fromService || isPacket(encode(*fromService)), "a service's message is written as it was read");
}

}  // namespace
}  // namespace quillmere::tap

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quillmere::tap::check(std::as_bytes(std::span(data, size)));
    return 0;
}
