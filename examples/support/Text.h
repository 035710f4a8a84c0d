#ifndef TEXT_H
#define TEXT_H

#include <QString>

/// The text of a literal in UTF-8.
inline QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

#endif
