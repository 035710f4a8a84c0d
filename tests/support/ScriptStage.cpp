#include "ScriptStage.h"

#include <QQmlEngine>
#include <QRegularExpression>

QString ScriptStage::play(const QString &script)
{
    show("stage", this);
    const QString verbs = QStringLiteral("for (const name in stage) this[name] = stage[name];");
    const QJSValue result = engine.evaluate(verbs + script);
    if (result.isError())
        note(result);
    return journal.join(QLatin1Char(' '))
        .replace(QLatin1Char('"'), QLatin1Char('\''))
        .remove(QRegularExpression(QStringLiteral("Olvex\\.\\w+\\.")));
}

void ScriptStage::log(const QString &fragment)
{
    const QStringList lines = m_log.lines();
    journal += lines.mid(m_logged).filter(fragment);
    m_logged = lines.size();
}

void ScriptStage::show(const char *name, QObject *object)
{
    QQmlEngine::setObjectOwnership(object, QQmlEngine::CppOwnership);
    engine.globalObject().setProperty(QLatin1String(name), engine.newQObject(object));
}
