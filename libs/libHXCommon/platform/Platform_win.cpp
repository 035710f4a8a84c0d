#include "Platform.h"

#include <QFile>

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

// A handle that may append and nothing else: the system adds each write to the end in one piece.
bool openForAppending(QFile &file)
{
    const auto path = reinterpret_cast<const wchar_t *>(file.fileName().utf16());
    const HANDLE handle =
        CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return false;
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_APPEND | _O_BINARY);
    return file.open(descriptor, QIODevice::WriteOnly | QIODevice::Append, QFileDevice::AutoCloseHandle);
}

void append(int descriptor, const char *data, std::size_t size)
{
    DWORD written = 0;
    WriteFile(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), data, static_cast<DWORD>(size), &written,
              nullptr);
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

int lockFile(const char *, int *)
{
    return 0;
}

void unlockFile(int) { }

void removeOrphanedSemaphore(const char *) { }

} // namespace platform
