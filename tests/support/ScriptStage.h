#ifndef SCRIPTSTAGE_H
#define SCRIPTSTAGE_H

#include "LogCapture.h"

#include <QJSEngine>

/**
 * Plays scripts on the objects it is shown and keeps a journal of what comes of it. What a script can do
 * besides are the scriptable members of the derived class.
 *
 * A text file holds the scripts and the journals that they have to cause, which may go on in the next line:
 *
 *     const of = 'all scripts'
 *
 *     $ name of a script
 *     note(of)
 *     > all scripts
 */
class ScriptStage : public QObject {
    Q_OBJECT

public:
    /// The scripts of a file as rows of a test with the columns "script" and "journal".
    static void addScripts(const QString &path);

    /// The journal after @p script: its entries with blanks between and no "Olvex.Class." before messages.
    QString play(const QString &script);

    /// Adds to the journal.
    Q_INVOKABLE void note(const QJSValue &value) { journal << value.toString(); }

    /// The messages since the last call that contain @p fragment, as "level: text"; log() notes each.
    Q_INVOKABLE QStringList messages(const QString &fragment = QString());

    Q_INVOKABLE void remove(QObject *object) { delete object; }
    Q_INVOKABLE void setFilterRules(const QString &rules) { QLoggingCategory::setFilterRules(rules); }

protected:
    void show(const char *name, QObject *object);

    QJSEngine engine;
    QStringList journal;

private:
    LogCapture m_log;
    int m_logged = 0;
};

#endif
