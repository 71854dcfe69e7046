#pragma once

#include <string>

namespace Tango {
class client_addr;
}

namespace kora {

/// Who asks, for the log: "USER at HOST (process PID)". TANGO's protocol does not carry the user, so that it is known
/// for the clients of this host alone, as the owner of the process; for others it reads "unknown user".
/// @param client as DeviceImpl::get_client_ident() gives it; null for the server itself
std::string clientName(const Tango::client_addr* client);

} // namespace kora
