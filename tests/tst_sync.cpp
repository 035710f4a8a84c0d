// olvex-sync as the maintenance engineer runs it.

#include "Cases.h"
#include "ChildProcess.h"

namespace {

#define ON_POSIX "--directory . --command sh --arguments "

const struct {
    const char *name, *arguments;
    int exitCode;
    const char *printed;
} cases[] = {
    {"help", "--help", 0, "\nWhat it runs:\n"},
    {"nothing", "", 64, ""},
    {"half a copy", "--from a", 64, ""},
    {"half a host", "--command c --host h", 64, ""},
    {"copy after a local command", "--command c --from a --to b", 64, ""},
    {"endless limit", "--command c --limit -1", 64, ""},
    {"local", "--command " SYNC_STAND_IN_PATH " --arguments out=45%^20|exit=23", 23,
     "45% PartialTransferDueToError (23)\n"},
    {"missing", "--command no-such-program", 255, "UnknownError (-1)\n"},
    {"copy", "--from " OLVEX_SYNC_PATH " --to copy", 0, "Success (0)\n"},
    {"remote", "--command out=there^20 --arguments |exit=7 --host h --user u", 7, "there Failed (7)\n"},
    {"remote with a copy", "--command exit=0 --host h --user u --from " OLVEX_SYNC_PATH " --to copy", 0,
     "Success (0)\n"},
    {"limit", "--command " SYNC_STAND_IN_PATH " --arguments hang=m-1 --limit 1", 124,
     "Stopped at the limit\n"},
    {"signal", ON_POSIX R"("-c """kill $PPID; exec sleep 600"""")", 143, ""}, // 128 + SIGTERM
    {"source and target through two mounts", // where they are allowed
     ON_POSIX
     R"("-c """mkdir -p d e; echo kept >d/f; exec unshare -rm sh -c 'mount --bind d e && )" OLVEX_SYNC_PATH
     R"( --from d/f --to e/f; cat d/f; exit 255'"""")",
     255, "kept"},
    {"full disk", // near the end of the file
     ON_POSIX R"("-c """trap '' XFSZ; f=)" OLVEX_SYNC_PATH
              R"(; ulimit -f $((($(wc -c <$f) - 1) / 512)); $f --from $f --to copy"""")",
     255, "Failed (255)\n"},
};

} // namespace

class tst_sync : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void runs_data() { addCases(cases); }
    void runs()
    {
        const auto &line = currentCase(cases);
        const QString arguments = QString::fromLatin1(line.arguments);
#ifdef Q_OS_WIN
        if (arguments.startsWith(QLatin1String(ON_POSIX)))
            QSKIP("Windows has no signals and no limit on the size of files");
#endif
        QFile::remove(QStringLiteral("copy"));
        qputenv("PATH", m_path);
        const ChildResult result =
            runChild(QStringLiteral(OLVEX_SYNC_PATH), QProcess::splitCommand(arguments), QDir::currentPath());
        QCOMPARE(result.exitCode, line.exitCode);
        QVERIFY2(result.out.contains(line.printed), result.out.constData());
        const bool copies = line.exitCode == 0 && arguments.contains(QLatin1String("--to"));
        QCOMPARE(QFile::exists(QStringLiteral("copy")), copies);
    }

private:
    const QByteArray m_path = QFileInfo(QStringLiteral(SYNC_STAND_IN_PATH)).path().toLocal8Bit()
        + QDir::listSeparator().toLatin1() + qgetenv("PATH");
};

QTEST_GUILESS_MAIN(tst_sync)
#include "tst_sync.moc"
