// What the process knows of itself: paths, settings, the log, and its window, whose properties InitProperties
// keeps in the settings file.

#include "ConsoleTypes.h"
#include "Examination.h"

#include <AppConfig.h>
#include <InitProperties.h>
#include <RunGuard.h>

#include <QFontDatabase>
#include <QFontInfo>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <QRegularExpression>

#include <algorithm>

static const QSize smallest(1024, 600);
static const QSize largest(7680, 4320);

QSize windowSize(const QString &words)
{
    static const QRegularExpression form(text("^(\\d{1,5})x(\\d{1,5})$"));
    const QRegularExpressionMatch match = form.match(words);
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    return match.hasMatch() && size == size.expandedTo(smallest).boundedTo(largest) ? size : QSize();
}

namespace {

// The categories that exist now, by name. Qt's own are left out.
QMap<QString, QLoggingCategory *> categoriesByName()
{
    QMap<QString, QLoggingCategory *> categories;
    for (int i = 0; QLoggingCategory *const category = AppConfig::loggingCategoriesFromIndex(i); ++i) {
        if (qstrncmp(category->categoryName(), "qt.", 3) != 0)
            categories.insert(text(category->categoryName()), category);
    }
    return categories;
}

QLoggingCategory &find(const QString &name)
{
    return *categoriesByName().value(name, QLoggingCategory::defaultCategory());
}

// What the library says of a category in the file that it installs for log viewers.
QString description(const QString &category)
{
    QFile file(text(":/console/hxcommon.categories"));
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    const QRegularExpression line(text("^%1 .*\\((.*)\\)").arg(QRegularExpression::escape(category)),
                                  QRegularExpression::MultilineOption);
    return line.match(QString::fromUtf8(file.readAll())).captured(1);
}

} // namespace

class System : public QObject {
    Q_OBJECT
    // InitProperties stores these.
    Q_PROPERTY(int width MEMBER m_width NOTIFY windowChanged)
    Q_PROPERTY(int height MEMBER m_height NOTIFY windowChanged)
    Q_PROPERTY(int page MEMBER m_page NOTIFY windowChanged)
    Q_PROPERTY(bool dark MEMBER m_dark NOTIFY windowChanged)

public:
    // Options of the command line win over what is stored.
    System()
    {
        InitProperties::read(this, AppConfig::settingIniPath(false), text("Window"));
        const AppConfig *const options = AppConfig::instance();
        const QSize asked = windowSize(options->argumentValue(text("--size"), QString()));
        const QSize size = asked.isValid() ? asked : QSize(m_width, m_height);
        m_width = qBound(smallest.width(), size.width(), largest.width());
        m_height = qBound(smallest.height(), size.height(), largest.height());
        m_dark = options->argumentValue(text("--theme"), text(m_dark ? "dark" : "light")) == text("dark");
    }

    ~System() override { storeWindow(); }

    Q_INVOKABLE void storeWindow() const
    {
        InitProperties::write(this, AppConfig::settingIniPath(false), text("Window"));
    }

    Q_INVOKABLE QString setting(const QString &key) const
    {
        return InitProperties::readSettingsLine(AppConfig::settingIniPath(false), key, text("-"));
    }

    Q_INVOKABLE static QSize smallestSize() { return smallest; } // that the pages have room in

    Q_INVOKABLE static QString fixedFont()
    {
        const QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        return QFontInfo(font).fixedPitch() ? font.family() : text("monospace");
    }

    // The doctor's report, as JSON.
    Q_INVOKABLE QString report() const
    {
        return QString::fromUtf8(QJsonDocument(examine(QString(), QString()).toJson()).toJson());
    }
    Q_INVOKABLE bool mayRunAgain() const { return RunGuard(QLatin1String(guardName)).tryToRun(); }
    Q_INVOKABLE bool isUnderLoad() const { return AppConfig::argumentExits(text("--load")); }

    // Maps {name, description}.
    Q_INVOKABLE QVariantList categories() const
    {
        QVariantList list;
        const QStringList names = categoriesByName().keys();
        for (const QString &name : names)
            list << QVariantMap{{text("name"), name}, {text("description"), description(name)}};
        return list;
    }

    // Levels are those of QtMsgType.
    Q_INVOKABLE bool isEnabled(const QString &name, int level) const
    {
        return find(name).isEnabled(QtMsgType(level));
    }
    Q_INVOKABLE void setEnabled(const QString &name, int level, bool enabled) const
    {
        find(name).setEnabled(QtMsgType(level), enabled);
    }

    // The last lines of the log file, the latest first.
    Q_INVOKABLE QStringList logTail() const
    {
        const QString name = AppConfig::logOutputFile.fileName(); // on Windows an open file has lost it
        const QString path =
            name.isEmpty() ? AppConfig::instance()->argumentValue(text("--logoutput"), QString()) : name;
        QFile log(path);
        if (path.isEmpty() || !log.open(QIODevice::ReadOnly))
            return {tr("There is no log file: start with --logoutput FILE.")};
        if (log.seek(qMax<qint64>(0, log.size() - 65536)) && log.pos() > 0)
            log.readLine(); // of which the beginning is missing
        QStringList lines = QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        std::reverse(lines.begin(), lines.end());
        return lines;
    }

Q_SIGNALS:
    void windowChanged();

private:
    int m_width = 1280;
    int m_height = 800;
    int m_page = 0;
    bool m_dark = true;
};

void registerSystem()
{
    registerModel<System>("System");
}

#include "System.moc"
