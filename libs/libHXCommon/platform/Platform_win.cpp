#include "Platform.h"

#include <fcntl.h>
#include <io.h>

#include <windows.h>

namespace platform {

namespace {

bool (*consoleEventHandler)(unsigned long) = nullptr;

int showMessageBox(const char *title, const char *text)
{
    return MessageBoxA(nullptr, text, title, MB_OK);
}

BOOL WINAPI handleConsoleEvent(DWORD event)
{
    return consoleEventHandler(event) ? TRUE : FALSE;
}

} // namespace

int (*showFatalReport)(const char *, const char *) = &showMessageBox;
const bool hasTerminationSignals = false;

TimeOfDay localTimeOfDay()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    return {now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
}

void append(int descriptor, const char *data, std::size_t size)
{
    // This offset stands for the end of the file: the system appends in one piece, whatever other threads do.
    OVERLAPPED end{};
    end.Offset = 0xFFFFFFFF;
    end.OffsetHigh = 0xFFFFFFFF;
    DWORD written = 0;
    WriteFile(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), data, static_cast<DWORD>(size), &written,
              &end);
}

int descriptorOf(std::FILE *stream)
{
    return _fileno(stream);
}

void parkOnNullDevice(int descriptor)
{
    if (descriptor < 0 || _get_osfhandle(descriptor) != -1)
        return;
    const int null = _open("NUL", _O_RDWR);
    if (null == -1 || null == descriptor)
        return;
    _dup2(null, descriptor);
    _close(null);
}

bool installTerminationHandlers(const TerminationHandlers &handlers, int *)
{
    consoleEventHandler = handlers.consoleEvent;
    return SetConsoleCtrlHandler(&handleConsoleEvent, TRUE) != 0;
}

void writeSignal(int, int) { }

int readSignal(int)
{
    return -1;
}

} // namespace platform
