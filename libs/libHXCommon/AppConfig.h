#ifndef APPCONFIG_H
#define APPCONFIG_H

#include "HXCommonExport.h"
#include "hxspinlocker.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QObject>
#include <QSettings>
#include <QSharedPointer>
#include <QStringList>
#include <QVariant>

#include <cstdio>

class QCoreApplication;
class QLoggingCategory;

/**
 * The process-wide configuration object: command line, directories, settings files, logging and a clean exit.
 *
 * Every executable initialises it first, right after it has made its application object:
 *
 * @code
 * int main(int argc, char **argv)
 * {
 *     QCoreApplication app(argc, argv);
 *     AppConfig::instance()->addArgument("--scenario", 1, "<name> Starts with a scenario");
 *     if (AppConfig::instance()->initialize(QStringLiteral("OlvexPlayer"), QStringLiteral("8.0.2.1")))
 *         return 0; // help or version was printed
 *     AppConfig::cleanExit();
 *     return app.exec();
 * }
 * @endcode
 *
 * The options are never parsed into a structure of their own: every query scans QCoreApplication::arguments()
 * again. An option is written with or without its leading "--" in all queries. Only its first occurrence
 * counts.
 *
 * The object is made on first use of instance() and destroyed at process exit, when it restores the previous
 * message handler, closes the log file and releases the settings. It belongs to the main thread; what may be
 * called from any thread says so. Log category: "Olvex.AppConfig".
 */
class HXCOMMON_EXPORT AppConfig : public QObject {
    Q_OBJECT

public:
    /// The description of one option.
    struct cmdArg_t {
        const char *name; ///< The option with its leading "--"; must live as long as the process.
        qint32 valueCount; ///< Values that follow: 0 for a flag, 1 for one value, -1 for a variable number.
        const char *help; ///< Help text or null; must live as long as the process.
    };

    /// The result of looking an option up.
    struct cmdArgInfo_t {
        qint32 index; ///< Position in the argument list, -1 when the option does not occur.
        qint32 valueCount; ///< Values the option takes, -1 when it does not occur or is not registered.
    };

    /// The one object; made on the first call, from whichever thread that is. It lives in the thread of the
    /// application object if there is one by then.
    static AppConfig *instance();
    /// The same as instance().
    static AppConfig *Instance();

    /// Restores the previous message handler, closes the log file and releases the settings.
    ~AppConfig() override;

    /**
     * Starts the executable up: identity, logging filter, command line, directories, settings, network,
     * service URLs, in this order. @ref md_docs_architecture "docs/architecture.md" lists every step.
     *
     * The application object must exist. Nothing makes the start-up fail: a log file that cannot be opened is
     * reported on standard error, a service table that cannot be read by a warning of OXUrls, and a directory
     * or settings file that cannot be made is left to whoever uses it.
     *
     * May be called again; the settings object is then replaced. A message handler or category filter that
     * the application has installed meanwhile then comes behind those of the library, and may go on passing
     * everything to them.
     * @param applicationName goes into the name of the settings file
     * @param version used unless the application object has a version already (on Windows it may have one
     * from its version resource); when both are empty the version of this library is used
     * @return true when help or a version was printed and the process is to end
     */
    bool initialize(const QString &applicationName, const QString &version);

    /**
     * Applies the built-in options; part of initialize().
     *
     * The options that set a directory are listed with the directories. The others:
     *
     * | option | effect |
     * |---|---|
     * | "--logoutput" file | appends every message to the file, see logOutputFile |
     * | "--null" | prints no message on the console, see nullOutput |
     * | "--nodebug" | standard streams become the null device; nothing is printed or logged any more |
     * | "--disablestamps" | messages start without the time, in the log file, too |
     * | "--debugLevel" number | sets DebugInfoEnterExit::debugLevel, to 0 by what is no number |
     * | "--redirectoutput" file | appends standard output and standard error to the file |
     * | "--disablecrashdump" | sets disableCrashHandler |
     * | "--version" | prints the application's name and version, then initialize() returns true |
     * | "--systemversion" | prints systemVersion(), then initialize() returns true |
     * | "--help" | prints the versions and all options, then initialize() returns true |
     * | "--hxcomtrace" | none here: the application's device communication asks for it |
     * | "--factorydatapath" directory | none |
     *
     * @return true when help or a version was printed and the process is to end
     */
    bool parseApplicationArgs();

    /**
     * Registers an option of the application; call it before initialize(), which prints the help. The texts
     * are not copied and must live as long as the process.
     * @param name the option with its leading "--"; of a name that is registered twice, or is built in, the
     *        first registration counts
     * @param valueCount values that follow: 0 for a flag, 1 or more for as many values, -1 for a variable
     *        number (see getArgValueCnt())
     * @param help text for the help printout; null prints "Help not available"
     */
    void addArgument(const char *name, qint32 valueCount, const char *help);

    /// @name Option queries
    /// @{

    /// Looks an option up: on the command line first, then in cmdArgs and in the application's own list.
    cmdArgInfo_t getArgInfo(QString name) const;

    /**
     * Fills the value count of a look-up result from the option's description.
     *
     * An option with a variable number of values always yields 0 and so acts as a flag.
     * @param argument the description of the option
     * @param info a result whose index is that of the option itself
     */
    void getArgValueCnt(const cmdArg_t &argument, cmdArgInfo_t &info) const;

    /// Inserts "--" in front of @p name unless it starts with "--" already.
    void fixArg(QString &name) const;

    /**
     * The value behind an option, as it stands even if it starts with "--".
     * @return @p defaultValue when the option is not given, not registered, takes no value or has an empty
     * one
     */
    QString argumentValue(const QString &name, const QString &defaultValue) const;

    /// The value behind an option as a decimal 32-bit integer; @p defaultValue also when it does not convert.
    qint32 argumentValue(const QString &name, qint32 defaultValue) const;

    /// All values of an option, an empty text for each that the command line lacks; empty for a flag.
    QStringList argumentValues(const QString &name) const;

    /// Whether the option occurs on the command line, registered or not.
    static bool argumentExits(const QString &name);

    /// The 23 built-in options in the order of the help printout.
    static const QList<cmdArg_t> cmdArgs;

    /// Whether the help printout lists the built-in options; true from the start.
    bool showBuiltinHelp = true;

    /// @}

    /**
     * @name Directories
     *
     * Each getter returns the path of a file in a directory; the file need not exist, and an empty name gives
     * the directory. Each directory is set by an option or has a default. "<base>" in the defaults is the
     * value of the environment variable APPDATA (as UTF-8; empty if it is not set) followed by
     * "/Brantel Medical/Olvex"; the other relative defaults start in the working directory.
     *
     * The name passes through the local 8-bit encoding: what that cannot hold is lost, and the name ends at
     * its first NUL. An absolute name is returned unchanged. Relative directories are resolved when the
     * getter is first used and do not follow a later change of the working directory.
     *
     * No getter fails. Where a directory is made when missing, and that is impossible, the path is returned
     * all the same.
     * @{
     */

    /// Gives every directory that no option has set its default, and makes "<base>"; part of initialize().
    void setupConfigPaths();

    /// In the directory for temporary files: "--tmppath", else QDir::tempPath().
    static QString tmpPath(const QString &file);
    /// In the configuration directory: "--confpath", else "./data/etc".
    static QString confPath(const QString &file);
    /// In the share root: "--sharepath", else ".".
    static QString sharePath(const QString &file);
    /// In the factory data: "--datapath" if the application registers it, else "./data".
    static QString factoryDataPath(const QString &file);
    /// In the persistent storage: "--persistentpath", else
    /// "<base>/c:/ccnet/builds/olvex-release/installer/data/persistent".
    static QString persistentStoragePath(const QString &file);
    /// In the directory of executables: "--binpath", else ".".
    static QString binPath(const QString &file);
    /// In the scenario store: "--dravikpath", else "./var/dravik".
    static QString dravikPath(const QString &file);
    /// In the variable data: "--varpath", else "<base>/var"; made when missing.
    static QString varPath(const QString &file);
    /// In the variable configuration: "--varetcpath", else "<base>/var/etc"; made when missing.
    static QString varEtcPath(const QString &file);
    /// In the variable log directory: "--varlogpath", else "<base>/var/log"; made when missing.
    static QString varLogPath(const QString &file);
    /// In "sounds" of the share root.
    static QString soundsPath(const QString &file);
    /// In the plug-ins: "--pluginpath", else "plugins" of the share root. A relative option gives a relative
    /// path.
    static QString pluginsPath(const QString &file);

    /**
     * A file of the user interface.
     * @return the file in the QML root ("--qmlpath") if that exists, else in the directory that the
     * environment variable QML_LOCAL_PATH names, else @p file unchanged
     */
    static QString qmlLocalPath(const QString &file);

    static QString sysInfoPath(); ///< The program "ox-sysinfo" in the binary directory.
    static QString ioMapIniPath(); ///< "/etc/iomap.conf".
    static QString guidelinesIniPath(); ///< "Guidelines.ini" in the variable configuration.
    static QString paramterIniPath(); ///< "Parameters.ini" in the configuration directory.
    static QString paramterIniPathTHA(); ///< "Parameters_THA.ini" in the configuration directory.

    /// @}
    /// @name Settings
    /// @{

    /**
     * The settings file of this executable: "Settings_" + application name + ".ini" in the variable
     * configuration.
     * @param migrate whether to replace it first by a copy of the old common "Settings.ini" when that is
     * newer or this executable has none yet; the old file stays in place. The copy keeps the old file's
     * permissions.
     * @return the path; the file need not exist
     */
    static QString settingIniPath(bool migrate);

    /// A new settings object on settingIniPath(false), in INI format, without parent.
    static QSharedPointer<QSettings> settings();

    /// A new settings object on ioMapIniPath() in the "conf" format, with the INI codec UTF-8, without
    /// parent.
    static QSharedPointer<QSettings> ioMapSettings();

    /**
     * A setting that a test may override.
     * @return the application object's property @p key if it has a valid one (static properties such as
     *         "applicationName" count, too), else the value in settings(), else @p defaultValue
     */
    static QVariant testSetting(const char *key, const QVariant &defaultValue);

    /**
     * Reads the "conf" format: lines "key=value", Latin-1, nothing trimmed, no groups, no comments; a later
     * line replaces an earlier one, lines without exactly one "=" are skipped.
     * @return true
     */
    static bool readConf(QIODevice &device, QSettings::SettingsMap &map);

    /**
     * Writes the "conf" format in key order, in the local 8-bit encoding. A value with a "=" or a line break
     * is written as it is and not read back.
     * @return true
     */
    static bool writeConf(QIODevice &device, const QSettings::SettingsMap &map);

    /// @}

    /**
     * @name Logging
     *
     * initialize() installs a message handler. It appends each message to logOutputFile and passes it on to
     * oldMsgHandler, which prints it. Any thread may log. A fatal message is reported in a message box on
     * Windows, on standard error elsewhere; then exit(-1) is requested, and Qt aborts the process.
     * @{
     */

    /**
     * The debug log file, named by "--logoutput". Closed when none was asked for or it could not be opened.
     *
     * A line is the local time, the level (D debug, I info, W warning, C critical, F fatal), the function and
     * the text, in UTF-8:
     *
     *     9:05:07.123 | I | void Player::start(): Scenario loaded
     *
     * The file is made when missing, always appended to, and never rotated or bounded. Each line is written
     * at once and in one piece, whatever other threads do; what cannot be written is lost. A message without
     * a function name leaves the time and the level only and no line end: compile with QT_MESSAGELOGCONTEXT,
     * which the CMake package sets.
     */
    static QFile logOutputFile;
    /**
     * The message handler before ours, null before initialize(); messages are forwarded to it.
     *
     * Qt's own one prints the time, "Warning", "Critical" or "Fatal", the function and the text, separated by
     * " | "; the environment variable QT_MESSAGE_PATTERN overrides that.
     *
     * It is put back when the process ends, unless this is null. A Qt Test sets it to null in
     * cleanupTestCase(): by then Qt Test, whose handler it is, no longer takes messages.
     */
    static QtMessageHandler oldMsgHandler;
    /// Whether messages are kept from oldMsgHandler; true until the command line was read, then as "--null"
    /// says.
    static bool nullOutput;
    /// Whether lines of the log file start without the time; set by "--disablestamps", and never cleared
    /// here.
    static bool disableTimestamp;
    /// Whether the application is to leave its crash handler off ("--disablecrashdump").
    static bool disableCrashHandler;

    /**
     * Every log category seen by the filter, by the address of its name.
     *
     * Categories that were destroyed since, such as those of QML LoggingCategory objects, leave dangling
     * entries: an application must not dereference an entry whose category may be gone. Other threads may
     * insert at any time, so iterate through loggingCategoriesFromIndex() unless no other thread logs.
     */
    static QHash<const char *, QLoggingCategory *> &loggingCategories;

    /**
     * The category at a position in the iteration order of loggingCategories, from any thread.
     * @return null before the first and behind the last one; see loggingCategories for destroyed categories
     */
    static QLoggingCategory *loggingCategoriesFromIndex(qint32 index);

    /// Milliseconds since parseApplicationArgs() started the stopwatch, 0 before that; from any thread.
    static qint64 elapsedTime();
    /// The stopwatch behind elapsedTime(), to be used under elapsedTimerLock.
    static QElapsedTimer elapsedTimer;
    /// Guards elapsedTimer.
    static HXAtomicLock elapsedTimerLock;

    /**
     * Reopens a standard stream on a file.
     *
     * When that fails the stream is closed, and its descriptor is parked on the null device so that no file
     * opened later receives what is written to it.
     * @param path the file
     * @param mode as for std::freopen
     * @param stream standard input, output or error
     */
    static void freopenstd(const char *path, const char *mode, std::FILE *stream);

    /// Reopens standard input, output and error on "/dev/null" with freopenstd().
    static void redirectStdFilesToNull();

    /// @}
    /// @name Exit and signals
    /// @{

    /**
     * Asks the event loop to end with @p code; logs and does nothing when the application is closing down
     * already. A request before QCoreApplication::exec() is lost; of several in one turn of the loop the last
     * one wins.
     */
    static void exit(qint32 code);

    /**
     * Makes a request of the operating system to end the process a clean exit with code 0.
     *
     * On Windows these are the console's close and break events. On POSIX systems SIGINT, SIGTERM and SIGHUP
     * are forwarded to the main thread's event loop, which emits shutdownRequested() first. A request that a
     * loop before QCoreApplication::exec() has read, such as that of a dialog, ends that loop and is then
     * repeated every 100 ms until QCoreApplication::aboutToQuit(). A signal that is ignored stays ignored
     * (nohup). The former actions come back when the application object is destroyed. Call it on the main
     * thread.
     * @return whether the handler could be installed; on POSIX systems that needs the application object, and
     * nothing is changed without it
     */
    static bool cleanExit();

    /// POSIX: forwards @p signal to the event loop; async-signal-safe. Windows: does nothing. The other two
    /// arguments are not used.
    static void signalHandler(int signal, void *info, void *context);

    /// POSIX: the socket pair that signalHandler() writes to and the event loop reads from, -1 until
    /// cleanExit().
    static int signalsFD[2];

    /// Always false.
    static bool runAsUser();

    /// @}
    /// @name Version
    /// @{

    static QString version(); ///< The application's version; empty before initialize().
    static QString majorMiniorMicroVersion(); ///< Its first three parts, "1.0.0" when it cannot be parsed.
    /// Date and time of the build, separated by a blank, as set by HXCOMMON_BUILD_DATE and
    /// HXCOMMON_BUILD_TIME when the library was configured.
    static QString buildStamp();
    static QString versionInfo(); ///< Application name, " Ver. " and version().
    /**
     * The version of the installed system: the first word of "version.txt" in the working directory, else
     * version(), else the version of this library. Once it is not empty it is kept for the life of the
     * process.
     */
    static QString systemVersion();
    static bool isPrototype(); ///< Always true.
    /// The application object seen by initialize(), null before that; not owned, and dangling once it is
    /// gone.
    static QCoreApplication *application();

    /// @}

Q_SIGNALS:
    /// The operating system asks the process to end (POSIX only); AppConfig::exit(0) follows.
    void shutdownRequested(int signal);

public Q_SLOTS:
    /// POSIX: emits shutdownRequested() and exits with 0. Windows: does nothing.
    void signalReceived(int signal);

private:
    // Not set yet, while a QDir starts as the working directory.
    struct Directory : QDir {
        Directory() { setPath(QString()); }
    };
    struct DirectoryRow;
    static const DirectoryRow directoryRows[];

    AppConfig();

    cmdArgInfo_t findArgument(QString name, const QStringList &arguments) const;
    bool isGiven(const char *name) const;
    void readDirectoryOptions();
    void openLogFile();
    void redirectOutput();
    bool printRequestedInformation();
    void printVersion() const;
    void printHelp() const;
    void installMessageHandler();
    static QString filePath(const QDir &directory, const QString &file);
    static QString createdFilePath(const QDir &directory, const QString &file);

    QList<cmdArg_t> m_arguments;
    Directory m_tmp;
    Directory m_log;
    Directory m_conf;
    Directory m_share;
    Directory m_factoryData;
    Directory m_var;
    Directory m_varEtc;
    Directory m_persistentStorage;
    Directory m_varLog;
    Directory m_bin;
    Directory m_dravik;
    Directory m_plugins;
    Directory m_qml;
    QString m_version;
    QCoreApplication *m_application = nullptr;
    QSharedPointer<QSettings> m_settings;
    QSettings::Format m_confFormat;
};

/**
 * Logs "Enter" and "Exit" of a function, as debug messages of the default category, when its level is at most
 * debugLevel.
 *
 * @code
 * const DebugInfoEnterExit trace(Q_FUNC_INFO, 1); // the first line of the function
 * @endcode
 */
class HXCOMMON_EXPORT DebugInfoEnterExit {
public:
    /**
     * Logs "Enter".
     * @param signature the name of the function, such as Q_FUNC_INFO; must outlive this object
     * @param level the least debugLevel that traces the function
     */
    DebugInfoEnterExit(const char *signature, qint32 level);
    /// Logs "Exit".
    ~DebugInfoEnterExit();
    DebugInfoEnterExit(const DebugInfoEnterExit &) = delete;
    DebugInfoEnterExit &operator=(const DebugInfoEnterExit &) = delete;

    /// The verbosity: -1, which it is initially, traces nothing; "--debugLevel 1" turns guards of level 0 and
    /// 1 on.
    static qint32 debugLevel;

private:
    const char *m_signature;
    qint32 m_level;
};

#endif
