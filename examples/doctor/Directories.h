#ifndef DIRECTORIES_H
#define DIRECTORIES_H

#include <QString>

#include <vector>

/// What an application cannot do without in a directory.
enum class Need {
    Nothing,
    Existence,
    Writability, ///< of a directory that exists
    Creation ///< Writability, but it is made when missing
};

/// One of the directories of AppConfig.
struct Directory {
    const char *name;
    const char *option;
    QString (*getter)(const QString &file);
    Need need;

    /// Where an application that starts normally has it; nothing is made.
    QString path() const;
};

/// All of them.
extern const std::vector<Directory> directories;

/// A file in the variable configuration, where the settings are; an empty name gives the directory.
QString variableConfiguration(const QString &file);

/// The directory, or the nearest one above that exists.
QString nearestDirectory(QString path);

/// Whether a file can be made in a directory, also by access lists and on read-only media.
bool isWritable(const QString &directory);

#endif
