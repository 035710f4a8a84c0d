#include "AppConfig.h"

#include "AppConfig_p.h"
#include "platform/Platform.h"

#include <QVarLengthArray>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <mutex>

Q_LOGGING_CATEGORY(appConfigCategory, "Olvex.AppConfig")

[[gnu::init_priority(101)]] QFile AppConfig::logOutputFile;
QtMessageHandler AppConfig::oldMsgHandler = nullptr;
bool AppConfig::nullOutput = true;
bool AppConfig::disableTimestamp = false;
bool AppConfig::disableCrashHandler = false;

namespace {

// Never destroyed: other objects may log in a new category after this library's statics are gone.
union Categories {
    Categories() : hash() { }
    ~Categories() { }
    QHash<const char *, QLoggingCategory *> hash;
};
[[gnu::init_priority(101)]] Categories categories; // clazy:exclude=non-pod-global-static

} // namespace

QHash<const char *, QLoggingCategory *> &AppConfig::loggingCategories = categories.hash;

namespace {

std::mutex categoriesMutex;
QLoggingCategory::CategoryFilter previousFilter = nullptr;

// What stood there before initialize() was called first. When it is called again under a handler or filter of
// the application, that gets each message and category from ours and may hand it on to ours again: then these
// are next.
QtMessageHandler firstHandler = nullptr;
QLoggingCategory::CategoryFilter firstFilter = nullptr;

// ---- log file lines

using Line = QVarLengthArray<char, 512>;

void append(Line &line, const char *text)
{
    line.append(text, int(std::strlen(text)));
}

void appendNumber(Line &line, int number, int digits)
{
    if (digits > 1)
        appendNumber(line, number / 10, digits - 1);
    line.append(char('0' + number % 10));
}

// "h:mm:ss.zzz", without the locale, whose first use by several threads at once can yield an empty text, and
// without printf(), which would take a fourth of the time of a line.
void appendTime(Line &line)
{
    const platform::TimeOfDay now = platform::localTimeOfDay();
    appendNumber(line, now.hour, now.hour < 10 ? 1 : 2);
    line.append(':');
    appendNumber(line, now.minute, 2);
    line.append(':');
    appendNumber(line, now.second, 2);
    line.append('.');
    appendNumber(line, now.millisecond, 3);
}

// In the order of QtMsgType; the last for what is none of them.
constexpr const char *levelTags[] = {" | D | ", " | W | ", " | C | ", " | F | ", " | I | ", " | U | "};

Line logLine(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    Line line;
    if (!AppConfig::disableTimestamp)
        appendTime(line);
    append(line, levelTags[std::min(unsigned(type), 5U)]);
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

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    static thread_local bool isForwarding = false;
    if (isForwarding) {
        firstHandler(type, context, text);
        return;
    }
    if (AppConfig::logOutputFile.isOpen()) {
        const Line line = logLine(type, context, text);
        platform::append(AppConfig::logOutputFile.handle(), line.constData(), std::size_t(line.size()));
    }
    if (!AppConfig::nullOutput && AppConfig::oldMsgHandler) {
        isForwarding = AppConfig::oldMsgHandler != firstHandler;
        AppConfig::oldMsgHandler(type, context, text);
        isForwarding = false;
    }
    if (type == QtFatalMsg
        && platform::showFatalReport("Olvex Fatal error", text.toLocal8Bit().constData()) != 0)
        AppConfig::exit(-1); // a request only: Qt aborts when the handler of a fatal message returns
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
    static thread_local bool isForwarding = false;
    if (isForwarding) {
        firstFilter(category);
        return;
    }
    // On first sight only, so that the application can switch it on again; before and after, because Qt's own
    // filter sets every level of a category.
    const bool silence =
        registerCategory(category) && qstrcmp(category->categoryName(), "Olvex.NetworkControl.Qml") == 0;
    if (silence)
        category->setEnabled(QtDebugMsg, false);
    isForwarding = true;
    if (previousFilter)
        previousFilter(category);
    isForwarding = false;
    if (silence)
        category->setEnabled(QtDebugMsg, false);
}

} // namespace

void installLoggingFilter()
{
    const QLoggingCategory::CategoryFilter previous = QLoggingCategory::installFilter(&filterCategory);
    if (previous == &filterCategory)
        return;
    if (!firstFilter)
        firstFilter = previous;
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
    if (previous == &handleMessage)
        return;
    if (!firstHandler)
        firstHandler = previous;
    AppConfig::oldMsgHandler = previous;
}

void removeLogHandler()
{
    if (!AppConfig::oldMsgHandler)
        return;
    qInstallMessageHandler(AppConfig::oldMsgHandler);
    AppConfig::oldMsgHandler = firstHandler; // the one installed now may still hand on to ours
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
    if (m_level <= debugLevel)
        qDebug("%s: Enter", m_signature);
}

DebugInfoEnterExit::~DebugInfoEnterExit()
{
    if (m_level <= debugLevel)
        qDebug("%s: Exit", m_signature);
}
