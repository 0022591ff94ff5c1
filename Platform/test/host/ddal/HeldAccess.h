/// @file
/// The pread and pwrite that a program's drivers call, taken over to hold some of them.
#pragma once

/// Called before every access, which is made when this returns; async-signal-safe. Whoever links HeldAccess.cpp, a test
/// program or a library that a program is started with, defines it.
void BeforeAccess(int fd);
