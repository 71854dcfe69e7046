#pragma once

#include "simulation/console/Conversation.h"

namespace kora::simulation {

/// Opens the socket of this process for the training console, unless it is open, and serves it on a thread of its own,
/// which blocks every signal and is never joined, so that it neither handles signals nor keeps the process from ending.
/// Without a socket the installation runs on without a console. A forked child has neither socket nor thread.
/// @param control gives the installation that commands are for, on that thread
void startListening(ControlGetter control) noexcept;
/// Takes the socket away: what this process works on is not its own. Consoles that are being served get their answer.
void stopListening() noexcept;

} // namespace kora::simulation
