#include "NetworkManager.h"

#include "Singleton.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QNetworkConfigurationManager>
#include <QNetworkRequest>
#include <QPointer>

// Qt 5.15 deprecates the network-configuration classes in favour of Qt 6, which this library does not use.
QT_WARNING_DISABLE_DEPRECATED

namespace {

Q_LOGGING_CATEGORY(category, "Olvex.NetworkManager", QtInfoMsg)

// instance() keeps a connection for each call.
[[gnu::init_priority(101)]] QPointer<NetworkManager> current; // clazy:exclude=non-pod-global-static

template <typename... Body>
using Method = QNetworkReply *(QNetworkAccessManager::*)(const QNetworkRequest &, Body...);

template <typename... Body>
QNetworkReply *send(Method<Body...> method, const QNetworkRequest &request, Body... body)
{
    QNetworkAccessManager *const manager = current ? current->accessManager() : nullptr;
    if (!manager) {
        qCWarning(category) << "Request before initialize:" << request.url();
        return nullptr;
    }
    return (manager->*method)(request, body...);
}

} // namespace

NetworkManager::NetworkManager(QObject *parent) : QObject(parent)
{
    current = this;
}

NetworkManager *NetworkManager::instance()
{
    return singleton<NetworkManager>([] { return new NetworkManager(QCoreApplication::instance()); });
}

void NetworkManager::initialize()
{
    qCInfo(category) << __func__;
    if (!m_accessManager) {
        m_accessManager = new QNetworkAccessManager(this);
        m_configurationManager = new QNetworkConfigurationManager(this);
    }
    m_configurationManager->updateConfigurations();
}

QNetworkReply *NetworkManager::httpGet(const QNetworkRequest &request)
{
    qCDebug(category) << "url:" << request.url();
    return send(&QNetworkAccessManager::get, request);
}

QNetworkReply *NetworkManager::httpPost(const QNetworkRequest &request, QIODevice *body)
{
    qCDebug(category) << "url:" << request.url();
    return send<QIODevice *>(&QNetworkAccessManager::post, request, body);
}

QNetworkReply *NetworkManager::httpPost(const QNetworkRequest &request, const QByteArray &body)
{
    qCDebug(category) << "url:" << request.url();
    return send<const QByteArray &>(&QNetworkAccessManager::post, request, body);
}

QNetworkReply *NetworkManager::httpPost(const QNetworkRequest &request, QHttpMultiPart *body)
{
    qCDebug(category) << "url:" << request.url();
    return send<QHttpMultiPart *>(&QNetworkAccessManager::post, request, body);
}

QNetworkReply *NetworkManager::httpPut(const QNetworkRequest &request, QIODevice *body)
{
    qCDebug(category) << "url:" << request.url();
    return send<QIODevice *>(&QNetworkAccessManager::put, request, body);
}

QNetworkReply *NetworkManager::httpPut(const QNetworkRequest &request, const QByteArray &body)
{
    qCDebug(category) << "url:" << request.url();
    return send<const QByteArray &>(&QNetworkAccessManager::put, request, body);
}

QNetworkReply *NetworkManager::httpPut(const QNetworkRequest &request, QHttpMultiPart *body)
{
    // Deliberate: this one is logged at info level, without the URL.
    qCInfo(category) << __func__;
    return send<QHttpMultiPart *>(&QNetworkAccessManager::put, request, body);
}

void NetworkManager::startCheckConnectivity()
{
    qCDebug(category) << __func__;
    Q_EMIT checkConnectivity();
}

void NetworkManager::updateConfigurations()
{
    qCDebug(category) << __func__;
    NetworkManager *const self = instance();
    if (self->m_configurationManager)
        self->m_configurationManager->updateConfigurations();
    self->startCheckConnectivity();
}
