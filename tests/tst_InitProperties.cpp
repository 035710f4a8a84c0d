#include <InitProperties.h>

#include "Cases.h"
#include "LogCapture.h"

#include <QDateTime>
#include <QTemporaryDir>

#include <limits>

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
    QByteArray bytes, left; // what is left in group "Group"
} damagedCases[] = {
    {"comment", "# comment\n[Group]\nb=2\n", "b=2\n"},
    {"no settings", "Dear reader,\nthis is no settings file.\n", ""},
    {"broken section", "[Group\nb=2\n", "b=2\n"},
    {"zeros", "[Group]\nb=2\n" + QByteArray(20, 0), "b=2\n"},
    {"Latin-1", "[Group]\nb=M\xFCller\n", "b=M\xEF\xBF\xBDller\n"},
    {"cut letter", "[Group]\nb=M\xC3", "b=M\xEF\xBF\xBD\n"},
    {"beyond the basic plane", "[Group]\nb=\xF0\x9D\x92\x9C\n", "b=\n"},
};

// A message about the file.
QString warning(const QString &path, const char *message)
{
    return text("default.warning: Path: \"%1\" ").arg(path) + text(message);
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
    Q_PROPERTY(QString text READ text WRITE setText) // clazy:exclude=qproperty-without-notify
    Q_PROPERTY(int writeOnly WRITE setWriteOnly)

public:
    // May store something itself.
    QString text() const
    {
        if (!m_path.isEmpty())
            InitProperties::writeSettingsLine(m_path, QStringLiteral("Group/asked"), key);
        return m_text;
    }
    void setText(const QString &text) { m_text = text; }
    void setWriteOnly(int) { setObjectName(QStringLiteral("written")); }

    QRect m_area = QRect(1, 2, 3, 4);
    QByteArray m_bytes;
    int m_constant = 2, m_number = 5;
    QDateTime m_dateTime;
    Qt::DayOfWeek m_day = Qt::Monday;
    bool m_flag = false;
    QStringList m_oneText;
    double m_real = 0;
    QString m_path, m_text = QStringLiteral("unset");
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
            QCOMPARE(capture.lines().join(QLatin1Char(';')),
                     warning(path, "Failed to read area Type: QRect value type QString;")
                         + warning(path, "Failed to read day Type: Qt::DayOfWeek value type QString"));
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
        QCOMPARE(capture.lines().size(), expected.warnings);
    }

    void keepsTexts()
    {
        QStringList texts = {QString(), QStringLiteral("a") + QChar(0) + QStringLiteral("b"),
                             QString(100000, QChar(0xFC))};
        for (const char *utf8 :
             {" a, \"b\", c\\ ", "line\nbreak\r\nand\rmore", "größe ключ 日本", "𠮷 𝒜 beyond the basic plane",
              "@Invalid()", "@ByteArray(x)", "%1;#=[section]\x01\x02\\x41"})
            texts << text(utf8);
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
            "; comment\nnumber=1\nreal=2\n[A]\nB\\x=1\ny=2\n[Group]\nnumber=10\ntext=größe\n";
        store(bytes);
        QCOMPARE(InitProperties::listGroups(m_path), (QStringList{QStringLiteral("A"), group}));
        Values both, topLevel;
        InitProperties::readCombined(&both, m_path, group);
        InitProperties::readCombined(&topLevel, m_path, QString());
        QVERIFY(both.m_number == 10 && both.m_real == 2.0 && both.m_text == QStringLiteral("größe"));
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

    void keepsDamagedFiles_data() { addCases(damagedCases); }

    void keepsDamagedFiles()
    {
        const auto &c = currentCase(damagedCases);
        store(c.bytes);
        InitProperties::readSettingsLine(m_path, key, key); // Qt tells the first reader only
        const LogCapture capture;
        for (int i = 0; i < 2; ++i)
            InitProperties::writeSettingsLine(m_path, QStringLiteral("Group/new"), key);
        QCOMPARE(capture.lines(), QStringList(warning(m_path, "Damaged, see \"%1.damaged\"").arg(m_path)));
        QCOMPARE(contents(m_path), "[Group]\n" + c.left + "new=key\n");
        QCOMPARE(contents(m_path + QLatin1String(".damaged")), c.bytes);
        QCOMPARE(QFileInfo(m_path).dir().entryList(QDir::Files | QDir::Hidden).size(), 2);
    }

    void reportsFailedWrites()
    {
        store("key=1\n");
        QFile::setPermissions(m_path, QFile::ReadOwner);
        for (const char *const name : {".", "settings.ini/other.ini", "settings.ini"}) {
            const QString path = QFileInfo(m_path).dir().filePath(text(name));
            // An administrator writes read-only files, but Wine lets him not replace them.
            if (path == m_path
                && (QFileInfo(m_path).isWritable() || QSysInfo::kernelType() == QLatin1String("winnt")))
                continue;
            const LogCapture capture;
            InitProperties::writeSettingsLine(path, key, QStringLiteral("2"));
            // Windows has Qt warn of the lock below a file, too.
            QCOMPARE(capture.lines().filter(text("Path:")), QStringList(warning(path, "Failed to write")));
            QCOMPARE(contents(m_path), QByteArray("key=1\n"));
        }
    }

    // Of the same size, and in the same tick of a slow clock.
    void keepsChangesOfOthers()
    {
        const QDateTime later = QDateTime::currentDateTime().addSecs(60);
        for (const char *const bytes : {"[Group]\na=1\n", "[Group]\na=2\n"}) {
            store(bytes);
            QFile file(m_path);
            QVERIFY(file.open(QIODevice::Append) && file.setFileTime(later, QFile::FileModificationTime));
            InitProperties::listGroups(m_path); // Qt remembers the first
        }
        Values values;
        values.m_path = m_path;
        InitProperties::write(&values, m_path, QStringLiteral("Other"));
        QVERIFY2(contents(m_path).startsWith("[Group]\na=2\nasked=key\n\n[Other]\n"), contents(m_path));
        QVERIFY(QFileInfo(m_path).lastModified() > later.addMSecs(2));
    }

private:
    // The file under another name: Qt remembers what it wrote under this one.
    QString copy() const
    {
        QString name = m_directory->filePath(QStringLiteral("copy.ini"));
        QFile::copy(m_path, name);
        return name;
    }

    void store(const QByteArray &bytes) const { QVERIFY(write(m_path, bytes)); }

    std::unique_ptr<QTemporaryDir> m_directory;
    QString m_path;
};

QTEST_GUILESS_MAIN(tst_InitProperties)
#include "tst_InitProperties.moc"
