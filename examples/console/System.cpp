// What the process knows of itself: paths, settings, the log, and its window, whose properties InitProperties
// keeps in the settings file.

#include "ConsoleTypes.h"
#include "Examination.h"

#include <AppConfig.h>
#include <InitProperties.h>
#include <RunGuard.h>

#include <QLoggingCategory>

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
        const QString size = options->argumentValue(text("--size"), text("%1x%2").arg(m_width).arg(m_height));
        m_width = size.section(QLatin1Char('x'), 0, 0).toInt();
        m_height = size.section(QLatin1Char('x'), 1).toInt();
        m_dark = options->argumentValue(text("--theme"), text(m_dark ? "dark" : "")) == text("dark");
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

    // The doctor's report, as JSON.
    Q_INVOKABLE QString report() const { return QString::fromUtf8(examine().toJson()); }
    Q_INVOKABLE bool mayRunAgain() const { return RunGuard(QLatin1String(guardName)).tryToRun(); }
    Q_INVOKABLE bool isUnderLoad() const { return AppConfig::argumentExits(text("--load")); }
    Q_INVOKABLE QStringList categories() const { return categoriesByName().keys(); }

    // Levels are those of QtMsgType.
    Q_INVOKABLE bool isEnabled(const QString &name, int level) const
    {
        return find(name).isEnabled(QtMsgType(level));
    }
    Q_INVOKABLE void setEnabled(const QString &name, int level, bool enabled) const
    {
        find(name).setEnabled(QtMsgType(level), enabled);
    }

    // The last lines of the log file.
    Q_INVOKABLE QString logTail() const
    {
        QFile log(AppConfig::logOutputFile.fileName());
        if (!log.open(QIODevice::ReadOnly))
            return text("There is no log file: start with --logoutput FILE.");
        log.seek(qMax<qint64>(0, log.size() - 16384));
        return QString::fromUtf8(log.readAll()).trimmed();
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
