// What the code samples borrow from the application around them.
#include <AgeGroups.h>
#include <AppConfig.h>
#include <BLSService.h>
#include <ConnectivityChecker.h>
#include <CyanosisCalculator.h>
#include <ECGLibrary.h>
#include <FileSync.h>
#include <HXCommonQml.h>
#include <InitProperties.h>
#include <NetworkManager.h>
#include <NetworkReplyTimeout.h>
#include <OXUrls.h>
#include <OXVersion.h>
#include <PausingTimer.h>
#include <Product.h>
#include <RunGuard.h>
#include <communication/CrcCCITT.h>
#include <communication/LogicalLinkControl.h>

#include <QCoreApplication>
#include <QNetworkReply>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QTimer>

struct Session : QObject {
    void nextStep();
};

struct Screen : Session {
    void showStatus(ConnectivityChecker::ConnectivityStatus status);
    void show(const QString &text);
};

struct Label {
    void setText(const QString &text);
};

struct Port {
    void write(const std::vector<unsigned char> &frame);
};

struct Scene : Screen {
    void handle(const std::vector<unsigned char> &message);

    QQmlEngine qmlEngine, engine;
    QNetworkReply *reply;
    FileSync *job;
    QObject monitor;
    QString path;
    QUrl url;
    Label *label;
    HXAtomicLock m_lock;

    int threshold, saturation, upperOffset, lowerOffset, levelCount, heartRate, manikinType;
    bool isCyanosisEnabled;

    Communication::LogicalLinkControl link{64};
    Port port;
    std::vector<unsigned char> chunk, message;
    unsigned char commandId;
    int damagedFrames;
};
