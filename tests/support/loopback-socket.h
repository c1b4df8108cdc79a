// Sockets of the loopback address, as little of them as a test's server needs.

#pragma once

#include <cstdint>
#include <string>

namespace orvlog::test
{

using SocketHandle = uint64_t;
inline constexpr SocketHandle kNoSocket = UINT64_MAX;

// A socket that listens on 127.0.0.1, at a port that the system chose; kNoSocket for failure.
SocketHandle listen_on_loopback(uint16_t& port);
// The next connection, or kNoSocket when none came within `milliseconds`.
SocketHandle accept_within(SocketHandle listening, int milliseconds);
// Up to 4096 bytes; false when the other side closed. Nothing may come within `milliseconds`.
bool receive_within(SocketHandle socket, int milliseconds, std::string& received);
// False when the other side doesn't take it all.
bool send_all(SocketHandle socket, const std::string& bytes);
void close_socket(SocketHandle socket);

}  // namespace orvlog::test
