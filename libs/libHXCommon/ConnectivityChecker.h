#ifndef CONNECTIVITYCHECKER_H
#define CONNECTIVITYCHECKER_H

#include "HXCommonExport.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QUrl>

#include <memory>

class QNetworkReply;
class QTimer;

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED

/**
 * Tells whether one online service can be reached, by fetching a probe URL.
 *
 * @code
 * auto *const checker = new ConnectivityChecker(this);
 * connect(checker, &ConnectivityChecker::statusChanged, this, &Screen::showStatus);
 * checker->setScheduleTimeout(30000);                                        // and again every 30 s
 * checker->useOXUrl(QStringLiteral("account"), QStringLiteral("v1/health")); // follows the registry
 * checker->startCheck();
 * @endcode
 *
 * A check is one GET through NetworkManager, limited by NetworkReplyTimeout. One probe is in flight at most.
 * It succeeds when the request completes without a network error; the body is not examined. Qt counts every
 * answer with an HTTP status of 400 or above as a network error, hence FAILED; a redirect, which is not
 * followed, is SUCCESS.
 *
 * Checks start on demand, and by themselves:
 * - 1000 to 1999 ms, drawn anew each time, after NetworkManager::checkConnectivity() and after a change of
 *   the platform's on-line state, so that many checkers spread their probes;
 * - 1000 ms after a change of the environment or region in OXUrls, if the URL came from useOXUrl();
 * - scheduleTimeout ms after a check has ended.
 * A new appointment replaces the one that was made before. One that falls due while a probe is in flight is
 * dropped: after a change of the registry the answer for the old URL then stands until the next check. Set
 * scheduleTimeout, so that there is one. Loss of the network, as far as the platform
 * reports it, sets FAILED without a check.
 *
 * While the application object's dynamic property "TestOffline" is true, the service counts as unreachable:
 * status() is FAILED, no request is sent, and checks repeat every 10000 ms if scheduleTimeout is below 1.
 * Setting the property emits no signal; bindings follow at the next check.
 *
 * The first 1 MiB of the body of a successful probe is kept and logged, and the rest is skipped as it
 * arrives; so probe a small resource. A compressed body is unpacked by Qt before that, in memory: all that
 * has arrived at once, to about a thousand times its size at worst.
 *
 * Do not rely on the platform's word alone. Qt 5.15 polls the interfaces, so a change is heard up to 10 s
 * late, and a network that is missing from the start is never announced; requests are sent all the same. A
 * check is what tells.
 *
 * NetworkManager::initialize() must have run before a checker is made. A checker may be deleted at any
 * time, also in a slot of its own signals; a probe in flight then ends by itself. Log category:
 * "Olvex.ConnectivityChecker", threshold info. To be used on the application's main thread only.
 */
class HXCOMMON_EXPORT ConnectivityChecker : public QObject {
    Q_OBJECT
    /// Whether the service can be reached, as far as the last check tells.
    Q_PROPERTY(ConnectivityStatus status READ status NOTIFY statusChanged)
    /// The probe URL; useOXUrl() sets it, too.
    Q_PROPERTY(QUrl url READ url WRITE setUrl NOTIFY urlChanged)
    /// Time limit of one probe in milliseconds.
    Q_PROPERTY(int timeout READ timeout WRITE setTimeout NOTIFY timeoutChanged)
    /// Milliseconds from the end of a check to the next one; below 1 for none.
    Q_PROPERTY(
        int scheduleTimeout READ scheduleTimeout WRITE setScheduleTimeout NOTIFY scheduleTimeoutChanged)

public:
    /// Registered with the meta-type system, with and without the name of the class in front.
    enum ConnectivityStatus {
        UNKNOWN = 0, ///< No check has completed yet.
        CONNECTING = 1, ///< A check is running after a failure.
        FAILED = 2, ///< The last check failed, or the network is not accessible.
        SUCCESS = 3 ///< The last check succeeded.
    };
    Q_ENUM(ConnectivityStatus)

    /// A checker that waits; no check is started.
    explicit ConnectivityChecker(QObject *parent = nullptr);

    /// A probe in flight is not aborted.
    ~ConnectivityChecker() override;

    /// The last status set; FAILED while "TestOffline" is true.
    ConnectivityStatus status() const;

    /// The probe URL; initially empty.
    QUrl url() const { return m_url; }
    void setUrl(const QUrl &url); ///< Takes effect at the next check.

    /// Probes @p path below the base address of the target @p key in OXUrls, without its "urlQuery" items,
    /// and follows changes of the environment and the region.
    void useOXUrl(const QString &key, const QString &path);

    /// Time limit of one probe in milliseconds; initially 10000.
    int timeout() const { return m_timeout; }
    void setTimeout(int timeout); ///< Takes effect at the next check; a negative number counts as 0.

    /// Milliseconds from the end of a check to the next one; below 1, which it is initially, for none.
    int scheduleTimeout() const { return m_scheduleTimeout; }

    /// Enters the outcome of a check; for the checker itself. FAILED and SUCCESS make the next appointment.
    void setStatus(ConnectivityStatus status);

Q_SIGNALS:
    // The signatures are interface and stay unqualified; the type is registered under this name, too.
    /// The stored status has become @p a_NewState.
    void statusChanged(ConnectivityStatus a_NewState); // clazy:exclude=fully-qualified-moc-types
    /// @p a_NewState was set, be it new or the same again; status() is still the earlier one.
    void statusReceived(ConnectivityStatus a_NewState); // clazy:exclude=fully-qualified-moc-types
    void urlChanged(QUrl a_NewUrl); ///< The probe URL has become @p a_NewUrl.
    void timeoutChanged(int a_NewTimeout); ///< The time limit has become @p a_NewTimeout ms.
    void scheduleTimeoutChanged(int scheduleTimeout); ///< The pause between checks has become this many ms.

public Q_SLOTS:
    /// Sends a probe now, unless one is in flight.
    void startCheck();

    /// Makes an appointment for a check in @p a_Timeout ms, instead of an earlier one; a negative number
    /// counts as 0.
    void scheduleCheck(int a_Timeout = 1000);

    /// Sets scheduleTimeout, from the end of the next check on. The default here differs from the initial
    /// value.
    void setScheduleTimeout(int a_Timeout = 10000);

    /// Makes an appointment for a check in 1000 to 1999 ms.
    void checkConnectivity();

private Q_SLOTS:
    void checkFinished();
    void networkAccessibleChanged(QNetworkAccessManager::NetworkAccessibility accessible);
    void onOXUrlsEnvironmentChanged(QString environment);
    void onOXUrlsRegionChanged(QString region);

private:
    void followRegistry();

    ConnectivityStatus m_status = UNKNOWN;
    QPointer<QNetworkReply> m_pendingReply;
    QTimer *m_scheduleTimer;
    QUrl m_url;
    QString m_urlKey;
    QString m_path;
    QByteArray m_payload;
    std::shared_ptr<QByteArray> m_body; // of the probe in flight
    int m_timeout = 10000;
    bool m_lastCheckSucceeded = false;
    int m_scheduleTimeout = -1;
};

QT_WARNING_POP

#endif
