#include "tango/ClientName.h"

#include <tango/tango.h>

#include <pwd.h>
#include <sys/stat.h>

#include <vector>

namespace kora {

namespace {

/// The address of the host alone, out of omniORB's "giop:tcp:[::ffff:127.0.0.1]:40312" and its likes.
std::string hostOf(const std::string& address)
{
    if (address.compare(0, 9, "giop:unix") == 0)
        return "localhost";
    const std::size_t first = address.find("tcp:");
    std::string host = first == std::string::npos ? address : address.substr(first + 4);
    host = host.substr(0, host.rfind(':'));
    for (const char* noise : {"[", "]", "::ffff:"}) {
        const std::size_t found = host.find(noise);
        if (found != std::string::npos)
            host.erase(found, std::strlen(noise));
    }
    return host;
}

bool isThisHost(const std::string& host)
{
    return host == "localhost" || host == "::1" || host.compare(0, 4, "127.") == 0;
}

std::string ownerOf(unsigned long process)
{
    struct stat entry = {};
    if (::stat(("/proc/" + std::to_string(process)).c_str(), &entry) != 0)
        return "unknown user";
    std::vector<char> room(16384);
    passwd account = {};
    passwd* found = nullptr;
    ::getpwuid_r(entry.st_uid, &account, room.data(), room.size(), &found);
    return found ? found->pw_name : "user " + std::to_string(entry.st_uid);
}

} // namespace

std::string clientName(const Tango::client_addr* client)
{
    if (!client)
        return "the server itself";
    const std::string host = hostOf(client->client_ip);
    std::string resolved;
    const bool named = client->client_ip_2_client_name(resolved) == 0 && !resolved.empty();
    const bool local = isThisHost(host) && client->client_ident;
    return (local ? ownerOf(client->client_pid) : "unknown user") + " at " + (named ? resolved : host) + " (process " +
           (client->client_ident ? std::to_string(client->client_pid) : "unknown") + ')';
}

} // namespace kora
