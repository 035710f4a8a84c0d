#include <InitProperties.h>

#include "Cases.h"
#include "LogCapture.h"

#include <QDateTime>
#include <QTemporaryDir>

#include <limits>
#include <thread>

namespace {

const QString group = QStringLiteral("Group");
const QString key = QStringLiteral("key");

const struct {
    const char *name; // the stored text
    int number, warnings;
} intCases[] = {
    {"\" 12 \"", 12, 0}, {"7\nnumber2=1", 7, 0}, {"true", 1, 1},
    {"false", 0, 1},     {"True", 0, 1},         {"12abc", 0, 1},
    {"", 0, 1},          {"1,2", 5, 1}, // a list is no text: left as it was
};

const struct {
    const char *name;
    const char *path; // below the directory of the file
    QByteArray bytes;
} unwritableCases[] = {
    {"no path", nullptr, "key=1\n"},
    {"directory", "/.", "key=1\n"},
    {"below a file", "/settings.ini/other.ini", "key=1\n"},
    {"read-only", "/settings.ini", "key=1\n"},
    {"no keys", "/settings.ini", "Dear reader,\nthis is no settings file.\n"},
    {"broken section", "/settings.ini", "a=1\n[Group\nb=2\n"},
    {"Latin-1", "/settings.ini", "a=1\n[Group]\nname=M\xFCller\n"},
    {"cut letter", "/settings.ini", "a=1\n[Group]\nname=M\xC3"},
    {"beyond the basic plane", "/settings.ini", "a=1\n[Group]\nname=\xF0\x9D\x92\x9C\n"},
};

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Text) ? file.readAll() : QByteArray();
}

} // namespace

// Types whose text form reads back, and QRect, which has none; all kinds of access.
class Values : public QObject {
    Q_OBJECT
    Q_PROPERTY(QRect area MEMBER m_area)
    Q_PROPERTY(QByteArray bytes MEMBER m_bytes)
    Q_PROPERTY(int constant MEMBER m_constant CONSTANT)
    Q_PROPERTY(QDateTime dateTime MEMBER m_dateTime)
    Q_PROPERTY(Qt::DayOfWeek day MEMBER m_day)
    Q_PROPERTY(bool flag MEMBER m_flag)
    Q_PROPERTY(int number MEMBER m_number)
    Q_PROPERTY(QStringList oneText MEMBER m_oneText)
    Q_PROPERTY(double real MEMBER m_real STORED false)
    Q_PROPERTY(QString text MEMBER m_text)
    Q_PROPERTY(int writeOnly WRITE setWriteOnly)

public:
    void setWriteOnly(int) { setObjectName(QStringLiteral("written")); }

    QRect m_area = QRect(1, 2, 3, 4);
    QByteArray m_bytes;
    int m_constant = 2, m_number = 5;
    QDateTime m_dateTime;
    Qt::DayOfWeek m_day = Qt::Monday;
    bool m_flag = false;
    QStringList m_oneText;
    double m_real = 0;
    QString m_text = QStringLiteral("unset");
};

class tst_InitProperties : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_directory = std::make_unique<QTemporaryDir>();
        m_path = m_directory->filePath(QStringLiteral("new/settings.ini"));
    }

    void keepsOwnAccessibleProperties()
    {
        Values values;
        values.m_bytes = "a,b;";
        values.m_constant = 20;
        values.m_dateTime = QDateTime(QDate(2021, 9, 10), QTime(12, 0, 10, 7), Qt::UTC);
        values.m_day = Qt::Sunday;
        values.m_flag = true;
        values.m_number = std::numeric_limits<int>::min();
        values.m_oneText = QStringList(QStringLiteral("c,d"));
        values.m_real = 0.1 + 0.2;
        values.m_text = QString();
        values.setObjectName(QStringLiteral("stored"));
        InitProperties::write(&values, m_path, group);
        QByteArray stored = "[Group]\narea=\nbytes=\"a,b;\"\nconstant=20\n"
                            "dateTime=2021-09-10T12:00:10.007Z\nday=7\nflag=true\nnumber=-2147483648\n"
                            "oneText=\"c,d\"\nreal=0.30000000000000004\ntext=\n";
        QCOMPARE(contents(m_path), stored);
        InitProperties::writeSettingsLine(m_path, QStringLiteral("Group/writeOnly"), key);

        stored.replace("constant=20", "constant=2"); // is not loaded
        const QString again = m_directory->filePath(QStringLiteral("again.ini"));
        for (const QString &path : {m_path, copy()}) {
            const LogCapture capture;
            Values loaded;
            InitProperties::read(&loaded, path, group);
            QCOMPARE(loaded.objectName(), QString());
            InitProperties::write(&loaded, again, group);
            QCOMPARE(contents(again), stored);
            // The day is stored as a number, which is no text for it, and converted after all.
            const QString warning =
                QStringLiteral("default.warning: Path: \"%1\" Failed to read %2 value type QString");
            QCOMPARE(capture.lines(),
                     (QStringList{warning.arg(path, QLatin1String("area Type: QRect")),
                                  warning.arg(path, QLatin1String("day Type: Qt::DayOfWeek"))}));
        }
    }

    void convertsToInt_data() { addCases(intCases); }

    void convertsToInt()
    {
        const auto &expected = currentCase(intCases);
        store(QByteArray("[Group]\nnumber=") + expected.name + '\n');
        const LogCapture capture;
        Values values;
        InitProperties::read(&values, m_path, group);
        QCOMPARE(values.m_number, expected.number);
        QCOMPARE(capture.texts().size(), expected.warnings);
    }

    void keepsTexts()
    {
        QStringList texts = {QString(), QStringLiteral("a") + QChar(0) + QStringLiteral("b"),
                             QString(100000, QChar(0xFC))};
        for (const char *text :
             {" a, \"b\", c\\ ", "line\nbreak\r\nand\rmore", "größe ключ 日本", "𠮷 𝒜 beyond the basic plane",
              "@Invalid()", "@ByteArray(x)", "%1;#=[section]\x01\x02\\x41"})
            texts << QString::fromUtf8(text);
        for (int i = 0; i < texts.size(); ++i)
            InitProperties::writeSettingsLine(m_path, QStringLiteral("a key/%1").arg(i), texts[i]);
        for (const QString &path : {m_path, copy()}) {
            for (int i = 0; i < texts.size(); ++i)
                QCOMPARE(InitProperties::readSettingsLine(path, QStringLiteral("a key/%1").arg(i), key),
                         texts[i]);
        }
    }

    void combinesListsAndRemovesGroups()
    {
        QCOMPARE(InitProperties::listGroups(m_path), QStringList());
        InitProperties::removeGroup(m_path, group);
        InitProperties::clearAll(m_path);
        QVERIFY(!QFileInfo::exists(QFileInfo(m_path).path()));

        const QByteArray bytes =
            "; comment\nnumber=1\nreal=2\n[A]\nB\\x=1\ny=2\n[Group]\nnumber=10\ntext=x\n";
        store(bytes);
        QCOMPARE(InitProperties::listGroups(m_path), (QStringList{QStringLiteral("A"), group}));
        Values both, topLevel;
        InitProperties::readCombined(&both, m_path, group);
        InitProperties::readCombined(&topLevel, m_path, QString());
        QVERIFY(both.m_number == 10 && both.m_real == 2.0 && both.m_text == QLatin1String("x"));
        QVERIFY(topLevel.m_number == 1 && topLevel.m_text == QLatin1String("unset"));

        InitProperties::removeGroup(m_path, key);
        QCOMPARE(contents(m_path), bytes);
        InitProperties::removeGroup(m_path, QStringLiteral("A/B"));
        InitProperties::removeGroup(m_path, group);
        QCOMPARE(contents(m_path), QByteArray("[General]\nnumber=1\nreal=2\n\n[A]\ny=2\n"));
        QCOMPARE(InitProperties::readSettingsLine(m_path, key, group), group);
        InitProperties::clearAll(m_path);
        QCOMPARE(contents(m_path), QByteArray());
    }

    void reportsFailedWrites_data() { addCases(unwritableCases); }

    void reportsFailedWrites()
    {
        const auto &c = currentCase(unwritableCases);
        const QString path = c.path ? QFileInfo(m_path).path() + QLatin1String(c.path) : QString();
        store(c.bytes);
        if (qstrcmp(c.name, "read-only") == 0) {
            QFile::setPermissions(m_path, QFile::ReadOwner);
            // Wine lets an administrator open such a file, but not replace it.
            if (QFileInfo(m_path).isWritable() || QSysInfo::kernelType() == QLatin1String("winnt"))
                QSKIP("an administrator writes read-only files");
        }
        Values values;
        InitProperties::read(&values, m_path, group); // Qt tells of damage only once
        const LogCapture capture;
        InitProperties::write(&values, path, group);
        InitProperties::writeSettingsLine(path, key, QStringLiteral("2"));
        const QString warning = QStringLiteral("default.warning: Path: \"%1\" Failed to write").arg(path);
        QCOMPARE(capture.lines().filter(QStringLiteral("Failed")), (QStringList{warning, warning}));
        QCOMPARE(contents(m_path), c.bytes);
        QVERIFY(InitProperties::readSettingsLine(path, key, QString()) != QLatin1String("2"));
        QCOMPARE(QFileInfo(m_path).dir().entryList(QDir::Files | QDir::Hidden),
                 QStringList(QStringLiteral("settings.ini")));
    }

    void keepsValuesOfOtherThreads()
    {
        const auto writeLines = [this](const QString &name) {
            for (int i = 0; i < 40; ++i)
                InitProperties::writeSettingsLine(m_path, name.arg(i), key);
        };
        std::thread other(writeLines, QStringLiteral("theirs%1"));
        writeLines(QStringLiteral("ours%1"));
        other.join();
        QCOMPARE(contents(m_path).count("rs"), 80);
    }

    // QSettings in another process takes a file of the same size and time for unchanged, and would write back
    // the old values. The clock of the file system ticks slowly; here it seems to stand still.
    void renewsTheTimeOfTheFile()
    {
        store("key=1\n");
        const QDateTime later = QDateTime::currentDateTime().addSecs(60);
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::Append) && file.setFileTime(later, QFileDevice::FileModificationTime));
        file.close();
        InitProperties::writeSettingsLine(m_path, key, QStringLiteral("2"));
        QVERIFY(QFileInfo(m_path).lastModified() > later);
    }

private:
    // The file under another name: Qt remembers what it wrote under this one.
    QString copy() const
    {
        QString name = m_directory->filePath(QStringLiteral("copy.ini"));
        QFile::remove(name);
        QFile::copy(m_path, name);
        return name;
    }

    void store(const QByteArray &bytes) const
    {
        QDir().mkpath(QFileInfo(m_path).path());
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    std::unique_ptr<QTemporaryDir> m_directory;
    QString m_path;
};

QTEST_GUILESS_MAIN(tst_InitProperties)
#include "tst_InitProperties.moc"
