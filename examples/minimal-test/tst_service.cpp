#include <AppConfig.h>
#include <ConnectivityChecker.h>
#include <OXUrls.h>

#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

class tst_service : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QDir::setCurrent(m_home.path())); // "./data/etc" and "./var" are there
        qputenv("APPDATA", m_home.path().toUtf8()); // and so are the settings
        QVERIFY(!AppConfig::instance()->initialize(QStringLiteral("tst_service"), QStringLiteral("1.0")));
    }

    void cleanupTestCase()
    {
        AppConfig::oldMsgHandler = nullptr; // that of Qt Test, which ends before AppConfig does
    }

    void readsSettings()
    {
        AppConfig::settings()->setValue(QStringLiteral("Player/Volume"), 7);
        QCOMPARE(AppConfig::testSetting("Player/Volume", 5).toInt(), 7);
        qApp->setProperty("Player/Volume", 3); // goes before the file
        QCOMPARE(AppConfig::testSetting("Player/Volume", 5).toInt(), 3);
    }

    void reachesService()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        connect(&server, &QTcpServer::newConnection, &server, [&server] {
            QTcpSocket *const socket = server.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, socket,
                    [socket] { socket->write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nup"); });
        });
        useService(QStringLiteral("http://127.0.0.1:%1").arg(server.serverPort()));

        ConnectivityChecker checker;
        checker.useOXUrl(QStringLiteral("account"), QStringLiteral("health"));
        checker.startCheck();
        QTRY_COMPARE(checker.status(), ConnectivityChecker::SUCCESS);

        qApp->setProperty("TestOffline", true); // every check fails, and none is sent
        checker.startCheck();
        QCOMPARE(checker.status(), ConnectivityChecker::FAILED);
        qApp->setProperty("TestOffline", false);
    }

private:
    static void useService(const QString &address)
    {
        QFile table(QStringLiteral("services.json"));
        QVERIFY(table.open(QIODevice::WriteOnly));
        const QString services =
            QStringLiteral(R"({"environment": {"production": {"account": {"baseUrl": "%1"}}}})");
        table.write(services.arg(address).toUtf8());
        table.close();
        OXUrls::instance()->initialize(table.fileName(), OXUrls::DefaultEnvironment, QString());
    }

    const QTemporaryDir m_home;
};

QTEST_GUILESS_MAIN(tst_service)
#include "tst_service.moc"
