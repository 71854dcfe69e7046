#include "tango/AttributePage.h"
#include "tango/KoraInstallationClass.h"

#include <tango/tango.h>

#include <cstring>
#include <iostream>

void Tango::DServer::class_factory()
{
    add_class(kora::KoraInstallationClass::init());
}

namespace {

constexpr char usage[] = "usage: KoraInstallation INSTANCE [options of TANGO's device servers]\n"
                         "       KoraInstallation --attributes   prints the table of attributes\n"
                         "       KoraInstallation --version | --help\n";

/// Options that need no control system. @return whether there was one
bool answered(int argc, char* argv[])
{
    if (argc != 2)
        return false;
    if (std::strcmp(argv[1], "--attributes") == 0)
        std::cout << kora::attributePage();
    else if (std::strcmp(argv[1], "--version") == 0)
        std::cout << "KoraInstallation " << KORA_VERSION << std::endl;
    else if (std::strcmp(argv[1], "--help") == 0)
        std::cout << usage;
    else
        return false;
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    if (answered(argc, argv))
        return 0;
    try {
        Tango::Util* const server = Tango::Util::init(argc, argv);
        server->server_init(false);
        std::cout << "Ready to accept request" << std::endl;
        server->server_run();
        server->server_cleanup();
        return 0;
    } catch (const Tango::DevFailed& failure) {
        std::cerr << failure.errors[0].desc.in() << std::endl;
    } catch (const CORBA::Exception& exception) {
        std::cerr << "The server ended with the exception " << exception._name() << std::endl;
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << std::endl;
    }
    return 1;
}
