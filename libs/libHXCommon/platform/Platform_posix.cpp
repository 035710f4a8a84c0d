#include "Platform.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

void (*signalHandler)(int, void *, void *) = nullptr;

int reportOnStandardError(const char *title, const char *text)
{
    std::fprintf(stderr, "%s: %s\n", title, text);
    return 1;
}

void handleSignal(int number, siginfo_t *info, void *context)
{
    signalHandler(number, info, context);
}

struct TerminationSignal {
    int number;
    struct sigaction former;
};
TerminationSignal terminationSignals[] = {{SIGINT, {}}, {SIGTERM, {}}, {SIGHUP, {}}};

// Removes a directory, or a link to one, from its parent.
bool removeTree(int parent, const QByteArray &name, const QDir &dir, void (*enter)(const QString &path))
{
    struct stat status { };
    if (::fstatat(parent, name, &status, 0) != 0 || !S_ISDIR(status.st_mode))
        return false;
    enter(dir.path());
    if (::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode))
        return ::unlinkat(parent, name, 0) != 0;

    bool failed = false;
    const int descriptor = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    // Through the descriptor, which no link can lead elsewhere; without /proc nothing is listed.
    const QDir opened(QStringLiteral("/proc/self/fd/%1").arg(descriptor));
    const QFileInfoList entries = opened.entryInfoList(
        dir.nameFilters(), QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot, dir.sorting());
    for (const QFileInfo &entry : entries) {
        const QByteArray entryName = QFile::encodeName(entry.fileName());
        if (entry.isDir())
            failed = removeTree(descriptor, entryName, QDir(dir.absoluteFilePath(entry.fileName())), enter);
        else if (::unlinkat(descriptor, entryName, 0) != 0)
            failed = true;
    }
    ::close(descriptor);
    return ::unlinkat(parent, name, AT_REMOVEDIR) != 0 || failed;
}

} // namespace

int (*showFatalReport)(const char *, const char *) = &reportOnStandardError;
const bool hasTerminationSignals = true;

TimeOfDay localTimeOfDay()
{
    // tzset() looks at the time zone file on every call, so it is asked once a second only.
    static thread_local std::time_t cachedSecond = -1;
    static thread_local std::tm cached{};

    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    if (now.tv_sec != cachedSecond) {
        ::tzset();
        ::localtime_r(&now.tv_sec, &cached);
        cachedSecond = now.tv_sec;
    }
    return {cached.tm_hour, cached.tm_min, cached.tm_sec, int(now.tv_nsec / 1000000)};
}

bool openForAppending(QFile &file)
{
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
        return false;
    struct stat status { };
    struct sigaction action { };
    // As Qt does for its own pipes and sockets.
    if (::fstat(file.handle(), &status) == 0 && S_ISFIFO(status.st_mode)
        && ::sigaction(SIGPIPE, nullptr, &action) == 0 && action.sa_handler == SIG_DFL)
        std::signal(SIGPIPE, SIG_IGN);
    return true;
}

void append(int descriptor, const char *data, std::size_t size)
{
    // The descriptor is in append mode: one write is one whole line, whatever other threads do.
    while (size > 0) {
        const ssize_t written = ::write(descriptor, data, size);
        if (written > 0) {
            data += written;
            size -= std::size_t(written);
        } else if (errno != EINTR) {
            return;
        }
    }
}

int descriptorOf(std::FILE *stream)
{
    return ::fileno(stream);
}

void parkOnNullDevice(int descriptor)
{
    if (descriptor < 0 || ::fcntl(descriptor, F_GETFD) != -1)
        return;
    const int null = ::open("/dev/null", O_RDWR);
    if (null == -1 || null == descriptor)
        return;
    ::dup2(null, descriptor);
    ::close(null);
}

bool installTerminationHandlers(void (*onSignal)(int, void *, void *), bool (*)(unsigned long))
{
    signalHandler = onSignal;
    struct sigaction action { };
    action.sa_sigaction = &handleSignal;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    bool installed = true;
    for (auto &[number, former] : terminationSignals) {
        struct sigaction current { };
        ::sigaction(number, nullptr, &current);
        // Ignored in jobs that are to survive the terminal, such as those of nohup.
        if (current.sa_handler == SIG_IGN || current.sa_sigaction == &handleSignal)
            continue;
        installed = ::sigaction(number, &action, &former) == 0 && installed;
    }
    return installed;
}

void restoreTerminationHandlers()
{
    for (const auto &[number, former] : terminationSignals) {
        struct sigaction current { };
        ::sigaction(number, nullptr, &current);
        if (current.sa_sigaction == &handleSignal)
            ::sigaction(number, &former, nullptr);
    }
}

bool openChannel(int channel[2])
{
    return channel[0] != -1
        || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, channel) == 0;
}

void writeSignal(int descriptor, int number)
{
    const int savedErrno = errno;
    const auto byte = static_cast<unsigned char>(number);
    if (::write(descriptor, &byte, 1) != 1) // a full channel has enough requests waiting
        errno = savedErrno;
}

int readSignal(int descriptor)
{
    unsigned char byte = 0;
    return ::read(descriptor, &byte, 1) == 1 ? byte : -1; // never waits, so nothing interrupts it
}

int lockFile(const char *path, int *milliseconds)
{
    // Without O_CREAT first: another user's file is opened, but not made, in a shared directory.
    int descriptor = ::open(path, O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor == -1)
        descriptor = ::open(path, O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_CREAT, 0644);
    while (::flock(descriptor, LOCK_EX | LOCK_NB) == -1) {
        if (errno != EWOULDBLOCK || *milliseconds <= 0) {
            ::close(descriptor);
            return -1;
        }
        --*milliseconds;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return descriptor;
}

void unlockFile(int lock)
{
    ::close(lock);
}

void removeOrphanedSemaphore(const char *keyFile)
{
    const key_t key = ::ftok(keyFile, 'Q'); // -1 without the file: a key like any other
    const int semaphore = key == -1 ? -1 : ::semget(key, 1, 0);
    if (::semctl(semaphore, 0, GETVAL) == 0 && ::semctl(semaphore, 0, GETPID) == 0)
        ::semctl(semaphore, 0, IPC_RMID);
}

bool isSameEntry(const QString &path, const QString &other)
{
    const QFileInfo entry(QFileInfo(path).canonicalFilePath());
    const QFileInfo otherEntry(QFileInfo(other).canonicalFilePath());
    struct stat directory { };
    struct stat otherDirectory { };
    return entry.fileName() == otherEntry.fileName()
        && ::stat(QFile::encodeName(entry.path()), &directory) == 0
        && ::stat(QFile::encodeName(otherEntry.path()), &otherDirectory) == 0
        && directory.st_dev == otherDirectory.st_dev && directory.st_ino == otherDirectory.st_ino;
}

bool removeDirectory(const QDir &dir, void (*enter)(const QString &path))
{
    return removeTree(AT_FDCWD, QFile::encodeName(dir.absolutePath()), dir, enter);
}

} // namespace platform
