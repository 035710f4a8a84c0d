#include <OXUrls.h>

#include "Cases.h"
#include "ScriptStage.h"

#include <QTemporaryDir>

#ifdef Q_OS_UNIX
#    include <sys/resource.h>
#endif

// What the scripts can do.
class Stage : public ScriptStage {
    Q_OBJECT

public:
    Stage()
    {
        QFile::copy(QFINDTESTDATA("data/OlvexUrls.json"), path(text("urls.json")));
        show("urls", OXUrls::instance());
        const QUrlQuery mine(text("mine=1"));
        engine.globalObject().setProperty(
            text("mine"), engine.toScriptValue(QVariant(QMetaType::type("QUrlQuery"), &mine)));
    }

    Q_INVOKABLE void load(const QString &file, const QString &environment, const QString &region)
    {
        OXUrls::instance()->initialize(path(file), environment, region);
    }
    Q_INVOKABLE void store(const QString &json) { QVERIFY(!OXUrls::instance()->storeUrls(json.toLatin1())); }
    Q_INVOKABLE void write(const QString &file, const QString &latin1)
    {
        QVERIFY(::write(path(file), latin1.toLatin1()));
    }
    Q_INVOKABLE QString contents(const QString &file) const
    {
        return QFile::exists(path(file)) ? text(::contents(path(file))) : text("missing");
    }
#ifdef Q_OS_UNIX
    Q_INVOKABLE void limitOpenFiles(int number)
    {
        rlimit limit;
        QCOMPARE(getrlimit(RLIMIT_NOFILE, &limit), 0);
        limit.rlim_cur = rlim_t(number);
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &limit), 0);
    }
#endif
    Q_INVOKABLE QVariant regionsValue(const QString &target, const QString &key) const
    {
        return OXUrls::instance()->regionsValue(target, key);
    }
    Q_INVOKABLE void changeSettings(const QVariant &environment, const QVariant &region)
    {
        OXUrls::setEnvironmentSetting(text("any key"), environment);
        OXUrls::setRegionSetting(text("any key"), region);
    }

private:
    QString path(const QString &file) const
    {
        return m_directory.filePath(file);
    }

    QTemporaryDir m_directory;
};

class tst_OXUrls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { delete OXUrls::instance(); }

    // Also if that is asked for while the first one is being destroyed, whose connections it must survive.
    void hasASuccessor()
    {
        OXUrls *const first = OXUrls::instance();
        QVERIFY(!first->parent());
        first->setRegion(text("eu"));
        OXUrls *successor = nullptr;
        connect(first, &QObject::destroyed, this, [&successor] { successor = OXUrls::instance(); });
        const auto connections = [first] {
            return (first->*&tst_OXUrls::receivers)(SIGNAL(destroyed(QObject *)));
        };
        const int before = connections();
        OXUrls::Instance();
        OXUrls::url(text("account"));
        QCOMPARE(connections(), before + 2);
        delete first;
        QVERIFY(successor);
        QCOMPARE(OXUrls::instance(), successor);
        QCOMPARE(successor->environment() + successor->region(), text("productionus"));
        QCOMPARE(OXUrls::url(text("account"), text("api")), QUrl(text("/api"))); // it is empty
    }

    void plays_data()
    {
        ScriptStage::addScripts(QFINDTESTDATA("data/urls.txt"));
#ifdef Q_OS_UNIX
        ScriptStage::addScripts(QFINDTESTDATA("data/urls-posix.txt"));
#endif
    }
    void plays()
    {
        QFETCH(QString, script);
        QFETCH(QString, journal);
        QCOMPARE(Stage().play(script), journal);
    }
};

QTEST_GUILESS_MAIN(tst_OXUrls)
#include "tst_OXUrls.moc"
