#include "TapService/TapProtocol.h"

#include <algorithm>
#include <concepts>
#include <cstring>
#include <type_traits>
#include <utility>

namespace quillmere::tap {

namespace {

enum class Kind : std::uint8_t { interest = 1, verdict = 2, enable = 3, hello = 65, keyEvent = 66, disabled = 67 };

constexpr std::size_t headerSize = 4;

constexpr std::size_t sizeOf(Kind kind) {
    switch (kind) {
        case Kind::interest:
            return 8 + 4 * maxShortcuts;
        case Kind::verdict:
            return 12;
        case Kind::enable:
            return headerSize;
        case Kind::hello:
        case Kind::disabled:
            return 8;
        case Kind::keyEvent:
            return 24;
    }
    return 0;
}

/// Fills a message from front to back; what is left at the end stays zero.
class Writer {
public:
    explicit Writer(Kind kind) : packet_(sizeOf(kind)) {
        put(version);
        put(static_cast<std::uint8_t>(kind));
        put(std::uint16_t{0});
    }

    template <std::unsigned_integral Integer>
    void put(Integer value) {
        std::memcpy(packet_.data() + offset_, &value, sizeof value);
        offset_ += sizeof value;
    }
    void put(bool value) { put(static_cast<std::uint8_t>(value)); }

    Packet take() { return std::move(packet_); }

private:
    Packet packet_;
    std::size_t offset_ = 0;
};

/// Reads a message of a known size from front to back, and remembers whether
/// every value was one that may stand there.
class Reader {
public:
    explicit Reader(std::span<const std::byte> packet) : packet_(packet) {
        if (packet.size() < headerSize) {
            valid_ = false;
            return;
        }
        require(get<std::uint8_t>() == version);
        kind_ = Kind{get<std::uint8_t>()};
        require(get<std::uint16_t>() == 0);
        // Also refuses kinds that do not exist: no packet is that small.
        require(packet.size() == sizeOf(kind_));
    }

    Kind kind() const { return kind_; }
    bool isValid() const { return valid_; }
    void require(bool condition) { valid_ = valid_ && condition; }

    template <std::unsigned_integral Integer>
    Integer get() {
        Integer value = 0;
        if (packet_.size() - offset_ < sizeof value) {
            valid_ = false;
            return value;
        }
        std::memcpy(&value, packet_.data() + offset_, sizeof value);
        offset_ += sizeof value;
        return value;
    }
    bool getBoolean() {
        const auto value = get<std::uint8_t>();
        require(value <= 1);
        return value == 1;
    }

    /// Nothing but zero may follow.
    void end() {
        require(std::ranges::all_of(packet_.subspan(offset_), [](std::byte byte) { return byte == std::byte{0}; }));
    }

private:
    std::span<const std::byte> packet_;
    std::size_t offset_ = 0;
    Kind kind_{};
    bool valid_ = true;
};

Packet write(const Interest& interest) {
    Writer writer(Kind::interest);
    const auto count = std::min(interest.shortcuts.size(), maxShortcuts);
    writer.put(interest.everyKey);
    writer.put(interest.wantsFn);
    writer.put(static_cast<std::uint16_t>(count));
    for (const TapShortcut& shortcut : std::span(interest.shortcuts).first(count)) {
        writer.put(shortcut.code);
        writer.put(shortcut.modifiers);
        writer.put(std::uint8_t{0});
    }
    return writer.take();
}

Packet write(const Verdict& verdict) {
    Writer writer(Kind::verdict);
    writer.put(verdict.sequence);
    writer.put(verdict.swallow);
    return writer.take();
}

Packet write(const Enable&) {
    return Writer(Kind::enable).take();
}

Packet write(const Hello& hello) {
    Writer writer(Kind::hello);
    writer.put(hello.deadlineMilliseconds);
    return writer.take();
}

Packet write(const KeyEvent& event) {
    Writer writer(Kind::keyEvent);
    writer.put(event.sequence);
    writer.put(event.time);
    writer.put(event.code);
    writer.put(static_cast<std::uint8_t>(event.kind));
    writer.put(event.flags);
    return writer.take();
}

Packet write(const Disabled& disabled) {
    Writer writer(Kind::disabled);
    writer.put(static_cast<std::uint8_t>(disabled.reason));
    return writer.take();
}

Interest readInterest(Reader& reader) {
    Interest interest;
    interest.everyKey = reader.getBoolean();
    interest.wantsFn = reader.getBoolean();
    const auto count = reader.get<std::uint16_t>();
    reader.require(count <= maxShortcuts);
    for (std::uint16_t index = 0; index < count && reader.isValid(); ++index) {
        TapShortcut shortcut;
        shortcut.code = reader.get<std::uint16_t>();
        shortcut.modifiers = reader.get<std::uint8_t>();
        reader.require(shortcut.code < keyCodeLimit);
        reader.require((shortcut.modifiers & ~Flags::modifiers) == 0);
        reader.require(reader.get<std::uint8_t>() == 0);
        interest.shortcuts.push_back(shortcut);
    }
    return interest;
}

Verdict readVerdict(Reader& reader) {
    Verdict verdict;
    verdict.sequence = reader.get<std::uint32_t>();
    reader.require(verdict.sequence != 0);
    verdict.swallow = reader.getBoolean();
    return verdict;
}

Hello readHello(Reader& reader) {
    return Hello{reader.get<std::uint32_t>()};
}

KeyEvent readKeyEvent(Reader& reader) {
    KeyEvent event;
    event.sequence = reader.get<std::uint32_t>();
    event.time = reader.get<std::uint64_t>();
    event.code = reader.get<std::uint16_t>();
    event.kind = KeyEventKind{reader.get<std::uint8_t>()};
    event.flags = reader.get<std::uint8_t>();
    reader.require(event.kind >= KeyEventKind::press && event.kind <= KeyEventKind::other);
    reader.require(event.code < keyCodeLimit);
    reader.require((event.flags & ~(Flags::modifiers | Flags::fn)) == 0);
    // What was typed is told of no key but those of interest.
    const bool hasCode = event.kind != KeyEventKind::flags && event.kind != KeyEventKind::other;
    reader.require(hasCode || event.code == 0);
    reader.require(event.kind == KeyEventKind::press || event.sequence == 0);
    return event;
}

Disabled readDisabled(Reader& reader) {
    const DisabledReason reason{reader.get<std::uint8_t>()};
    reader.require(reason == DisabledReason::timeout || reason == DisabledReason::userInput);
    return Disabled{reason};
}

template <class Message>
std::optional<Message> finish(Reader& reader, Message message) {
    reader.end();
    if (!reader.isValid()) return std::nullopt;
    return message;
}

}  // namespace

Packet encode(const ClientMessage& message) {
    return std::visit([](const auto& content) { return write(content); }, message);
}

Packet encode(const ServiceMessage& message) {
    return std::visit([](const auto& content) { return write(content); }, message);
}

std::optional<ClientMessage> decodeClientMessage(std::span<const std::byte> packet) {
    Reader reader(packet);
    if (!reader.isValid()) return std::nullopt;
    switch (reader.kind()) {
        case Kind::interest:
            return finish<ClientMessage>(reader, readInterest(reader));
        case Kind::verdict:
            return finish<ClientMessage>(reader, readVerdict(reader));
        case Kind::enable:
            return finish<ClientMessage>(reader, Enable{});
        default:
            return std::nullopt;
    }
}

std::optional<ServiceMessage> decodeServiceMessage(std::span<const std::byte> packet) {
    Reader reader(packet);
    if (!reader.isValid()) return std::nullopt;
    switch (reader.kind()) {
        case Kind::hello:
            return finish<ServiceMessage>(reader, readHello(reader));
        case Kind::keyEvent:
            return finish<ServiceMessage>(reader, readKeyEvent(reader));
        case Kind::disabled:
            return finish<ServiceMessage>(reader, readDisabled(reader));
        default:
            return std::nullopt;
    }
}

}  // namespace quillmere::tap
