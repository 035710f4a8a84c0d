#include "OXVersion.h"

#include <QLoggingCategory>
#include <QRegExp>

namespace {

Q_LOGGING_CATEGORY(category, "Olvex.OXVersion", QtWarningMsg)

constexpr qint64 developmentMajor = 99;

// Unsigned, so that numbers beyond their field spill into the next one without undefined behaviour.
quint64 majorMinorKey(const OXVersion &version)
{
    return quint64(version.major) << 52 | quint64(version.minor) << 36;
}

qint64 majorMinorPatchKey(const OXVersion &version)
{
    return qint64(majorMinorKey(version) | quint64(version.patch) << 20);
}

} // namespace

OXVersion::OXVersion(const QString &versionString)
{
    qCDebug(category) << versionString;

    // Deliberate: QRegExp. Its \d and \w accept every Unicode digit and letter, and its '.' a line break.
    QRegExp parts(QStringLiteral("^(\\d+)\\.(\\d+)\\.(\\d+)[-\\.]?(\\d+)?-?(\\w+)?"));
    valid = parts.exactMatch(versionString);
    if (!valid) {
        parts.setPattern(QStringLiteral("^(\\d+)\\.(\\d+)\\.(\\d+).*"));
        valid = parts.exactMatch(versionString);
        if (valid)
            qCInfo(category) << versionString
                             << "Initial version check failed parsing for major, minor and patch only";
    }
    // What did not match reads as 0 and as an empty text.
    major = parts.cap(1).toLongLong();
    minor = parts.cap(2).toLongLong();
    patch = parts.cap(3).toLongLong();
    build = parts.cap(4).toLongLong();
    type = parts.cap(5);

    qCInfo(category) << "versionString" << versionString << "="
                     << "Major" << major << "minor" << minor << "patch" << patch << "build" << build << "type"
                     << type;
}

bool OXVersion::isMajorMinorEqual(OXVersion other) const
{
    // Deliberate: development versions (99) match whatever their minor is; isMajorMinorMicroLess has no such
    // rule.
    if (major == developmentMajor && other.major == developmentMajor)
        return true;
    return majorMinorKey(*this) == majorMinorKey(other);
}

QJSValue OXVersion::isMajorMinorMicroLess(QJSValue value) const
{
    const QVariant variant = value.toVariant();
    if (!variant.canConvert<OXVersion>())
        return QJSValue(QJSValue::UndefinedValue);
    return QJSValue(majorMinorPatchKey(*this) < majorMinorPatchKey(variant.value<OXVersion>()));
}

QString OXVersion::toString() const
{
    if (!valid)
        return QString();
    const QString numbers = QStringLiteral("%1.%2.%3.%4").arg(major).arg(minor).arg(patch).arg(build);
    return type.isEmpty() ? numbers : numbers + QLatin1Char('-') + type;
}

QDebug operator<<(QDebug debug, const OXVersion &version)
{
    const QDebugStateSaver saver(debug);
    debug.nospace() << "OXVersion(" << version.toString() << ')';
    return debug;
}
