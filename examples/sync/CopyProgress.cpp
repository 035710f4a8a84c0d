#include "CopyProgress.h"

#include "Terminal.h"

#include <QDir>

#include <cstdio>

CopyProgress::CopyProgress(const QString &source, const QString &target) : m_source(source), m_target(target)
{
    if (!terminal::isTerminal(stderr))
        return;
    m_thread.reset(QThread::create([this] { watch(); }));
    m_thread->start();
}

CopyProgress::~CopyProgress()
{
    m_end.release();
    if (m_thread)
        m_thread->wait();
}

void CopyProgress::watch()
{
    bool shown = false;
    while (!m_end.tryAcquire(1, 1000)) {
        // Where the system does not copy by itself, Qt writes to a file beside the target first.
        const QFileInfoList written = m_target.absoluteDir().entryInfoList(
            {QStringLiteral("qt_temp.*"), m_target.fileName()}, QDir::Files | QDir::Hidden, QDir::Time);
        const qint64 bytes = written.isEmpty() ? 0 : written.first().size();
        std::fprintf(stderr, "\rcopying: %lld of %lld MB", bytes / 1000000, m_source.size() / 1000000);
        std::fflush(stderr);
        shown = true;
    }
    if (shown)
        std::fputs("\r\033[K", stderr);
}
