#include <InitProperties.h>

#include "LogCapture.h"

#include <QDateTime>
#include <QLockFile>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QUrl>
#include <QUuid>
#include <QtTest>

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

} // namespace

// One property of each type that has a text form which reads back.
class Values : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool flag MEMBER m_flag)
    Q_PROPERTY(int number MEMBER m_number)
    Q_PROPERTY(uint natural MEMBER m_natural)
    Q_PROPERTY(qlonglong large MEMBER m_large)
    Q_PROPERTY(qulonglong largest MEMBER m_largest)
    Q_PROPERTY(double real MEMBER m_real)
    Q_PROPERTY(float shortReal MEMBER m_shortReal)
    Q_PROPERTY(QString text MEMBER m_text)
    Q_PROPERTY(QByteArray bytes MEMBER m_bytes)
    Q_PROPERTY(QStringList oneText MEMBER m_oneText)
    Q_PROPERTY(QDate date MEMBER m_date)
    Q_PROPERTY(QTime time MEMBER m_time)
    Q_PROPERTY(QDateTime dateTime MEMBER m_dateTime)
    Q_PROPERTY(QUrl url MEMBER m_url)
    Q_PROPERTY(QUuid uuid MEMBER m_uuid)
    Q_PROPERTY(Qt::DayOfWeek day MEMBER m_day)

public:
    bool m_flag = false;
    int m_number = 0;
    uint m_natural = 0;
    qlonglong m_large = 0;
    qulonglong m_largest = 0;
    double m_real = 0;
    float m_shortReal = 0;
    QString m_text = QStringLiteral("unset");
    QByteArray m_bytes;
    QStringList m_oneText;
    QDate m_date;
    QTime m_time;
    QDateTime m_dateTime;
    QUrl m_url;
    QUuid m_uuid;
    Qt::DayOfWeek m_day = Qt::Monday;
};

class Text : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString text MEMBER m_text)

public:
    QString m_text = QStringLiteral("unset");
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

    int m_both = 1;
    int m_readOnly = 2;
    int m_writeOnly = 3;
    int m_notStored = 4;
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
    void convertsToInt_data();
    void convertsToInt();
    void combinesTopLevelAndGroup();
    void listsAndRemovesGroups();
    void refusesDamagedFiles_data();
    void refusesDamagedFiles();
    void reportsFailedWrites_data();
    void reportsFailedWrites();
    void keepsValuesOfOtherThreads();
    void keepsValuesOfOtherProcesses();

private:
    // The file under another name: Qt remembers what it wrote under this one.
    QString copy() const
    {
        const QString name = m_directory->filePath(QStringLiteral("copy.ini"));
        QFile::remove(name);
        QFile::copy(m_path, name);
        return name;
    }

    void store(const QByteArray &bytes) const
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

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
    values.m_natural = std::numeric_limits<uint>::max();
    values.m_large = std::numeric_limits<qlonglong>::min();
    values.m_largest = std::numeric_limits<qulonglong>::max();
    values.m_real = 0.1 + 0.2;
    values.m_shortReal = 0.1F;
    values.m_text = QString();
    values.m_bytes = "a,b;\n";
    values.m_oneText = QStringList{QStringLiteral("a,b")};
    values.m_date = QDate(2021, 9, 10);
    values.m_time = QTime(12, 0, 10, 7);
    values.m_dateTime = QDateTime(values.m_date, values.m_time, Qt::UTC);
    values.m_url = QUrl(QStringLiteral("https://example.org/a%2Fb?q=1,2#f"));
    values.m_uuid = QUuid::createUuid();
    values.m_day = Qt::Sunday;
    InitProperties::write(&values, m_path, group);

    for (const QString &path : {m_path, copy()}) {
        Values loaded;
        InitProperties::read(&loaded, path, group);
        const QMetaObject &type = Values::staticMetaObject;
        for (int i = type.propertyOffset(); i < type.propertyCount(); ++i)
            QVERIFY2(type.property(i).read(&loaded) == type.property(i).read(&values),
                     type.property(i).name());
    }
}

void tst_InitProperties::keepsTexts_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text :
         {"", " leading and trailing ", "\t", "\"quoted\"", "\"", "back\\slash\\", "a,b, c", ",",
          "line\nbreak\r\nand\rmore", "größe ключ 日本", "𠮷 𝒜 beyond the basic plane", "@Invalid()", "@x",
          "@ByteArray(x)", "%1;#=[section]",
          "\x01\x02"
          "f",
          "\\x41", "true", "1e3"})
        QTest::newRow(text) << QString::fromUtf8(text);
    QTest::newRow("zero") << QStringLiteral("a") + QChar(0) + QStringLiteral("b");
    QTest::newRow("long") << QString(100000, QChar(0xFC));
}

void tst_InitProperties::keepsTexts()
{
    QFETCH(QString, text);
    Text object;
    object.m_text = text;
    InitProperties::write(&object, m_path, group);
    InitProperties::writeSettingsLine(m_path, QStringLiteral("Lines/a key"), text);
    InitProperties::writeSettingsLine(m_path, QStringLiteral("last"), QStringLiteral("1"));

    for (const QString &path : {m_path, copy()}) {
        Text loaded;
        InitProperties::read(&loaded, path, group);
        QCOMPARE(loaded.m_text, text);
        QCOMPARE(
            InitProperties::readSettingsLine(path, QStringLiteral("Lines/a key"), QStringLiteral("none")),
            text);
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
    QCOMPARE(
        capture.lines(),
        QStringList{
            QStringLiteral("default.warning: Path: \"%1\" Failed to read area Type: QRect value type QString")
                .arg(m_path)});

    InitProperties::write(this, m_path, QStringLiteral("None"));
    QCOMPARE(InitProperties::listGroups(m_path), QStringList{group}); // Qt keeps no empty groups
}

void tst_InitProperties::convertsToInt_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("warnings");
    QTest::newRow("12") << QByteArray("12") << 12 << 0;
    QTest::newRow("blanks") << QByteArray("\" 12 \"") << 12 << 0;
    QTest::newRow("missing") << QByteArray("7\nnumber2=1") << 7 << 0;
    QTest::newRow("true") << QByteArray("true") << 1 << 1;
    QTest::newRow("false") << QByteArray("false") << 0 << 1;
    QTest::newRow("True") << QByteArray("True") << 0 << 1;
    QTest::newRow("abc") << QByteArray("abc") << 0 << 1;
    QTest::newRow("12abc") << QByteArray("12abc") << 0 << 1;
    QTest::newRow("3.7") << QByteArray("3.7") << 0 << 1;
    QTest::newRow("hexadecimal") << QByteArray("0x10") << 0 << 1;
    QTest::newRow("empty") << QByteArray() << 0 << 1;
    QTest::newRow("list") << QByteArray("1,2") << 5 << 1; // no text: left as it was
}

void tst_InitProperties::convertsToInt()
{
    QFETCH(QByteArray, stored);
    store("[Group]\nnumber=" + stored + "\n");
    Values values;
    values.m_number = 5;
    const LogCapture capture;
    InitProperties::read(&values, m_path, group);
    QTEST(values.m_number, "number");
    QTEST(capture.texts().size(), "warnings");
    QCOMPARE(capture.texts().filter(QStringLiteral("Failed to read number Type: int value type Q")),
             capture.texts());
}

void tst_InitProperties::combinesTopLevelAndGroup()
{
    store("number=1\nnatural=2\n[Group]\nnumber=10\nlarge=30\n");
    Values values;
    InitProperties::readCombined(&values, m_path, group);
    QCOMPARE(values.m_number, 10);
    QCOMPARE(values.m_natural, 2U);
    QCOMPARE(values.m_large, 30);

    Values topLevel;
    InitProperties::readCombined(&topLevel, m_path, QString());
    QCOMPARE(topLevel.m_number, 1);
    QCOMPARE(topLevel.m_large, 0);
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

void tst_InitProperties::refusesDamagedFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("binary") << QByteArray("\0\1\2\xFF\xFE\n=\x80[\n\n", 11);
    QTest::newRow("no keys") << QByteArray("Dear reader,\nthis is no settings file.\n");
    QTest::newRow("broken section") << QByteArray("a=1\n[Group\nb=2\n");
    QTest::newRow("Latin-1") << QByteArray("a=1\n[Group]\nname=M\xFCller\n");
    QTest::newRow("cut letter") << QByteArray("a=1\n[Group]\nname=M\xC3");
    QTest::newRow("beyond the basic plane") << QByteArray("a=1\n[Group]\nname=\xF0\x9D\x92\x9C\n");
}

void tst_InitProperties::refusesDamagedFiles()
{
    QFETCH(QByteArray, bytes);
    store(bytes);
    Values values;
    InitProperties::readCombined(&values, m_path, group); // Qt tells the first reader only
    const LogCapture capture;
    InitProperties::write(&values, m_path, group);
    InitProperties::writeSettingsLine(m_path, QStringLiteral("key"), QStringLiteral("value"));
    QCOMPARE(contents(m_path), bytes);
    const QString warning = QStringLiteral("default.warning: Path: \"%1\" Failed to write").arg(m_path);
    QCOMPARE(capture.lines(), (QStringList{warning, warning}));
    QCOMPARE(QDir(QFileInfo(m_path).path()).entryList(QDir::Files),
             QStringList{QStringLiteral("settings.ini")});
}

void tst_InitProperties::reportsFailedWrites_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("none") << QString();
    QTest::newRow("directory") << QStringLiteral(".");
    QTest::newRow("below a file") << QStringLiteral("settings.ini/other.ini");
    QTest::newRow("read-only") << QStringLiteral("settings.ini");
}

void tst_InitProperties::reportsFailedWrites()
{
    QFETCH(QString, path);
    store("key=1\n");
    QFile::setPermissions(m_path, QFile::ReadOwner);
    if (QTest::currentDataTag() == QByteArray("read-only") && QFileInfo(m_path).isWritable())
        QSKIP("an administrator writes read-only files");
#ifdef Q_OS_WIN
    if (QTest::currentDataTag() == QByteArray("read-only"))
        QSKIP("Wine lets an administrator open read-only files, but not replace them");
#endif
    if (!path.isEmpty())
        path = QFileInfo(m_path).path() + QLatin1Char('/') + path;

    const LogCapture capture;
    InitProperties::writeSettingsLine(path, QStringLiteral("key"), QStringLiteral("2"));
    QVERIFY(capture.texts().contains(QStringLiteral("Path: \"%1\" Failed to write").arg(path)));
    QCOMPARE(contents(m_path), QByteArray("key=1\n"));
    QVERIFY(InitProperties::readSettingsLine(path, QStringLiteral("key"), QString()) != QLatin1String("2"));
    QCOMPARE(QDir(QFileInfo(m_path).path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("settings.ini")});
}

void tst_InitProperties::keepsValuesOfOtherThreads()
{
    constexpr int threadCount = 4;
    constexpr int rounds = 20;
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
    const QSettings settings(copy(), QSettings::IniFormat);
    QCOMPARE(settings.allKeys().size(), threadCount * rounds);
}

// Two processes change one file in turns, faster than the clock of the file system ticks and without changing
// its size: each must see what the other wrote and must not write it back as it was before.
void tst_InitProperties::keepsValuesOfOtherProcesses()
{
    const QString ours = QStringLiteral("ours");
    const QString theirs = QStringLiteral("theirs");
    InitProperties::writeSettingsLine(m_path, ours, QStringLiteral("1000"));
    InitProperties::writeSettingsLine(m_path, theirs, QStringLiteral("1000"));
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
