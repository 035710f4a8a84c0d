#include "Terminal.h"

#include <cerrno>
#include <cstdlib>

#include <unistd.h>

bool terminal::isTerminal(std::FILE *stream)
{
    return ::isatty(::fileno(stream)) != 0;
}

bool terminal::mayColour(std::FILE *stream)
{
    const char *const noColour = std::getenv("NO_COLOR");
    return isTerminal(stream) && (noColour == nullptr || *noColour == '\0');
}

void terminal::setBinary(std::FILE *) { }

bool terminal::isBrokenPipe(int error)
{
    return error == EPIPE;
}
