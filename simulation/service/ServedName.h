#pragma once

#include <string>

namespace kora::simulation {

/// A name by which this process serves an installation: a listening socket of packets in the folder of the
/// simulations, taken away at the end.
class ServedName
{
public:
    /// @throw InputError when the name is served already, NoSimulation when the socket cannot be made
    explicit ServedName(const std::string& name);
    ~ServedName();
    ServedName(const ServedName&) = delete;
    ServedName& operator=(const ServedName&) = delete;

    int listener() const { return fd; }
    const std::string& socket() const { return path; }

private:
    void bindAndListen(const std::string& folder);

    std::string path;
    int fd = -1;
};

} // namespace kora::simulation
