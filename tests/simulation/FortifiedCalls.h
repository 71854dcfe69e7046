#pragma once

#include <sys/types.h>

#include <cstddef>

/// open() and read() as a program with fortified calls makes them: __open_2, __open64_2, __openat_2, __openat64_2 and
/// __read_chk.
namespace fortified {

int open(const char* path, int flags);
int open64(const char* path, int flags);
int openat(const char* path, int flags);
int openat64(const char* path, int flags);
/// @param bytes at most 512
ssize_t read(int fd, void* buffer, std::size_t bytes);

} // namespace fortified
