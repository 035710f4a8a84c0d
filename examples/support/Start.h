#ifndef START_H
#define START_H

#include "CommandLine.h"

/**
 * Starts the library up as AppConfig::initialize() does, without leaving a trace on the machine.
 *
 * At its start, and whenever one of the variable directories is asked for, AppConfig makes directories and
 * settings files below APPDATA, or where the options of the variable data say. So APPDATA leads to a place
 * where nothing can be made, and those options are kept from the library. On the console it is quiet.
 * @param withheld more options to keep from it
 * @return true when a version was printed and the process is to end
 */
bool startWithoutTrace(const CommandLine &line, int &argc, char **argv, const char *name,
                       const QStringList &withheld = {});

/**
 * The path that the library gives an executable that starts normally.
 * @param path what the library gives here
 * @param option the option that sets the directory; its value, if it was kept from the library, is the path
 */
QString usualPath(const QString &path, const char *option);

#endif
