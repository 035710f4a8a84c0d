#include "ConnectivityChecker.h"

#include "NetworkManager.h"
#include "NetworkReplyTimeout.h"
#include "OXUrls.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QMetaEnum>
#include <QNetworkConfigurationManager>
#include <QNetworkReply>
#include <QRandomGenerator>
#include <QTimer>

// Qt 5.15 deprecates the network-configuration classes in favour of Qt 6, which this library does not use.
QT_WARNING_DISABLE_DEPRECATED

namespace {

Q_LOGGING_CATEGORY(category, "Olvex.ConnectivityChecker", QtInfoMsg)

constexpr int firstDelay = 1000; // ms, after a change; also the least delay of a drawn one
constexpr int jitter = 1000; // ms
constexpr int offlineDelay = 10000; // ms
constexpr int maxBody = 1 << 20; // bytes

bool testOffline()
{
    const QCoreApplication *const application = QCoreApplication::instance();
    return application && application->property("TestOffline").toBool();
}

template <typename Enum> const char *nameOf(Enum value)
{
    return QMetaEnum::fromType<Enum>().valueToKey(value);
}

void readBody(QNetworkReply *reply, QByteArray *body)
{
    body->append(reply->read(maxBody - body->size()));
    reply->skip(reply->bytesAvailable());
}

} // namespace

ConnectivityChecker::ConnectivityChecker(QObject *parent) : QObject(parent), m_scheduleTimer(new QTimer(this))
{
    // Signals name the short form; spies and queued connections look it up.
    qRegisterMetaType<ConnectivityStatus>("ConnectivityStatus");
    qRegisterMetaType<ConnectivityStatus>("ConnectivityChecker::ConnectivityStatus");
    qRegisterMetaType<QNetworkAccessManager::NetworkAccessibility>();

    m_scheduleTimer->setSingleShot(true);
    m_scheduleTimer->setTimerType(Qt::PreciseTimer); // coarse ones would gather the spread checks again
    m_scheduleTimer->setInterval(firstDelay);
    connect(m_scheduleTimer, &QTimer::timeout, this, &ConnectivityChecker::startCheck);

    const NetworkManager *const network = NetworkManager::instance();
    connect(network->accessManager(), &QNetworkAccessManager::networkAccessibleChanged, this,
            &ConnectivityChecker::networkAccessibleChanged);
    connect(network->configurationManager(), &QNetworkConfigurationManager::onlineStateChanged, this,
            &ConnectivityChecker::checkConnectivity);
    connect(network, &NetworkManager::checkConnectivity, this, &ConnectivityChecker::checkConnectivity);

    const OXUrls *const urls = OXUrls::instance();
    connect(urls, &OXUrls::environmentChanged, this, &ConnectivityChecker::onOXUrlsEnvironmentChanged);
    connect(urls, &OXUrls::regionChanged, this, &ConnectivityChecker::onOXUrlsRegionChanged);
}

ConnectivityChecker::~ConnectivityChecker()
{
    qCDebug(category) << "destroyed" << m_url;
}

ConnectivityChecker::ConnectivityStatus ConnectivityChecker::status() const
{
    return testOffline() ? FAILED : m_status;
}

void ConnectivityChecker::setUrl(const QUrl &url)
{
    qCDebug(category) << "url" << url;
    if (m_url == url)
        return;
    m_url = url;
    Q_EMIT urlChanged(url);
}

void ConnectivityChecker::useOXUrl(const QString &key, const QString &path)
{
    qCInfo(category) << "OXUrlKey:" << key << "Path:" << path;
    m_urlKey = key;
    m_path = path;
    setUrl(OXUrls::url(key, path, false, QUrlQuery()));
}

void ConnectivityChecker::setTimeout(int timeout)
{
    qCDebug(category) << "timeout" << timeout;
    if (m_timeout == timeout)
        return;
    m_timeout = timeout;
    Q_EMIT timeoutChanged(timeout);
}

void ConnectivityChecker::setScheduleTimeout(int a_Timeout)
{
    qCDebug(category) << "timeout:" << a_Timeout;
    if (m_scheduleTimeout == a_Timeout)
        return;
    m_scheduleTimeout = a_Timeout;
    Q_EMIT scheduleTimeoutChanged(a_Timeout);
}

void ConnectivityChecker::scheduleCheck(int a_Timeout)
{
    qCDebug(category) << "timeout:" << a_Timeout;
    m_scheduleTimer->start(qMax(0, a_Timeout));
}

void ConnectivityChecker::checkConnectivity()
{
    const int delay = firstDelay + QRandomGenerator::global()->bounded(jitter);
    qCDebug(category) << "timeout:" << delay;
    scheduleCheck(delay);
}

void ConnectivityChecker::startCheck()
{
    qCDebug(category) << "Start check...";
    if (m_pendingReply) {
        qCInfo(category) << "pending reply:" << m_pendingReply->url();
        return;
    }
    if (testOffline()) {
        setStatus(FAILED);
        return;
    }

    qCDebug(category) << "check connectivity to:" << m_url;
    m_pendingReply = NetworkManager::httpGet(QNetworkRequest(m_url));
    m_body = std::make_shared<QByteArray>();
    if (m_pendingReply) {
        // The reply's own, because it may outlive the checker.
        connect(m_pendingReply, &QNetworkReply::finished, m_pendingReply, &QObject::deleteLater);
        connect(m_pendingReply, &QNetworkReply::readyRead, m_pendingReply,
                [reply = m_pendingReply.data(), body = m_body] { readBody(reply, body.get()); });
    }
    if (!m_pendingReply || m_pendingReply->error() != QNetworkReply::NoError) {
        checkFinished();
        return;
    }

    connect(m_pendingReply, &QNetworkReply::finished, this, &ConnectivityChecker::checkFinished);
    NetworkReplyTimeout::set(m_pendingReply, m_timeout);
    // Deliberate: from UNKNOWN and SUCCESS the status stays as it is while the probe runs.
    if (m_status == FAILED)
        setStatus(CONNECTING);
}

void ConnectivityChecker::checkFinished()
{
    const QPointer<ConnectivityChecker> self(this); // slots may delete it
    const QPointer<QNetworkReply> reply = m_pendingReply;
    const bool succeeded = !testOffline() && reply && reply->error() == QNetworkReply::NoError;
    if (succeeded) {
        readBody(reply, m_body.get());
        m_payload = *m_body;
        qCInfo(category) << "check connectivity: success for" << m_url << "payload" << m_payload;
    } else if (m_lastCheckSucceeded) {
        m_lastCheckSucceeded = false;
        qCInfo(category) << "check connectivity: error for" << m_url
                         << "error:" << (reply ? reply->errorString() : QStringLiteral("no reply"));
    }

    setStatus(succeeded ? SUCCESS : FAILED);
    if (!self)
        return;
    m_lastCheckSucceeded = succeeded;
    if (reply && m_pendingReply == reply) {
        reply->disconnect(this); // it may still run
        reply->deleteLater();
        m_pendingReply.clear();
    }
}

void ConnectivityChecker::setStatus(ConnectivityStatus status)
{
    const QPointer<ConnectivityChecker> self(this); // slots may delete it
    qCDebug(category) << "status:" << nameOf(status);
    Q_EMIT statusReceived(status);
    if (self && m_status != status) {
        m_status = status;
        Q_EMIT statusChanged(status);
    }
    if (!self || (m_status != FAILED && m_status != SUCCESS))
        return;
    if (m_scheduleTimeout >= 1)
        scheduleCheck(m_scheduleTimeout);
    else if (testOffline())
        scheduleCheck(offlineDelay);
}

void ConnectivityChecker::networkAccessibleChanged(QNetworkAccessManager::NetworkAccessibility accessible)
{
    qCDebug(category) << "networkAccessibleChanged" << nameOf(accessible);
    if (accessible != QNetworkAccessManager::NotAccessible)
        return;
    if (m_lastCheckSucceeded) {
        m_lastCheckSucceeded = false;
        qCInfo(category) << "Network not accessible, unable to access:" << m_url;
    }
    setStatus(FAILED);
}

void ConnectivityChecker::onOXUrlsEnvironmentChanged(QString environment)
{
    qCInfo(category) << "environment:" << environment;
    followRegistry();
}

void ConnectivityChecker::onOXUrlsRegionChanged(QString region)
{
    qCInfo(category) << "region:" << region;
    followRegistry();
}

void ConnectivityChecker::followRegistry()
{
    if (m_urlKey.isEmpty())
        return;
    const QPointer<ConnectivityChecker> self(this); // slots may delete it
    useOXUrl(m_urlKey, m_path);
    if (self)
        scheduleCheck(firstDelay);
}

#include "moc_ConnectivityChecker.cpp" // NOLINT(bugprone-suspicious-include): silences its deprecations
