#ifndef INITPROPERTIES_H
#define INITPROPERTIES_H

#include "HXCommonExport.h"

#include <QString>
#include <QStringList>

class QObject;
class QSettings;

/**
 * Stores the properties of an object in an INI file and loads them back; reads and writes single keys and
 * groups of such a file.
 *
 * A property is stored under its name, one object per group (section). The properties that take part are
 * those that the object's own class declares; those of its base classes, such as objectName, never do.
 *
 * @code
 * class Monitor : public QObject {
 *     Q_OBJECT
 *     Q_PROPERTY(int volume MEMBER m_volume)
 *     int m_volume = 5;
 * };
 * @endcode
 *
 * @code
 * InitProperties::write(&monitor, path, QStringLiteral("Monitor"));
 * InitProperties::read(&monitor, path, QStringLiteral("Monitor"));
 * @endcode
 *
 * ### The file
 *
 * INI as QSettings writes it, in UTF-8. Every call opens the file and is done with it when it returns; what
 * it writes is on disk then. A missing file reads as empty, and is made, with its directory, by the first
 * write. Writing drops comments and empty groups. Keys above the first group are stored as group "General".
 *
 * Several threads and processes may use these functions on one file at the same time: no change is lost, and
 * each reader sees either the old or the new file. For that a file "<path>.turn" stands beside it during a
 * change; who waits for its turn for 10 s goes on without. Each change makes the time of the file at least
 * 2 ms later.
 *
 * ### The values
 *
 * Values are text, as QVariant::toString() gives it; a value without a text form is stored as empty text.
 * Numbers, booleans, texts, dates, times, URLs, UUIDs and enumerations with Q_ENUM survive; byte arrays do if
 * they are UTF-8, lists of texts if they hold one text. These do not: `char`, `uchar`, QChar, QFlags that are
 * registered, enumerations without Q_ENUM, and a U+FEFF at the start of a text. An enumeration that is known
 * to the meta-type system is stored by its key, another by its number. A value typed by hand with commas and
 * without quotes is a list, which is no text. Letters beyond the basic multilingual plane, which QSettings
 * cannot write, make a value be stored as "@ByteArray(...)"; it reads back as the text.
 *
 * Conversions are those of QVariant, which lets some odd values pass without a warning: an integer beyond 32
 * bits loses its upper bits, any text but "false", "0" and the empty one is a true boolean.
 *
 * ### Failures
 *
 * Nothing is returned. Warnings go to the default log category:
 * - A value that does not fit its property leaves the property as it was, see writeMetaProperties().
 * - "Path: ... Damaged, see ...": the file holds what QSettings would drop or change by writing it again,
 *   such as lines that are no settings ("# comment"), bytes that are no UTF-8, or letters beyond the basic
 *   plane. It is kept as "<path>.damaged", unless there is one already, and then written.
 * - "Path: ... Failed to write": the file cannot be written. Qt remembers the change: readers in this process
 *   see it, and the next write that succeeds brings it along.
 *
 * A nearly full disk may leave the file cut short, without a warning: QSettings does not notice.
 */
class HXCOMMON_EXPORT InitProperties {
public:
    InitProperties() = delete;

    /// Stores the readable properties of @p object in @p group, in the order in which they are declared. A
    /// null object has none; that holds for the functions below, too.
    static void write(const QObject *object, const QString &path, const QString &group);

    /// Loads the properties of @p object from @p group; an empty name means the keys above the first group.
    static void read(QObject *object, const QString &path, const QString &group);

    /// Loads the properties of @p object from the keys above the first group and then from @p group: the
    /// former are the defaults of all groups.
    static void readCombined(QObject *object, const QString &path, const QString &group);

    /**
     * Loads the properties of @p object from @p group of @p settings. Despite its name it writes properties,
     * not settings.
     *
     * Properties take part that are writable and readable and have a key. If a value does not fit, a warning
     * names the file, the property and both types ("Failed to read"). A text for an int property is then
     * converted after all: "true" is 1, "false" is 0, another text is its decimal value or 0.
     */
    static void writeMetaProperties(QSettings &settings, QObject *object, const QString &group);

    /// The top-level groups of a file.
    static QStringList listGroups(const QString &path);

    /// The value of a key ("Group/name" for one in a group) as text, or @p defaultValue if there is no such
    /// key.
    static QString readSettingsLine(const QString &path, const QString &key, const QString &defaultValue);

    /// Sets one key.
    static void writeSettingsLine(const QString &path, const QString &key, const QString &value);

    /// Removes a group and all that is in it; the empty name means all keys. Without such a group the
    /// contents stay as they are.
    static void removeGroup(const QString &path, const QString &group);

    /// Removes all keys of a file, which is left empty. A missing file is not made.
    static void clearAll(const QString &path);
};

#endif
