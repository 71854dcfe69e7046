#pragma once

namespace kora::simulation {

/// Opens the socket of this process for the training console and serves it on a thread of its own, which blocks every
/// signal and is never joined, so that it neither handles signals nor keeps the process from ending. Without a socket
/// the installation runs on without a console. A forked child has neither socket nor thread.
void startListening() noexcept;

} // namespace kora::simulation
