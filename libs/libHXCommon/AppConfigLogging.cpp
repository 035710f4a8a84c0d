#include "AppConfigLogging.h"

#include "AppConfig.h"
#include "platform/Platform.h"

#include <QVarLengthArray>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <mutex>

Q_LOGGING_CATEGORY(appConfigCategory, "Olvex.AppConfig")

QFile AppConfig::logOutputFile;
QtMessageHandler AppConfig::oldMsgHandler = nullptr;
bool AppConfig::nullOutput = true;
bool AppConfig::disableTimestamp = false;
bool AppConfig::disableCrashHandler = false;

// Never destroyed: other objects may log in a new category after this library's statics are gone.
QHash<const char *, QLoggingCategory *> &AppConfig::loggingCategories =
    *new QHash<const char *, QLoggingCategory *>;

namespace {

std::mutex categoriesMutex;
QLoggingCategory::CategoryFilter previousFilter = nullptr;

// ---- log file lines

using Line = QVarLengthArray<char, 512>;

void append(Line &line, const char *text)
{
    line.append(text, int(std::strlen(text)));
}

void appendTwoDigits(Line &line, int number)
{
    line.append(char('0' + number / 10));
    line.append(char('0' + number % 10));
}

// "h:mm:ss.zzz", without the locale, whose first use by several threads at once can yield an empty text, and
// without printf(), which would take a fourth of the time of a line.
void appendTime(Line &line)
{
    const platform::TimeOfDay now = platform::localTimeOfDay();
    if (now.hour < 10)
        line.append(char('0' + now.hour));
    else
        appendTwoDigits(line, now.hour);
    line.append(':');
    appendTwoDigits(line, now.minute);
    line.append(':');
    appendTwoDigits(line, now.second);
    line.append('.');
    line.append(char('0' + now.millisecond / 100));
    appendTwoDigits(line, now.millisecond % 100);
}

const char *levelTag(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return " | D | ";
    case QtWarningMsg:
        return " | W | ";
    case QtCriticalMsg:
        return " | C | ";
    case QtFatalMsg:
        return " | F | ";
    case QtInfoMsg:
        return " | I | ";
    }
    return " | U | ";
}

Line logLine(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    Line line;
    if (!AppConfig::disableTimestamp)
        appendTime(line);
    append(line, levelTag(type));
    // Deliberate: without a function name neither text nor line end are written.
    if (context.function) {
        append(line, context.function);
        append(line, ": ");
        const QByteArray utf8 = text.toUtf8();
        line.append(utf8.constData(), utf8.size());
        line.append('\n');
    }
    return line;
}

void reportFatal(const QString &text)
{
    if (platform::showFatalReport("Olvex Fatal error", text.toLocal8Bit().constData()) != 0)
        AppConfig::exit(-1); // a request only: Qt aborts when the handler of a fatal message returns
}

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (AppConfig::logOutputFile.isOpen()) {
        const Line line = logLine(type, context, text);
        platform::append(AppConfig::logOutputFile.handle(), line.constData(), std::size_t(line.size()));
    }
    if (!AppConfig::nullOutput && AppConfig::oldMsgHandler)
        AppConfig::oldMsgHandler(type, context, text);
    if (type == QtFatalMsg)
        reportFatal(text);
}

// ---- category filter

// Whether the category is seen for the first time. Compares addresses only: an entry may be dangling.
bool registerCategory(QLoggingCategory *category)
{
    const std::lock_guard<std::mutex> guard(categoriesMutex);
    const auto &known = AppConfig::loggingCategories;
    if (std::find(known.cbegin(), known.cend(), category) != known.cend())
        return false;
    AppConfig::loggingCategories.insert(category->categoryName(), category);
    return true;
}

// Runs under a lock of Qt's category registry: it must neither log nor touch a category for the first time.
void filterCategory(QLoggingCategory *category)
{
    // On first sight only, so that the application can switch it on again; before and after, because Qt's own
    // filter sets every level of a category.
    const bool silence =
        registerCategory(category) && qstrcmp(category->categoryName(), "Olvex.NetworkControl.Qml") == 0;
    if (silence)
        category->setEnabled(QtDebugMsg, false);
    if (previousFilter)
        previousFilter(category);
    if (silence)
        category->setEnabled(QtDebugMsg, false);
}

} // namespace

void installLoggingFilter()
{
    const QLoggingCategory::CategoryFilter previous = QLoggingCategory::installFilter(&filterCategory);
    if (previous != &filterCategory)
        previousFilter = previous;
}

void forgetLoggingCategories()
{
    const std::lock_guard<std::mutex> guard(categoriesMutex);
    AppConfig::loggingCategories.clear();
}

void installLogHandler()
{
    const QtMessageHandler previous = qInstallMessageHandler(&handleMessage);
    if (previous != &handleMessage)
        AppConfig::oldMsgHandler = previous;
}

QLoggingCategory *AppConfig::loggingCategoriesFromIndex(qint32 index)
{
    const std::lock_guard<std::mutex> guard(categoriesMutex);
    if (index < 0 || index >= loggingCategories.size())
        return nullptr;
    return *std::next(loggingCategories.cbegin(), index);
}

// ---- function traces

qint32 DebugInfoEnterExit::debugLevel = -1;

DebugInfoEnterExit::DebugInfoEnterExit(const char *signature, qint32 level)
    : m_signature(signature), m_level(level)
{
    log("Enter");
}

DebugInfoEnterExit::~DebugInfoEnterExit()
{
    log("Exit");
}

void DebugInfoEnterExit::log(const char *event) const
{
    if (m_level <= debugLevel)
        qDebug("%s: %s", m_signature, event);
}
