#ifndef SCRIPTSTAGE_H
#define SCRIPTSTAGE_H

#include "LogCapture.h"

#include <QJSEngine>

/// Plays scripts on the objects it is shown and keeps a journal of what comes of it. What a script can do
/// besides are the scriptable members of the derived class.
class ScriptStage : public QObject {
    Q_OBJECT

public:
    /// The journal after @p script: its entries with blanks between, ' for " and no "Olvex.Class." before
    /// messages.
    QString play(const QString &script);

    Q_INVOKABLE void note(const QJSValue &value) { journal << value.toString(); }

    /// Notes the messages since the last call that contain @p fragment, as "level: text".
    Q_INVOKABLE void log(const QString &fragment = QString());

protected:
    void show(const char *name, QObject *object);

    QJSEngine engine;
    QStringList journal;

private:
    LogCapture m_log;
    int m_logged = 0;
};

#endif
