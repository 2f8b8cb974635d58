#pragma once

/// Between a test and the process that owns the tap for it (`tap_owner`): a
/// SOCK_SEQPACKET socket, each packet a letter and what follows it.
namespace quillmere::machine::wire {

// From the test.

inline constexpr char callMethod = 'm';   ///< a method of the service without arguments; answered with `result`
inline constexpr char openTap = 'o';      ///< answered with `result`
inline constexpr char sendPacket = 's';   ///< a packet for the channel
inline constexpr char flood = 'f';        ///< a packet for the channel, again and again until it closes
inline constexpr char answer = 'a';       ///< how questions are answered from now on: `swallow`, `pass`, `wait`
inline constexpr char stopReading = 'r';  ///< the channel is read no more
inline constexpr char closeTap = 'c';

inline constexpr char swallow = 's';
inline constexpr char pass = 'p';
inline constexpr char wait = 'w';

// To the test.

inline constexpr char result = 'R';  ///< empty, or the D-Bus name of the error
inline constexpr char packet = 'P';  ///< a packet from the channel
inline constexpr char closed = 'C';  ///< the service has closed the channel

}  // namespace quillmere::machine::wire
