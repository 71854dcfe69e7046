#pragma once

#include <string>

namespace kora::recorder {

/// Tells the service manager how the program is, by the datagram that sd_notify(3) describes; does nothing where no
/// manager listens ($NOTIFY_SOCKET).
void notifyServiceManager(const std::string& state);

/// Seconds between two signs of life that the manager wants ($WATCHDOG_USEC), 0 for none.
double watchdogSeconds();

} // namespace kora::recorder
