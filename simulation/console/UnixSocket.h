#pragma once

#include <string>

namespace kora::simulation {

/// An address of the socket, for bind() and connect(). @return its file descriptor, or -1 with errno
int bindTo(int fd, const std::string& path);
int connectTo(int fd, const std::string& path);
/// A new stream socket that programs started from here do not inherit. @return its descriptor, or -1
int newSocket();
/// The longest time that a receive or a send on the socket waits.
void limitWaiting(int fd, int seconds);
/// Sends all of it. @return whether it was taken
bool sendAll(int fd, const std::string& text);

} // namespace kora::simulation
