#pragma once

#include <cstddef>

/// What console and listener say to each other: one connection a command. The console sends the command as one line;
/// the listener answers with one of these lines, then with the text of the answer or of the refusal, and hangs up.
namespace kora::simulation::protocol {

constexpr char accepted[] = "accepted\n";
constexpr char refused[] = "refused\n";
/// Bytes with the line end; longer lines are refused.
constexpr std::size_t longestRequest = 4096;

/// What only a service is told: to end, and to list the programs that have joined.
constexpr char stop[] = "stop";
constexpr char programs[] = "programs";

} // namespace kora::simulation::protocol
