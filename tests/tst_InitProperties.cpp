#include <InitProperties.h>

#include "Cases.h"
#include "LogCapture.h"

#include <QDateTime>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>

#include <algorithm>
#include <limits>
#include <thread>
#include <vector>

namespace {

const QString group = QStringLiteral("Group");

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

const struct {
    const char *name; // the stored text
    int number, warnings;
} intCases[] = {
    {"\" 12 \"", 12, 0}, {"7\nnumber2=1", 7, 0}, {"true", 1, 1}, {"false", 0, 1},
    {"True", 0, 1},      {"12abc", 0, 1},        {"3.7", 0, 1},  {"0x10", 0, 1},
    {"", 0, 1},          {"1,2", 5, 1}, // a list is no text: left as it was
};

const struct {
    const char *name;
    QByteArray bytes;
} damagedCases[] = {
    {"binary", QByteArray("\0\1\2\xFF\xFE\n=\x80[\n\n", 11)},
    {"no keys", "Dear reader,\nthis is no settings file.\n"},
    {"broken section", "a=1\n[Group\nb=2\n"},
    {"Latin-1", "a=1\n[Group]\nname=M\xFCller\n"},
    {"cut letter", "a=1\n[Group]\nname=M\xC3"},
    {"beyond the basic plane", "a=1\n[Group]\nname=\xF0\x9D\x92\x9C\n"},
};

const struct {
    const char *name; // below the directory of the file
} unwritableCases[] = {{""}, {"/."}, {"/settings.ini/other.ini"}, {"/settings.ini"}};

} // namespace

// Types whose text form reads back.
class Values : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool flag MEMBER m_flag)
    Q_PROPERTY(int number MEMBER m_number)
    Q_PROPERTY(qulonglong large MEMBER m_large)
    Q_PROPERTY(double real MEMBER m_real)
    Q_PROPERTY(float shortReal MEMBER m_shortReal)
    Q_PROPERTY(QString text MEMBER m_text)
    Q_PROPERTY(QByteArray bytes MEMBER m_bytes)
    Q_PROPERTY(QStringList oneText MEMBER m_oneText)
    Q_PROPERTY(QDateTime dateTime MEMBER m_dateTime)
    Q_PROPERTY(Qt::DayOfWeek day MEMBER m_day)

public:
    bool m_flag = false;
    int m_number = 0;
    qulonglong m_large = 0;
    double m_real = 0;
    float m_shortReal = 0;
    QString m_text = QStringLiteral("unset");
    QByteArray m_bytes;
    QStringList m_oneText;
    QDateTime m_dateTime;
    Qt::DayOfWeek m_day = Qt::Monday;
};

// Properties of all kinds of access, and one without a text form.
class Accesses : public QObject {
    Q_OBJECT
    Q_PROPERTY(int both MEMBER m_both)
    Q_PROPERTY(int readOnly MEMBER m_readOnly CONSTANT)
    Q_PROPERTY(int writeOnly WRITE setWriteOnly)
    Q_PROPERTY(int notStored MEMBER m_notStored STORED false)
    Q_PROPERTY(QRect area MEMBER m_area)

public:
    void setWriteOnly(int value) { m_writeOnly = value; }

    int m_both = 1, m_readOnly = 2, m_writeOnly = 3, m_notStored = 4;
    QRect m_area = QRect(1, 2, 3, 4);
};

class tst_InitProperties : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void keepsEveryType();
    void keepsTexts_data();
    void keepsTexts();
    void takesOwnAccessibleProperties();
    void convertsToInt_data() { addCases(intCases); }
    void convertsToInt();
    void combinesTopLevelAndGroup();
    void listsAndRemovesGroups();
    void refusesDamagedFiles_data() { addCases(damagedCases); }
    void refusesDamagedFiles();
    void reportsFailedWrites_data() { addCases(unwritableCases); }
    void reportsFailedWrites();
    void keepsValuesOfOtherThreads();
    void keepsValuesOfOtherProcesses();

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
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    QStringList entries() const { return QFileInfo(m_path).dir().entryList(QDir::Files | QDir::Hidden); }

    std::unique_ptr<QTemporaryDir> m_directory;
    QString m_path;
};

void tst_InitProperties::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    m_path = m_directory->filePath(QStringLiteral("new/settings.ini"));
    QDir().mkpath(QFileInfo(m_path).path());
}

void tst_InitProperties::keepsEveryType()
{
    Values values;
    values.m_flag = true;
    values.m_number = std::numeric_limits<int>::min();
    values.m_large = std::numeric_limits<qulonglong>::max();
    values.m_real = 0.1 + 0.2;
    values.m_shortReal = 0.1F;
    values.m_text = QString();
    values.m_bytes = "a,b;\n";
    values.m_oneText = QStringList{QStringLiteral("a,b")};
    values.m_dateTime = QDateTime(QDate(2021, 9, 10), QTime(12, 0, 10, 7), Qt::UTC);
    values.m_day = Qt::Sunday;
    InitProperties::write(&values, m_path, group);

    Values loaded;
    InitProperties::read(&loaded, copy(), group);
    const QMetaObject &type = Values::staticMetaObject;
    for (int i = type.propertyOffset(); i < type.propertyCount(); ++i)
        QVERIFY2(type.property(i).read(&loaded) == type.property(i).read(&values), type.property(i).name());
}

void tst_InitProperties::keepsTexts_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"", " leading and trailing ", "\"quoted\"", "back\\slash\\", "a,b, c",
                             "line\nbreak\r\nand\rmore", "größe ключ 日本", "𠮷 𝒜 beyond the basic plane",
                             "@Invalid()", "@ByteArray(x)", "%1;#=[section]\x01\x02\\x41"})
        QTest::newRow(text) << QString::fromUtf8(text);
    QTest::newRow("zero") << QStringLiteral("a") + QChar(0) + QStringLiteral("b");
    QTest::newRow("long") << QString(100000, QChar(0xFC));
}

void tst_InitProperties::keepsTexts()
{
    QFETCH(QString, text);
    const QString key = QStringLiteral("Lines/a key");
    Values object;
    object.m_text = text;
    InitProperties::write(&object, m_path, group);
    InitProperties::writeSettingsLine(m_path, key, text);
    InitProperties::writeSettingsLine(m_path, QStringLiteral("last"), QStringLiteral("1"));

    for (const QString &path : {m_path, copy()}) {
        Values loaded;
        InitProperties::read(&loaded, path, group);
        QCOMPARE(loaded.m_text, text);
        QCOMPARE(InitProperties::readSettingsLine(path, key, QStringLiteral("none")), text);
    }
    QCOMPARE(InitProperties::readSettingsLine(m_path, QStringLiteral("none"), text), text);
}

void tst_InitProperties::takesOwnAccessibleProperties()
{
    Accesses object;
    object.setObjectName(QStringLiteral("name"));
    InitProperties::write(&object, m_path, group);
    QCOMPARE(sortedLines(m_path), QByteArray("[Group] area= both=1 notStored=4 readOnly=2"));

    store("[Group]\narea=\nboth=10\nnotStored=40\nreadOnly=20\nwriteOnly=30\nobjectName=other\n");
    const LogCapture capture;
    InitProperties::read(&object, m_path, group);
    QCOMPARE((QVector<int>{object.m_both, object.m_readOnly, object.m_writeOnly, object.m_notStored}),
             (QVector<int>{10, 2, 3, 40}));
    QCOMPARE(object.objectName(), QStringLiteral("name"));
    QCOMPARE(object.m_area, QRect(1, 2, 3, 4));
    const QString warning =
        QStringLiteral("default.warning: Path: \"%1\" Failed to read area Type: QRect value type QString");
    QCOMPARE(capture.lines(), QStringList{warning.arg(m_path)});
}

void tst_InitProperties::convertsToInt()
{
    const auto &expected = currentCase(intCases);
    store(QByteArray("[Group]\nnumber=") + expected.name + '\n');
    Values values;
    values.m_number = 5;
    const LogCapture capture;
    InitProperties::read(&values, m_path, group);
    QCOMPARE(values.m_number, expected.number);
    QCOMPARE(capture.texts().size(), expected.warnings);
    QCOMPARE(capture.texts().filter(QStringLiteral("Failed to read number Type: int value type Q")),
             capture.texts());
}

void tst_InitProperties::combinesTopLevelAndGroup()
{
    store("number=1\nreal=2\n[Group]\nnumber=10\nlarge=30\n");
    Values both;
    InitProperties::readCombined(&both, m_path, group);
    Values topLevel;
    InitProperties::readCombined(&topLevel, m_path, QString());
    QVERIFY(both.m_number == 10 && both.m_real == 2.0 && both.m_large == 30);
    QVERIFY(topLevel.m_number == 1 && topLevel.m_large == 0);
}

void tst_InitProperties::listsAndRemovesGroups()
{
    const QString missing = m_directory->filePath(QStringLiteral("missing/file.ini"));
    QCOMPARE(InitProperties::listGroups(missing), QStringList());
    InitProperties::removeGroup(missing, group);
    InitProperties::clearAll(missing);
    QVERIFY(!QFileInfo::exists(QFileInfo(missing).path()));

    const QByteArray before = "; comment\ntop=1\n[A]\nx=1\n[B]\nC\\y=2\nz=3\n";
    store(before);
    QCOMPARE(InitProperties::listGroups(m_path), (QStringList{QStringLiteral("A"), QStringLiteral("B")}));
    InitProperties::removeGroup(m_path, QStringLiteral("X"));
    QCOMPARE(contents(m_path), before);
    InitProperties::removeGroup(m_path, QStringLiteral("B/C"));
    InitProperties::removeGroup(m_path, QStringLiteral("A"));
    QCOMPARE(sortedLines(m_path), QByteArray("[B] [General] top=1 z=3"));
    InitProperties::clearAll(m_path);
    QCOMPARE(contents(m_path), QByteArray());
}

void tst_InitProperties::refusesDamagedFiles()
{
    const QByteArray &bytes = currentCase(damagedCases).bytes;
    store(bytes);
    Values values;
    InitProperties::readCombined(&values, m_path, group); // Qt tells the first reader only
    const LogCapture capture;
    InitProperties::write(&values, m_path, group);
    InitProperties::writeSettingsLine(m_path, QStringLiteral("key"), QStringLiteral("value"));
    QCOMPARE(contents(m_path), bytes);
    const QString warning = QStringLiteral("default.warning: Path: \"%1\" Failed to write").arg(m_path);
    QCOMPARE(capture.lines(), (QStringList{warning, warning}));
    QCOMPARE(entries(), QStringList{QStringLiteral("settings.ini")});
}

void tst_InitProperties::reportsFailedWrites()
{
    const QString name = QLatin1String(currentCase(unwritableCases).name);
    const QString path = name.isEmpty() ? name : QFileInfo(m_path).path() + name;
    store("key=1\n");
    QFile::setPermissions(m_path, QFile::ReadOwner);
#ifdef Q_OS_WIN
    const bool isSkipped = true; // Wine lets an administrator open read-only files, but not replace them
#else
    const bool isSkipped = QFileInfo(m_path).isWritable();
#endif
    if (path == m_path && isSkipped)
        QSKIP("an administrator writes read-only files");

    const LogCapture capture;
    InitProperties::writeSettingsLine(path, QStringLiteral("key"), QStringLiteral("2"));
    QVERIFY(capture.texts().contains(QStringLiteral("Path: \"%1\" Failed to write").arg(path)));
    QCOMPARE(contents(m_path), QByteArray("key=1\n"));
    QVERIFY(InitProperties::readSettingsLine(path, QStringLiteral("key"), QString()) != QLatin1String("2"));
    QCOMPARE(entries(), QStringList{QStringLiteral("settings.ini")});
}

void tst_InitProperties::keepsValuesOfOtherThreads()
{
    constexpr int threadCount = 4, rounds = 20;
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < rounds; ++i)
                InitProperties::writeSettingsLine(m_path, QStringLiteral("%1/%2").arg(t).arg(i),
                                                  QString::number(i));
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(QSettings(copy(), QSettings::IniFormat).allKeys().size(), threadCount * rounds);
}

// Two processes change one file in turns, faster than the clock of the file system ticks and without changing
// its size: each must see what the other wrote and must not write it back as it was before.
void tst_InitProperties::keepsValuesOfOtherProcesses()
{
    const QString ours = QStringLiteral("ours");
    const QString theirs = QStringLiteral("theirs");
    for (const QString &key : {ours, theirs})
        InitProperties::writeSettingsLine(m_path, key, QStringLiteral("1000"));
    QProcess other;
    other.start(QStringLiteral(INI_WRITER_PATH), {m_path, theirs, ours});

    for (int i = 1001; i < 1201; ++i) {
        const QString value = QString::number(i);
        InitProperties::writeSettingsLine(m_path, ours, value);
        other.write(value.toLatin1() + '\n');
        while (!other.canReadLine())
            QVERIFY(other.waitForReadyRead());
        QCOMPARE(QString::fromLatin1(other.readLine().trimmed()), value);
        QCOMPARE(InitProperties::readSettingsLine(m_path, theirs, QString()), value);
        QCOMPARE(InitProperties::readSettingsLine(m_path, ours, QString()), value);
    }
    other.closeWriteChannel();
    QVERIFY(other.waitForFinished());
}

QTEST_GUILESS_MAIN(tst_InitProperties)
#include "tst_InitProperties.moc"
