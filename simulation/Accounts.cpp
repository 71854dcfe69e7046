#include "simulation/Accounts.h"

#include <cstring>
#include <string_view>

namespace kora::simulation {

namespace {

constexpr std::size_t bufferBytes = 32;

struct Account
{
    std::string_view name;
    std::string_view password;
    int level;
};
constexpr Account accounts[] = {{"user", "user", 1}, {"admin", "admin", 2}};

std::string_view bufferText(const char* buffer)
{
    return buffer ? std::string_view(buffer, strnlen(buffer, bufferBytes)) : std::string_view();
}

} // namespace

int accountLevel(const char* user, const char* password)
{
    const std::string_view name = bufferText(user);
    const std::string_view secret = bufferText(password);
    for (const Account& account : accounts)
        if (account.name == name && account.password == secret)
            return account.level;
    return 0;
}

} // namespace kora::simulation
