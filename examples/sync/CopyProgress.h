#ifndef COPYPROGRESS_H
#define COPYPROGRESS_H

#include <QFileInfo>
#include <QSemaphore>
#include <QThread>

#include <memory>

/// While it lives, shows a person at a terminal how far the copy of a file is. The copy blocks its thread, so
/// that the target is watched from another one.
class CopyProgress {
public:
    CopyProgress(const QString &source, const QString &target);
    ~CopyProgress();
    CopyProgress(const CopyProgress &) = delete;
    CopyProgress &operator=(const CopyProgress &) = delete;

private:
    void watch();

    QFileInfo m_source;
    QFileInfo m_target;
    QSemaphore m_end;
    std::unique_ptr<QThread> m_thread; ///< null without a terminal
};

#endif
