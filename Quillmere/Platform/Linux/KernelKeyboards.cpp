#include "Quillmere/Platform/Linux/KernelKeyboards.h"

#include "TapService/KeyRole.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

namespace quillmere {

namespace {

/// The kernel's words of bits, the highest first.
tap::KeySet keySet(std::string_view words) {
    tap::KeySet keys;
    std::istringstream stream{std::string(words)};
    stream >> std::hex;
    for (unsigned long word = 0; stream >> word;)
        keys = keys << (sizeof word * CHAR_BIT) | tap::KeySet(word);
    return keys;
}

bool isForTyping(const tap::KeySet& keys) {
    for (std::size_t code = 0; code < keys.size(); ++code)
        if (keys[code] && tap::isTypingKey(static_cast<std::uint16_t>(code))) return true;
    return false;
}

}  // namespace

bool KernelKeyboard::tellsOfFn() const {
    for (std::size_t code = 0; code < keys.size(); ++code)
        if (keys[code] && tap::roleOf(static_cast<std::uint16_t>(code)) == tap::KeyRole::fn) return true;
    return false;
}

std::vector<KernelKeyboard> kernelKeyboards(std::string_view devices) {
    constexpr std::string_view name = "N: Name=\"";
    constexpr std::string_view keys = "B: KEY=";
    std::vector<KernelKeyboard> result;
    std::istringstream stream{std::string(devices)};
    std::string current;
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with(name)) current = line.substr(name.size(), line.rfind('"') - name.size());
        if (!line.starts_with(keys)) continue;
        KernelKeyboard keyboard{.name = current, .keys = keySet(std::string_view(line).substr(keys.size()))};
        if (isForTyping(keyboard.keys)) result.push_back(std::move(keyboard));
    }
    return result;
}

std::string kernelInputDevices() {
    std::ifstream file("/proc/bus/input/devices");
    return {std::istreambuf_iterator<char>(file), {}};
}

bool KernelKeyboards::mayTellOfFn() const {
    const std::vector<KernelKeyboard> keyboards = kernelKeyboards(kernelInputDevices());
    return keyboards.empty() || std::ranges::any_of(keyboards, &KernelKeyboard::tellsOfFn);
}

}  // namespace quillmere
