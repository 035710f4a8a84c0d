#include <InitProperties.h>

#include "Cases.h"
#include "LogCapture.h"

#include <QDateTime>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>

#include <algorithm>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

namespace {

const QString group = QStringLiteral("Group");
const QString key = QStringLiteral("key");

// What is read from the keys of a group.
const struct {
    const char *name; // the keys
    const char *changed; // the properties that differ then, sorted
    const char *failure; // "property type, type of the value"
} readCases[] = {
    {"number=\" 12 \"", "number=12", ""},
    {"number=7\nnumber2=1\nNumber=2", "number=7", ""},
    {"number=true", "number=1", "number Type: int value type QString"},
    {"number=false", "number=0", "number Type: int value type QString"},
    {"number=True", "number=0", "number Type: int value type QString"},
    {"number=12abc", "number=0", "number Type: int value type QString"},
    {"number=3.7", "number=0", "number Type: int value type QString"},
    {"number=0x10", "number=0", "number Type: int value type QString"},
    {"number=", "number=0", "number Type: int value type QString"},
    {"number=1,2", "", "number Type: int value type QStringList"},
    {"area=", "", "area Type: QRect value type QString"},
    {"large=40\nconstant=20\nwriteOnly=30\nobjectName=other", "large=40", ""},
};

const struct {
    const char *name;
    const char *path; // below the directory of the file
    QByteArray bytes;
} refusedCases[] = {
    {"no path", nullptr, "key=1\n"},
    {"directory", "/.", "key=1\n"},
    {"below a file", "/settings.ini/other.ini", "key=1\n"},
    {"read-only", "/settings.ini", "key=1\n"},
    {"binary", "/settings.ini", QByteArray("\0\1\2\xFF\xFE\n=\x80[\n\n", 11)},
    {"no keys", "/settings.ini", "Dear reader,\nthis is no settings file.\n"},
    {"broken section", "/settings.ini", "a=1\n[Group\nb=2\n"},
    {"Latin-1", "/settings.ini", "a=1\n[Group]\nname=M\xFCller\n"},
    {"cut letter", "/settings.ini", "a=1\n[Group]\nname=M\xC3"},
    {"beyond the basic plane", "/settings.ini", "a=1\n[Group]\nname=\xF0\x9D\x92\x9C\n"},
};

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Line ends and the order of keys differ between systems.
QByteArray sortedLines(const QString &path)
{
    QList<QByteArray> lines = contents(path).simplified().split(' ');
    std::sort(lines.begin(), lines.end());
    return lines.join(' ');
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
    Q_PROPERTY(qulonglong large MEMBER m_large STORED false)
    Q_PROPERTY(int number MEMBER m_number)
    Q_PROPERTY(QStringList oneText MEMBER m_oneText)
    Q_PROPERTY(float real MEMBER m_real)
    Q_PROPERTY(QString text MEMBER m_text)
    Q_PROPERTY(int writeOnly WRITE setWriteOnly)

public:
    void setWriteOnly(int) { setObjectName(QStringLiteral("written")); }

    // The properties that are not as they were made: "name=value ..."
    QString changes() const
    {
        const Values fresh;
        QStringList changes;
        for (int i = 0; i < staticMetaObject.propertyCount(); ++i) {
            const QMetaProperty property = staticMetaObject.property(i);
            if (property.read(this) != property.read(&fresh))
                changes << QString::fromLatin1(property.name()) + QLatin1Char('=')
                        + property.read(this).toString();
        }
        return changes.join(QLatin1Char(' '));
    }

    QRect m_area = QRect(1, 2, 3, 4);
    QByteArray m_bytes;
    int m_constant = 2, m_number = 5;
    QDateTime m_dateTime;
    Qt::DayOfWeek m_day = Qt::Monday;
    bool m_flag = false;
    qulonglong m_large = 0;
    QStringList m_oneText;
    float m_real = 0;
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

    void keepsEveryType()
    {
        Values values;
        values.m_bytes = "a,b;\n";
        values.m_dateTime = QDateTime(QDate(2021, 9, 10), QTime(12, 0, 10, 7), Qt::UTC);
        values.m_day = Qt::Sunday;
        values.m_flag = true;
        values.m_large = std::numeric_limits<qulonglong>::max();
        values.m_number = std::numeric_limits<int>::min();
        values.m_oneText = QStringList(QStringLiteral("a,b"));
        values.m_real = 0.1F;
        values.m_text = QString();
        InitProperties::write(&values, m_path, group);
        QCOMPARE(sortedLines(m_path), QByteArray("[Group] area="));

        Values loaded;
        InitProperties::read(&loaded, copy(), group);
        QCOMPARE(loaded.changes(), values.changes());
    }

    void keepsTexts()
    {
        QStringList texts = {QString(), QStringLiteral("a") + QChar(0) + QStringLiteral("b"),
                             QString(100000, QChar(0xFC))};
        for (const char *text : {" leading and trailing ", "\"quoted\"", "back\\slash\\", "a,b, c",
                                 "line\nbreak\r\nand\rmore", "größe ключ 日本", "𠮷 𝒜 beyond the basic plane",
                                 "@Invalid()", "@ByteArray(x)", "%1;#=[section]\x01\x02\\x41"})
            texts << QString::fromUtf8(text);
        Values values;
        for (int i = 0; i < texts.size(); ++i) {
            values.m_text = texts[i];
            InitProperties::write(&values, m_path, QString::number(i));
            InitProperties::writeSettingsLine(m_path, QStringLiteral("a key/%1").arg(i), texts[i]);
        }
        for (const QString &path : {m_path, copy()}) {
            for (int i = 0; i < texts.size(); ++i) {
                InitProperties::read(&values, path, QString::number(i));
                QCOMPARE(values.m_text, texts[i]);
                QCOMPARE(InitProperties::readSettingsLine(path, QStringLiteral("a key/%1").arg(i), group),
                         texts[i]);
            }
        }
        QCOMPARE(InitProperties::readSettingsLine(m_path, key, group), group); // the default
    }

    void reads_data() { addCases(readCases); }

    void reads()
    {
        const auto &c = currentCase(readCases);
        store(QByteArray("[Group]\n") + c.name + '\n');
        const LogCapture capture;
        Values values;
        InitProperties::read(&values, m_path, group);
        QCOMPARE(values.changes(), QString::fromLatin1(c.changed));
        const QString failure = QStringLiteral("default.warning: Path: \"%1\" Failed to read %2")
                                    .arg(m_path, QLatin1String(c.failure));
        QCOMPARE(capture.lines(), *c.failure ? QStringList(failure) : QStringList());
    }

    void combinesTopLevelAndGroup()
    {
        store("number=1\nreal=2\n[Group]\nnumber=10\nlarge=30\n");
        Values both, topLevel;
        InitProperties::readCombined(&both, m_path, group);
        InitProperties::readCombined(&topLevel, m_path, QString());
        QCOMPARE(both.changes(), QStringLiteral("large=30 number=10 real=2"));
        QCOMPARE(topLevel.changes(), QStringLiteral("number=1 real=2"));
    }

    void listsAndRemovesGroups()
    {
        QCOMPARE(InitProperties::listGroups(m_path), QStringList());
        InitProperties::removeGroup(m_path, group);
        InitProperties::clearAll(m_path);
        QVERIFY(!QFileInfo::exists(QFileInfo(m_path).path()));

        const QByteArray before = "; comment\ntop=1\n[A]\nx=1\n[B]\nC\\y=2\nz=3\n";
        store(before);
        QCOMPARE(InitProperties::listGroups(m_path), (QStringList{QStringLiteral("A"), QStringLiteral("B")}));
        InitProperties::removeGroup(m_path, group);
        QCOMPARE(contents(m_path), before);
        InitProperties::removeGroup(m_path, QStringLiteral("B/C"));
        InitProperties::removeGroup(m_path, QStringLiteral("A"));
        QCOMPARE(sortedLines(m_path), QByteArray("[B] [General] top=1 z=3"));
        InitProperties::clearAll(m_path);
        QCOMPARE(contents(m_path), QByteArray());
    }

    void reportsFailedWrites_data() { addCases(refusedCases); }

    void reportsFailedWrites()
    {
        const auto &c = currentCase(refusedCases);
        const QString path = c.path ? QFileInfo(m_path).path() + QLatin1String(c.path) : QString();
        store(c.bytes);
        if (c.name == QLatin1String("read-only")) {
            QFile::setPermissions(m_path, QFile::ReadOwner);
            // Wine lets an administrator open such a file, but not replace it.
            if (QFileInfo(m_path).isWritable() || QSysInfo::kernelType() == QLatin1String("winnt"))
                QSKIP("an administrator writes read-only files");
        }
        Values values;
        InitProperties::read(&values, m_path, group); // Qt tells the first reader of damage only
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
        constexpr int threadCount = 4, rounds = 20;
        std::vector<std::thread> threads;
        for (int t = 0; t < threadCount; ++t) {
            threads.emplace_back([this, t] {
                for (int i = 0; i < rounds; ++i)
                    InitProperties::writeSettingsLine(m_path, QStringLiteral("%1/%2").arg(t).arg(i), key);
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(QSettings(copy(), QSettings::IniFormat).allKeys().size(), threadCount * rounds);
    }

    // Two processes change one file in turns, faster than the clock of the file system ticks and without
    // changing its size: each must see what the other wrote and must not write it back as it was before.
    void keepsValuesOfOtherProcesses()
    {
        const QString theirs = QStringLiteral("theirs");
        QProcess other;
        other.start(QStringLiteral(INI_WRITER_PATH), {m_path, theirs, key});
        for (int i = 1000; i < 1200; ++i) {
            const QString value = QString::number(i);
            InitProperties::writeSettingsLine(m_path, key, value);
            other.write(value.toLatin1() + '\n');
            while (!other.canReadLine())
                QVERIFY(other.waitForReadyRead());
            QCOMPARE(QString::fromLatin1(other.readLine().trimmed()), value);
            QCOMPARE(InitProperties::readSettingsLine(m_path, theirs, QString()), value);
            QCOMPARE(InitProperties::readSettingsLine(m_path, key, QString()), value);
        }
        other.closeWriteChannel();
        QVERIFY(other.waitForFinished());
    }

private:
    // The file under another name: Qt remembers what it wrote under this one.
    QString copy() const
    {
        const QString name = m_directory->filePath(QStringLiteral("copy.ini"));
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
