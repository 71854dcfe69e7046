#pragma once

#include <sys/socket.h>
#include <sys/types.h>

#include <optional>
#include <string>

namespace kora::simulation {

/// An address of the socket, for bind() and connect(). @return its file descriptor, or -1 with errno
int bindTo(int fd, const std::string& path);
int connectTo(int fd, const std::string& path);
/// A new socket that programs started from here do not inherit.
/// @param type SOCK_STREAM, or SOCK_SEQPACKET for one that keeps packets apart; @return its descriptor, or -1
int newSocket(int type = SOCK_STREAM);
/// The process and user behind a connection, at its other end.
std::optional<ucred> peerOf(int fd);
bool isPeerSameUser(int fd);
/// The longest time that a receive or a send on the socket waits.
void limitWaiting(int fd, double seconds);
/// Sends all of it. @return whether it was taken
bool sendAll(int fd, const std::string& text);

} // namespace kora::simulation
