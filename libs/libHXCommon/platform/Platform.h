#ifndef PLATFORM_H
#define PLATFORM_H

#include <cstddef>
#include <cstdio>

class QDir;
class QFile;
class QString;

/// What differs between operating systems; private to the library. One source file per system.
namespace platform {

struct TimeOfDay {
    int hour;
    int minute;
    int second;
    int millisecond;
};

/// The current local time, following a change of the time zone within a second; from any thread.
TimeOfDay localTimeOfDay();

/// Opens a named file, unbuffered, so that append() adds to its end, and makes it when missing. POSIX: a
/// FIFO whose reader has gone no longer ends the process from then on.
bool openForAppending(QFile &file);

/// Adds all bytes in one piece to a file opened so; from any thread, errors are ignored.
void append(int descriptor, const char *data, std::size_t size);

/// The descriptor of a standard stream, negative when it has none.
int descriptorOf(std::FILE *stream);

/// Opens the null device under @p descriptor if that is free.
void parkOnNullDevice(int descriptor);

/**
 * Shows the modal report of a fatal message; a test may replace it.
 *
 * Windows shows a message box with an OK button. Elsewhere title and text go to standard error and count as
 * shown.
 * @return 0 when the report could not be shown
 */
extern int (*showFatalReport)(const char *title, const char *text);

/// Whether the system asks a process to end by POSIX signals.
extern const bool hasTerminationSignals;

/// What is to be called when the system asks the process to end: @p onSignal on POSIX systems, for no signal
/// that is ignored, and @p onConsoleEvent on Windows.
/// @return whether that succeeded
bool installTerminationHandlers(void (*onSignal)(int number, void *info, void *context),
                                bool (*onConsoleEvent)(unsigned long event));

/// POSIX: gives the signals the actions back that installTerminationHandlers() has replaced.
void restoreTerminationHandlers();

/// POSIX: fills @p channel with a non-blocking socket pair unless it holds one already.
/// @return whether it holds one
bool openChannel(int channel[2]);

/// Writes a signal number to a channel; async-signal-safe, never blocks, keeps errno.
void writeSignal(int descriptor, int number);

/// The next signal number of a channel, -1 when there is none.
int readSignal(int descriptor);

/**
 * Keeps other callers of this function away from the same file, in all processes, until unlockFile(). Makes
 * the file when missing; the system releases the lock of a process that ends.
 *
 * Windows needs none: its named objects come into being and vanish in one step.
 * @param milliseconds how long to wait; less what was waited afterwards
 * @return what unlockFile() takes; -1 when there is no lock
 */
int lockFile(const char *path, int *milliseconds);
void unlockFile(int lock);

/// Removes the semaphore that Qt makes for @p keyFile if it never had a value, because its maker was killed.
void removeOrphanedSemaphore(const char *keyFile);

/// Whether two paths lead to one entry of one directory, so that removing the one removes the other, too.
/// Other hard links to the same file do not count.
bool isSameEntry(const QString &path, const QString &other);

/**
 * Removes a directory tree as FileSync::removeDirectory() documents it, and calls @p enter with the path of
 * each directory before that.
 *
 * POSIX: who swaps a directory of the tree for a symbolic link meanwhile does not lead it out of the tree.
 * @return whether it @e failed
 */
bool removeDirectory(const QDir &dir, void (*enter)(const QString &path));

} // namespace platform

#endif
