#include "InitProperties.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDebug>
#include <QFileInfo>
#include <QLockFile>
#include <QMetaProperty>
#include <QSettings>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

constexpr int turnTimeout = 10000; // ms
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

void load(QObject *object, const QMetaProperty &property, const QVariant &value, const QString &path)
{
    if (property.write(object, value))
        return;
    qWarning() << "Path:" << path << "Failed to read" << property.name() << "Type:" << property.typeName()
               << "value type" << value.typeName();
    if (property.type() != QVariant::Int || value.type() != QVariant::String)
        return;
    const QString text = value.toString();
    if (!property.write(object, text == QLatin1String("true") ? 1 : text.toInt()))
        qWarning() << "Path:" << path << "Failed to read, string to int";
}

// ---- changes

// QSettings loses letters of two UTF-16 units, because it encodes one unit at a time; their UTF-8 bytes
// survive and read back as the text. A null text would read back as a missing key in this process.
QVariant storable(const QString &text)
{
    if (std::any_of(text.cbegin(), text.cend(), [](QChar c) { return c.isSurrogate(); }))
        return text.toUtf8();
    return text.isNull() ? QLatin1String("") : text;
}

// Whether QSettings would drop or change what is in the file by writing it.
bool isDamaged(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    const QString text = QString::fromUtf8(bytes);
    const IniFile settings(path);
    // cppcheck-suppress ignoredReturnValue ; asking has it look at every line
    settings.allKeys();
    return settings.status() == QSettings::FormatError || text.toUtf8() != bytes
        || storable(text).type() == QVariant::ByteArray;
}

void renewTime(const QString &path, const QDateTime &last)
{
    QFile file(path);
    if (last.isValid() && QFileInfo(path).lastModified() <= last && file.open(QIODevice::Append))
        file.setFileTime(last.addMSecs(1), QFileDevice::FileModificationTime);
}

// Polled, because QLockFile itself waits longer and longer.
void takeTurn(QLockFile *lock)
{
    const QDeadlineTimer deadline(turnTimeout);
    while (!lock->tryLock(pollInterval) && lock->error() == QLockFile::LockFailedError
           && !deadline.hasExpired()) { }
}

// QSettings takes a file of the size and the millisecond that it remembers for unchanged, and then writes
// back what another process has replaced. So changes come one after the other, and each begins and ends with
// a later time than the file has ever had: whatever this process read before, and when, it is read again.
template <typename Change> void changeFile(const QString &path, Change change)
{
    QLockFile lock(path + QLatin1String(".turn"));
    takeTurn(&lock);
    renewTime(path, QFileInfo(path).lastModified());
    const QDateTime last = QFileInfo(path).lastModified();
    const QString copy = path + QLatin1String(".damaged");
    const bool damaged = isDamaged(path);
    if (damaged)
        QFile::copy(path, copy);
    IniFile settings(path);
    change(settings);
    settings.sync();
    renewTime(path, last);
    lock.unlock();
    if (damaged)
        qWarning() << "Path:" << path << "Damaged, see" << copy;
    if (settings.status() == QSettings::AccessError)
        qWarning() << "Path:" << path << "Failed to write";
}

} // namespace

void InitProperties::write(const QObject *object, const QString &path, const QString &group)
{
    // First, because reading a property runs code of the application, which may use the file, too.
    std::vector<std::pair<QString, QVariant>> values;
    forEachOwnProperty(object, [&](const QMetaProperty &property) {
        if (property.isReadable())
            values.emplace_back(QString::fromUtf8(property.name()),
                                storable(property.read(object).toString()));
    });
    changeFile(path, [&](QSettings &settings) {
        settings.beginGroup(group);
        for (const auto &[key, value] : values)
            settings.setValue(key, value);
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
        const QVariant value = settings.value(QString::fromUtf8(property.name()));
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
    changeFile(path, [&](QSettings &settings) { settings.setValue(key, storable(value)); });
}

void InitProperties::removeGroup(const QString &path, const QString &group)
{
    IniFile settings(path);
    settings.beginGroup(group);
    if (!settings.allKeys().isEmpty())
        changeFile(path, [&](QSettings &file) { file.remove(group); });
}

void InitProperties::clearAll(const QString &path)
{
    changeFile(path, [](QSettings &settings) { settings.clear(); });
}
