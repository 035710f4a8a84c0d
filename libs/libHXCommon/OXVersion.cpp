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
    QRegExp full(QStringLiteral("^(\\d+)\\.(\\d+)\\.(\\d+)[-\\.]?(\\d+)?-?(\\w+)?"));
    QRegExp threeNumbers(QStringLiteral("^(\\d+)\\.(\\d+)\\.(\\d+).*"));
    const auto takeThreeNumbers = [this](const QRegExp &match) {
        major = match.cap(1).toLongLong();
        minor = match.cap(2).toLongLong();
        patch = match.cap(3).toLongLong();
        valid = true;
    };

    if (full.exactMatch(versionString)) {
        takeThreeNumbers(full);
        build = full.cap(4).toLongLong();
        type = full.cap(5);
    } else if (threeNumbers.exactMatch(versionString)) {
        qCInfo(category) << versionString
                         << "Initial version check failed parsing for major, minor and patch only";
        takeThreeNumbers(threeNumbers);
    }

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
