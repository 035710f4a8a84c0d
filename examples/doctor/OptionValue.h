#ifndef OPTIONVALUE_H
#define OPTIONVALUE_H

#include <AppConfig.h>

/// The value behind an option, @p defaultValue when there is none; the next option is no value.
inline QString optionValue(const char *option, const QString &defaultValue = QString())
{
    const QString value = AppConfig::instance()->argumentValue(QString::fromLatin1(option), defaultValue);
    return value.startsWith(QLatin1String("--")) ? defaultValue : value;
}

#endif
