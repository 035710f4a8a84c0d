#include "InitProperties.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QMetaProperty>
#include <QSettings>
#include <QTemporaryFile>
#include <QTextCodec>

#include <algorithm>

namespace {

constexpr int turnTimeout = 30000; // ms
constexpr int pollInterval = 5; // ms

class IniFile : public QSettings {
public:
    explicit IniFile(const QString &path) : QSettings(path, IniFormat) { setIniCodec("UTF-8"); }
};

// ---- properties

template <typename Visitor> void forEachOwnProperty(const QObject *object, Visitor visit)
{
    if (!object)
        return;
    const QMetaObject *const type = object->metaObject();
    for (int i = type->propertyOffset(); i < type->propertyCount(); ++i)
        visit(type->property(i));
}

QString keyOf(const QMetaProperty &property)
{
    return QString::fromUtf8(property.name());
}

int toFlagOrInt(const QString &text)
{
    if (text == QLatin1String("true"))
        return 1;
    if (text == QLatin1String("false"))
        return 0;
    return text.toInt();
}

void load(QObject *object, const QMetaProperty &property, const QVariant &value, const QString &path)
{
    if (property.write(object, value))
        return;
    qWarning() << "Path:" << path << "Failed to read" << property.name() << "Type:" << property.typeName()
               << "value type" << value.typeName();
    if (property.type() != QVariant::Int || value.type() != QVariant::String)
        return;
    if (!property.write(object, toFlagOrInt(value.toString())))
        qWarning() << "Path:" << path << "Failed to read, string to int";
}

// ---- what QSettings would lose

// Letters of two UTF-16 units: it encodes one unit at a time. Their UTF-8 bytes survive and read back as the
// text. Null texts: as long as Qt keeps the file in memory, they would read back as a missing key.
QVariant storable(const QString &text)
{
    if (std::any_of(text.cbegin(), text.cend(), [](QChar c) { return c.isSurrogate(); }))
        return text.toUtf8();
    return text.isNull() ? QLatin1String("") : text;
}

// Whether the bytes are UTF-8 of letters of one UTF-16 unit.
bool isStorable(const QByteArray &bytes)
{
    QTextCodec::ConverterState state;
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0 && storable(text).type() == QVariant::String;
}

// Whether QSettings understands the whole file: what it does not, it drops when it writes. It is given a
// copy, because only the first object that opens a file in its present state is told of an error.
bool isIntact(const QString &path)
{
    QFile file(path);
    if (!file.exists())
        return true;
    QTemporaryFile copy(path + QLatin1String(".XXXXXX"));
    if (!file.open(QIODevice::ReadOnly) || !copy.open())
        return false;
    const QByteArray bytes = file.readAll();
    if (!isStorable(bytes) || copy.write(bytes) != bytes.size() || !copy.flush())
        return false;
    const QSettings settings(copy.fileName(), QSettings::IniFormat);
    // cppcheck-suppress ignoredReturnValue ; asking has it look at every line
    settings.allKeys();
    return settings.status() == QSettings::NoError;
}

// QSettings takes a file of the same size and millisecond for unchanged, in every process that has read it:
// it shows the old values and writes them back.
void renewTime(const QString &path, const QDateTime &oldTime)
{
    QFile file(path);
    if (oldTime.isValid() && QFileInfo(path).lastModified() <= oldTime && file.open(QIODevice::Append))
        file.setFileTime(oldTime.addMSecs(1), QFileDevice::FileModificationTime);
}

// ---- changes

template <typename Change> bool changed(QSettings &settings, Change change)
{
    // Qt would keep what cannot be written, show it to readers and write it as soon as it can.
    if (!settings.isWritable())
        return false;
    const QDateTime oldTime = QFileInfo(settings.fileName()).lastModified();
    change(settings);
    settings.sync();
    renewTime(settings.fileName(), oldTime);
    return settings.status() == QSettings::NoError;
}

// QLockFile alone would sleep for seconds between its attempts.
bool taken(QLockFile &turn)
{
    const QDeadlineTimer deadline(turnTimeout);
    while (!turn.tryLock(pollInterval)) {
        if (turn.error() != QLockFile::LockFailedError || deadline.hasExpired())
            return false;
    }
    return true;
}

// One task at a time, in all processes.
template <typename Task> void inTurn(const QString &path, Task task)
{
    QDir().mkpath(QFileInfo(path).path());
    QLockFile turn(path + QLatin1String(".turn"));
    if (!taken(turn) || !task())
        qWarning() << "Path:" << path << "Failed to write";
}

template <typename Change> void changeIntact(const QString &path, Change change)
{
    inTurn(path, [&] {
        if (!isIntact(path))
            return false;
        IniFile settings(path);
        return changed(settings, change);
    });
}

bool hasKeys(const QString &path, const QString &group)
{
    IniFile settings(path);
    settings.beginGroup(group);
    return !settings.allKeys().isEmpty();
}

} // namespace

void InitProperties::write(const QObject *object, const QString &path, const QString &group)
{
    changeIntact(path, [&](QSettings &settings) {
        settings.beginGroup(group);
        forEachOwnProperty(object, [&](const QMetaProperty &property) {
            if (property.isReadable())
                settings.setValue(keyOf(property), storable(property.read(object).toString()));
        });
        settings.endGroup();
    });
}

void InitProperties::read(QObject *object, const QString &path, const QString &group)
{
    IniFile settings(path);
    writeMetaProperties(settings, object, group);
}

void InitProperties::readCombined(QObject *object, const QString &path, const QString &group)
{
    IniFile settings(path);
    writeMetaProperties(settings, object, QString());
    if (!group.isEmpty())
        writeMetaProperties(settings, object, group);
}

void InitProperties::writeMetaProperties(QSettings &settings, QObject *object, const QString &group)
{
    settings.beginGroup(group);
    forEachOwnProperty(object, [&](const QMetaProperty &property) {
        if (!property.isWritable() || !property.isReadable())
            return;
        const QVariant value = settings.value(keyOf(property));
        if (!value.isNull())
            load(object, property, value, settings.fileName());
    });
    settings.endGroup();
}

QStringList InitProperties::listGroups(const QString &path)
{
    return IniFile(path).childGroups();
}

QString InitProperties::readSettingsLine(const QString &path, const QString &key, const QString &defaultValue)
{
    return IniFile(path).value(key, defaultValue).toString();
}

void InitProperties::writeSettingsLine(const QString &path, const QString &key, const QString &value)
{
    changeIntact(path, [&](QSettings &settings) { settings.setValue(key, storable(value)); });
}

void InitProperties::removeGroup(const QString &path, const QString &group)
{
    if (!hasKeys(path, group))
        return;
    changeIntact(path, [&](QSettings &settings) {
        settings.beginGroup(group);
        settings.remove(QString());
        settings.endGroup();
    });
}

void InitProperties::clearAll(const QString &path)
{
    if (!hasKeys(path, QString()))
        return;
    inTurn(path, [&] {
        QSettings settings(path, QSettings::IniFormat);
        return changed(settings, [](QSettings &file) { file.clear(); });
    });
}
