#include "Platform.h"

#include <QDir>
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

bool openForAppending(QFile &file)
{
    // Asks for the descriptor now, because Qt makes it on first use, which could be in several threads at
    // once.
    return file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered) && file.handle() != -1;
}

void append(int descriptor, const char *data, std::size_t size)
{
    OVERLAPPED end{};
    end.Offset = end.OffsetHigh = 0xFFFFFFFF; // the system finds the end and writes there in one piece
    WriteFile(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), data, static_cast<DWORD>(size), nullptr,
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

bool installTerminationHandlers(void (*)(int, void *, void *), bool (*onConsoleEvent)(unsigned long))
{
    consoleEventHandler = onConsoleEvent;
    return SetConsoleCtrlHandler(&handleConsoleEvent, TRUE) != 0;
}

void restoreTerminationHandlers() { }

bool openChannel(int *)
{
    return false;
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

bool isSameEntry(const QString &path, const QString &other)
{
    return QFileInfo(path) == QFileInfo(other);
}

bool removeDirectory(const QDir &dir, void (*enter)(const QString &path))
{
    if (!dir.exists())
        return false;
    enter(dir.path());
    if (QFileInfo(dir.absolutePath()).isSymLink())
        return !QFile::remove(dir.absolutePath());

    bool failed = false;
    const QFileInfoList entries =
        dir.entryInfoList(QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo &entry : entries) {
        if (entry.isDir())
            failed = removeDirectory(QDir(entry.absoluteFilePath()), enter);
        else if (!QFile::remove(entry.filePath()))
            failed = true;
    }
    return !dir.rmdir(dir.absolutePath()) || failed;
}

} // namespace platform
