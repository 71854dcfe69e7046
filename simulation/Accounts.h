#pragma once

namespace kora::simulation {

/// Level of an account: "cruise" 0, "user" 1, "admin" 2. The password of "user" and of "admin" is the name itself;
/// "cruise" takes any, since it gives no right that could be guarded. A wrong password or an unknown name gives 0.
/// @param user, password  buffers of 32 bytes, without a terminator when the text has 32 characters or more; such
///                        a text matches no account
int accountLevel(const char* user, const char* password);

} // namespace kora::simulation
