#pragma once

#include <string>

namespace kora {

/// The table of attributes as the documentation shows it, in Markdown, made from the tables that the server uses.
std::string attributePage();

} // namespace kora
