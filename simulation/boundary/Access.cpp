#include "simulation/boundary/Access.h"

#include "simulation/console/CommandLine.h"
#include "simulation/console/Listener.h"
#include "simulation/console/SocketDirectory.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>

extern "C" {
/// Rate of the display stream at power-on, Hz. The program defines and exports it; left undefined here, so that a
/// program without it does not start.
extern int SAMP_FREQ;
}

namespace kora::simulation {

namespace {

constexpr char variable[] = "KORA_SIMULATION";
constexpr char defaultName[] = "default";
constexpr char ownName[] = "own";

std::atomic<Access*> chosen{nullptr};
/// Taken while the choice is made. Made anew in a forked child, whose parent may have been choosing.
alignas(std::mutex) unsigned char choosingPlace[sizeof(std::mutex)];
std::mutex& choosing = *new (choosingPlace) std::mutex;

std::string wantedName()
{
    const char* const name = secure_getenv(variable);
    return name ? name : "";
}

void chooseAnewInChild()
{
    new (choosingPlace) std::mutex;
    Access* const parents = chosen.load();
    if (parents && parents->abandonInChild())
        chosen = nullptr;
}

[[noreturn]] void endUnserved(const std::string& name, bool answersNot)
{
    std::fprintf(stderr, "libkoralink.so.1 (simulated installation): %s=%s: %s\n", variable, printable(name).c_str(),
                 answersNot ? "the service of this name does not answer" : "no installation is served by this name");
    // Nothing of the program may run on: it asked for this one installation.
    _exit(127);
}

std::unique_ptr<Client> joinWanted()
{
    const std::string name = wantedName();
    std::unique_ptr<Client> client;
    if (name == ownName)
        return client;
    const bool isServable = name.empty() || isServedName(name);
    const Client::Outcome outcome =
        isServable ? Client::join(name.empty() ? defaultName : name, client) : Client::Outcome::NotServed;
    if (!name.empty() && outcome != Client::Outcome::Joined)
        endUnserved(name, outcome == Client::Outcome::NoAnswer);
    if (outcome == Client::Outcome::NoAnswer)
        std::fprintf(stderr,
                     "libkoralink.so.1 (simulated installation): the service \"%s\" does not answer: this program has "
                     "an installation of its own\n",
                     defaultName);
    return client;
}

Access* choose()
{
    static const int registered = pthread_atfork(nullptr, nullptr, chooseAnewInChild);
    std::unique_ptr<Client> client = registered == 0 ? joinWanted() : nullptr;
    if (!client) {
        startListening(accessControl);
        return new Access(SAMP_FREQ);
    }
    // Who asks for the simulation of this process is to find the service.
    stopListening();
    return new Access(std::move(client));
}

} // namespace

Access::Access(int displayRate) : own(std::make_unique<Own>(displayRate)) {}

Access::Access(std::unique_ptr<Client> joined)
    : client(std::move(joined)), remote(std::make_unique<RemoteControl>(*client))
{
}

int Access::awaitedRecords(void* destination, int count)
{
    return client ? client->awaitedRecords(destination, count) : own->installation.awaitedRecords(destination, count);
}

bool Access::isDevicePresent(int device)
{
    return client ? client->isDevicePresent(device) : own->installation.isDevicePresent(device);
}

SimulationControl& Access::control()
{
    if (remote)
        return *remote;
    return own->installation;
}

bool Access::abandonInChild()
{
    if (client)
        client->abandon();
    return client != nullptr;
}

Access& access()
{
    Access* one = chosen.load(std::memory_order_acquire);
    if (!one) {
        const std::lock_guard<std::mutex> lock(choosing);
        one = chosen.load(std::memory_order_relaxed);
        if (!one) {
            one = choose();
            chosen.store(one, std::memory_order_release);
        }
    }
    return *one;
}

SimulationControl& accessControl()
{
    return access().control();
}

bool isOwnExpected()
{
    const std::string name = wantedName();
    if (name == ownName)
        return true;
    const std::string folder = socketFolder();
    const int socket = folder.empty() || !name.empty() ? -1 : connectToServed(servedPath(folder, defaultName));
    if (socket >= 0)
        close(socket);
    return name.empty() && socket < 0;
}

} // namespace kora::simulation
