#ifndef OXURLS_H
#define OXURLS_H

#include "HXCommonExport.h"

#include <QHash>
#include <QObject>
#include <QUrl>
#include <QUrlQuery>
#include <QVariant>

/**
 * The process-wide registry of the addresses of the online services.
 *
 * The addresses come from a JSON document, "OlvexUrls.json" in the configuration directory. Two selectors,
 * the environment (which deployment) and the region, pick the entry in force; callers ask for a service by
 * its target name. AppConfig::initialize() loads the document and sets the selectors from the settings
 * "System/Environment" and "System/Region". A missing setting is an empty text: every look-up then falls back
 * to DefaultEnvironment, and there is no region.
 *
 * @code
 * const QUrl login = OXUrls::url(QStringLiteral("account"), QStringLiteral("v1/login"), true);
 * OXUrls *const urls = OXUrls::instance();
 * const int limit = urls->dataValue(QStringLiteral("account"), QStringLiteral("limit")).toInt();
 * @endcode
 *
 * The document; all keys are case-sensitive, and further keys are carried along for urlInfo():
 *
 * @code{.json}
 * { "environment": {
 *     "production": {
 *       "account": {
 *         "baseUrl": "https://account.example.com/api",
 *         "urlQuery": { "client": "tablet" },
 *         "data": { "limit": 20 },
 *         "regions": { "eu": { "baseUrl": "https://account.eu.example.com/api", "data": { "limit": 10 } } }
 *       } } } }
 * @endcode
 *
 * A region may override "baseUrl" and "data", which replaces the entry's "data" as a whole; "urlQuery" is
 * read from the entry only, never from a region.
 *
 * No look-up fails: an environment that is unknown, or that lacks the target, falls back to
 * DefaultEnvironment; whatever is still missing reads as an empty map, an invalid variant or an empty URL. A
 * JSON null or an empty object counts as present and does not fall back. Before initialize() everything is
 * empty.
 *
 * Log category: "Olvex.OXExternalServers", threshold warning. To be used on the application's main thread
 * only; the very first instance() may be called by any thread.
 */
class HXCOMMON_EXPORT OXUrls : public QObject {
    Q_OBJECT
    /// Name of the environment in force.
    Q_PROPERTY(QString environment READ environment WRITE setEnvironment NOTIFY environmentChanged)
    /// Name of the region in force; empty for none.
    Q_PROPERTY(QString region READ region WRITE setRegion NOTIFY regionChanged)

public:
    /// The initial environment, and the fallback of every look-up: "production".
    static const QString DefaultEnvironment;

    /**
     * The registry; never null. It has no parent and is deleted at process exit; if somebody deleted it
     * before, a new, empty one is made.
     *
     * Every call, and with it every url(), connects `destroyed` once more. That adds about 45 ns and 128
     * bytes, which come back when the registry is deleted (bm_online, 64-bit x86): a million calls hold
     * 128 MB. Keep the pointer where many calls are made.
     */
    static OXUrls *instance();

    /// The same as instance().
    static OXUrls *Instance() { return instance(); }

    /**
     * Takes over the selectors, without a change signal, and loads the document.
     *
     * A file that cannot be opened is reported by the warning "unable to load external urls:", and the
     * earlier document stays. A document that is not valid JSON, or is nested deeper than 1024 levels, is
     * reported by the warning "Url json invalid", and the registry is empty afterwards.
     * @param filePath path of the JSON document
     * @param environment name of the environment in force; may be empty
     * @param region name of the region in force; empty for none
     */
    void initialize(const QString &filePath, const QString &environment, const QString &region);

    /// Name of the environment in force; initially DefaultEnvironment.
    QString environment() const { return m_environment; }
    void setEnvironment(const QString &environment); ///< Emits environmentChanged() on a change.

    /// Name of the region in force, empty for none; initially "us".
    QString region() const { return m_region; }
    void setRegion(const QString &region); ///< Emits regionChanged() on a change.

    /// Settings-change handler for "System/Environment": setEnvironment() with @p value; @p key is not used.
    static void setEnvironmentSetting(const QString &key, const QVariant &value);
    /// Settings-change handler for "System/Region": setRegion() with @p value; @p key is not used.
    static void setRegionSetting(const QString &key, const QVariant &value);

    /// The value of @p key for @p target in the region in force; invalid without a region or a value there.
    QVariant regionsValue(const QString &target, const QString &key) const;

    /// The base address of @p target in the region in force, else the entry's own.
    Q_INVOKABLE QUrl baseUrl(const QString &target) const;

    /// The value of @p key in the "data" of @p target in the region in force; only a region without "data"
    /// leaves it to the entry's own.
    Q_INVOKABLE QVariant dataValue(const QString &target, const QString &key) const;

    /// The whole entry of @p target.
    Q_INVOKABLE QVariantMap urlInfo(const QString &target) const;

    /**
     * The complete address of a resource of @p target.
     *
     * A script can leave off trailing arguments, but cannot make a QUrlQuery: the four-argument form is of
     * use to C++ only.
     * @param target name of the service; an unknown one has an empty base address
     * @param path appended to the path of the base address, behind a "/" unless it starts with one, in
     *     decoded form: "?" and "%" are characters of the path. The end of the base path is not looked at: a
     *     base "/base/" and a path "api" give "/base//api". A "%2F" in the base path becomes a "/".
     * @param addUrlQuery whether to set a query: the items of @p urlQuery and behind them those of the
     *     entry's "urlQuery", by ascending key. It replaces a query of the base address. Without it, @p
     *     urlQuery is not used at all.
     * @param urlQuery the caller's own query items
     */
    Q_INVOKABLE static QUrl url(const QString &target, const QString &path = QString(),
                                bool addUrlQuery = false, QUrlQuery urlQuery = QUrlQuery());

    /**
     * Sets the stored document aside; this does not store @p json.
     *
     * Invalid JSON is reported by the warning "Url json invalid" and changes nothing. Otherwise the file
     * is renamed to its name plus ".bk", and an empty one takes its place; the documents in memory stay.
     * Nothing happens when the rename fails, for instance because there is a ".bk" file already; if the empty
     * file cannot be created, the old one is moved back.
     * @return false, always
     */
    bool storeUrls(const QByteArray &json);

Q_SIGNALS:
    void environmentChanged(QString environment); ///< The environment in force is now @p environment.
    void regionChanged(QString region); ///< The region in force is now @p region.

private:
    OXUrls();

    QVariant regional(const QVariantMap &entry, const QString &key) const;
    QVariant regionalOrOwn(const QVariantMap &entry, const QString &key) const;
    QUrl parsed(const QVariant &address) const;

    QString m_environment;
    QString m_region;
    QVariantMap m_urls;
    QString m_filePath;
    mutable QHash<QString, QUrl> m_parsedUrls; // by their text
};

#endif
