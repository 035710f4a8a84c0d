#ifndef OXVERSION_H
#define OXVERSION_H

#include "HXCommonExport.h"

#include <QDebug>
#include <QJSValue>
#include <QMetaType>
#include <QString>

/**
 * A software version of the form major.minor.patch, optionally with a build number and a type word.
 *
 * A value type for C++ and for scripts: it can be stored in variants, passed to and from the script engine
 * and printed with QDebug. AppConfig registers its conversions to text and to boolean (isValid) with the
 * meta-type system; the conversion to boolean exists in C++ only, in a script an OXVersion object is always
 * true.
 *
 * @code
 * const OXVersion installed(QStringLiteral("8.0.2-rc"));
 * if (installed.isValid())
 *     qInfo() << installed.toString(); // "8.0.2.0-rc"
 * @endcode
 *
 * Log category: "Olvex.OXVersion", threshold warning. Thread-safe as plain values are.
 */
class HXCOMMON_EXPORT OXVersion {
    Q_GADGET

public:
    /// An invalid version: all numbers 0, no type.
    OXVersion() = default;

    /**
     * Parses @p versionString.
     *
     * Accepted are "1.2.3", "1.2.3.4", "1.2.3-4", each with an optional type word ("1.2.3.4-beta",
     * "1.2.3-rc"). Text that merely starts with three numbers gives those three, without build and type.
     * Anything else, such as "1.2", gives an invalid version. A number beyond 64 bits reads as 0.
     */
    OXVersion(const QString &versionString);

    /**
     * Whether both versions have the same major and minor number.
     *
     * Two versions with the major number 99 are always equal. Validity is not consulted. The numbers are
     * packed into one 64-bit key (major << 52 | minor << 36) without masking.
     */
    Q_INVOKABLE bool isMajorMinorEqual(OXVersion other) const;

    /**
     * Whether this version is older than @p value, by major, minor and patch.
     *
     * The numbers are packed into one signed 64-bit key (major << 52 | minor << 36 | patch << 20) without
     * masking.
     * @param value a script value that holds an OXVersion
     * @return a script boolean; undefined when @p value is no OXVersion
     */
    Q_INVOKABLE QJSValue isMajorMinorMicroLess(QJSValue value) const;

    /// Whether the text given to the constructor could be parsed.
    Q_INVOKABLE bool isValid() const { return valid; }

    /// "major.minor.patch.build", with "-type" behind it if there is a type; empty for an invalid version.
    Q_INVOKABLE QString toString() const;

    // sys/sysmacros.h defines major and minor as macros with an argument, which leaves these alone.
    qint64 major = 0; ///< First number.
    qint64 minor = 0; ///< Second number.
    qint64 patch = 0; ///< Third number.
    qint64 build = 0; ///< Build number, 0 if none was given.
    QString type; ///< Type word such as "beta", empty if none was given.
    bool valid = false; ///< See isValid().
};

/// Prints OXVersion("1.2.3.0"), with the text of OXVersion::toString() between the parentheses.
/// @relates OXVersion
HXCOMMON_EXPORT QDebug operator<<(QDebug debug, const OXVersion &version);

Q_DECLARE_METATYPE(OXVersion)

#endif
