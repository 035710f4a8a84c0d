#include "Terminal.h"

#include <cerrno>

#include <fcntl.h>
#include <io.h>

bool terminal::isTerminal(std::FILE *stream)
{
    return ::_isatty(::_fileno(stream)) != 0;
}

// The older consoles print the sequences as they are.
bool terminal::mayColour(std::FILE *)
{
    return false;
}

void terminal::setBinary(std::FILE *stream)
{
    ::_setmode(::_fileno(stream), _O_BINARY);
}

bool terminal::isBrokenPipe(int error)
{
    return error == EPIPE;
}
