#ifndef NETWORKMANAGER_H
#define NETWORKMANAGER_H

#include "HXCommonExport.h"

#include <QObject>

class QHttpMultiPart;
class QIODevice;
class QNetworkAccessManager;
class QNetworkConfigurationManager;
class QNetworkReply;
class QNetworkRequest;

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED

/**
 * The process-wide home of HTTP traffic: it owns the one QNetworkAccessManager, through which all requests
 * go, and the QNetworkConfigurationManager, which watches the on-line state.
 *
 * @code
 * QNetworkReply *const reply = NetworkManager::httpGet(QNetworkRequest(url));
 * NetworkReplyTimeout::set(reply, 10000);
 * connect(reply, &QNetworkReply::finished, this, [this, reply] {
 *     show(reply->error() == QNetworkReply::NoError ? QString::fromUtf8(reply->readAll())
 *                                                   : reply->errorString());
 *     reply->deleteLater();
 * });
 * @endcode
 *
 * The request functions pass the request on unchanged: no header, attribute, SSL setting or time-out is
 * added. Failures show on the reply, which the caller owns and hands to deleteLater() once it has finished.
 * A body given as a device or as a multi-part message must live until then.
 *
 * AppConfig::initialize() calls initialize(). A request before that logs a warning and returns null.
 *
 * Log category: "Olvex.NetworkManager", threshold info. To be used on the application's main thread only.
 */
class HXCOMMON_EXPORT NetworkManager : public QObject {
    Q_OBJECT

public:
    /**
     * The manager; never null. Its parent is the application object; it is deleted with that or at process
     * exit. If it was deleted before, a new one is made, which needs initialize() again.
     *
     * Every call connects `destroyed` once more; OXUrls::instance() says what that costs. Requests do not.
     */
    static NetworkManager *instance();

    /// The same as instance().
    static NetworkManager *Instance() { return instance(); }

    /// Makes the two managers and starts a first scan of the network configurations. Called again, it keeps
    /// the managers, to which running requests belong, and scans only.
    void initialize();

    /// Sends a GET request.
    static QNetworkReply *httpGet(const QNetworkRequest &request);
    /// Sends a POST request with what can be read from @p body.
    static QNetworkReply *httpPost(const QNetworkRequest &request, QIODevice *body);
    /// Sends a POST request with the bytes @p body.
    static QNetworkReply *httpPost(const QNetworkRequest &request, const QByteArray &body);
    /// Sends a POST request with the message @p body.
    static QNetworkReply *httpPost(const QNetworkRequest &request, QHttpMultiPart *body);
    /// Sends a PUT request with what can be read from @p body.
    static QNetworkReply *httpPut(const QNetworkRequest &request, QIODevice *body);
    /// Sends a PUT request with the bytes @p body.
    static QNetworkReply *httpPut(const QNetworkRequest &request, const QByteArray &body);
    /// Sends a PUT request with the message @p body.
    static QNetworkReply *httpPut(const QNetworkRequest &request, QHttpMultiPart *body);

    /// Asks everybody concerned to test connectivity again: emits checkConnectivity().
    void startCheckConnectivity();

    /// Starts a scan of the network configurations, then calls startCheckConnectivity().
    static void updateConfigurations();

    /// The access manager, a child of this object; null before initialize().
    QNetworkAccessManager *accessManager() const { return m_accessManager; }

    /// The configuration manager, a child of this object; null before initialize(). Qt 5.15 marks its class
    /// as deprecated.
    QNetworkConfigurationManager *configurationManager() const { return m_configurationManager; }

Q_SIGNALS:
    void checkConnectivity(); ///< Connectivity is to be tested again.

private:
    explicit NetworkManager(QObject *parent);

    QNetworkAccessManager *m_accessManager = nullptr;
    QNetworkConfigurationManager *m_configurationManager = nullptr;
};

QT_WARNING_POP

#endif
