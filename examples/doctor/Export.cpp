#include "CommandLine.h"
#include "Examination.h"
#include "Machine.h"
#include "ServiceTable.h"
#include "Settings.h"
#include "Tasks.h"
#include "Terminal.h"

#include <QFile>

namespace {

constexpr qint64 mostOfAFile = 65536;

// The end of a file under a heading.
QByteArray section(const QString &path)
{
    QByteArray result = text("\n==== %1\n").arg(path).toUtf8();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return result + file.errorString().toUtf8() + '\n';
    const qint64 skipped = qMax<qint64>(0, file.size() - mostOfAFile);
    file.seek(skipped);
    if (skipped > 0)
        result += text("(without the first %1 bytes)\n").arg(skipped).toUtf8();
    return result + file.read(mostOfAFile) + '\n';
}

int exportTo(const QString &path, const Report &report, const QString &logFile)
{
    QByteArray all = report.toText(0, false).toUtf8();
    const QVector<SettingsFile> settings = settingsFiles();
    for (const SettingsFile &file : settings)
        all += section(file.file.filePath());
    QVector<Problem> known;
    all += section(ServiceTable(known).path);
    const QStringList logs = logFiles(logFile);
    for (const QString &log : logs)
        all += section(log);

    QFile file(path);
    if (!file.open(QIODevice::NewOnly) || file.write(all) != all.size() || !file.flush())
        return fail(1, text("%1 cannot be written: %2.").arg(path, file.errorString()));
    print(text("%1 holds the report, the settings, the service table and the end of every log file. Look "
               "through it for passwords before you mail it.\n")
              .arg(path));
    return 0;
}

} // namespace

int runReport(const CommandLine &line)
{
    const QString application = line.value("--application", onlyApplication());
    const QString logFile = line.value("--logoutput");
    const Report report = examine(application, logFile);
    if (line.has("--export"))
        return exportTo(line.value("--export"), report, logFile);
    if (line.has("--json"))
        print(report.toJson());
    else
        print(report.toText(outputWidth(), terminal::mayColour(stdout)));
    return report.problems.isEmpty() ? 0 : 1;
}
