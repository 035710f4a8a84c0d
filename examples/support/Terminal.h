#ifndef TERMINAL_H
#define TERMINAL_H

#include <cstdio>

// What the tools need to know of the system's terminals and standard streams.
namespace terminal {

/// Whether a person reads what is written there.
bool isTerminal(std::FILE *stream);

/// Whether it may be coloured: on a terminal, unless NO_COLOR is set.
bool mayColour(std::FILE *stream);

/// Keeps the system from translating line ends.
void setBinary(std::FILE *stream);

/// Whether somebody still reads: false after the reader of a pipe has left.
bool isBrokenPipe(int error);

} // namespace terminal

#endif
