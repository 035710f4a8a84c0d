#include "ScriptStage.h"

#include "Cases.h"

#include <QQmlEngine>

void ScriptStage::addScripts(const QString &path)
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("journal");
    QStringList blocks = text(contents(path)).split(text("\n$ "));
    const QString forAll = blocks.takeFirst();
    for (const QString &block : qAsConst(blocks)) {
        QStringList script(forAll), journal;
        QStringList lines = block.split(QLatin1Char('\n'));
        const QString name = lines.takeFirst();
        for (const QString &line : qAsConst(lines)) {
            const bool expected = line.startsWith(text("> "));
            (expected ? journal : script) << line.mid(expected ? 2 : 0);
        }
        QTest::newRow(qPrintable(name)) << script.join(QLatin1Char('\n')) << journal.join(QLatin1Char(' '));
    }
}

QString ScriptStage::play(const QString &script)
{
    show("stage", this);
    const QJSValue result = engine.evaluate(text("for (const name in stage) this[name] = stage[name];"
                                                 "const log = fragment => messages(fragment).forEach(note);")
                                            + script);
    if (result.isError())
        note(result);
    return journal.join(QLatin1Char(' ')).remove(QRegularExpression(text("Olvex\\.\\w+\\.")));
}

QStringList ScriptStage::messages(const QString &fragment)
{
    const QStringList lines = m_log.lines();
    return lines.mid(std::exchange(m_logged, lines.size())).filter(fragment);
}

void ScriptStage::show(const char *name, QObject *object)
{
    QQmlEngine::setObjectOwnership(object, QQmlEngine::CppOwnership);
    engine.globalObject().setProperty(QLatin1String(name), engine.newQObject(object));
}
