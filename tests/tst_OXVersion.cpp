#include <OXVersion.h>

#include "Cases.h"

#include <QJSEngine>
#include <QMetaMethod>

#include <limits>

class tst_OXVersion : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void parses_data();
    void parses();
    void rejects();
    void compares_data();
    void compares();
    void worksFromScripts();
    void listsItsMethodsInOrder();
    void prints();
};

namespace {

const struct {
    const char *name;
    qint64 major, minor, patch, build;
    const char *type;
    const char *printed;
} versions[] = {
    {"1.2.3", 1, 2, 3, 0, "", "1.2.3.0"},
    {"1.2.3.4", 1, 2, 3, 4, "", "1.2.3.4"},
    {"1.2.3-4", 1, 2, 3, 4, "", "1.2.3.4"},
    {"1.2.3.4-beta", 1, 2, 3, 4, "beta", "1.2.3.4-beta"},
    {"1.2.3-rc", 1, 2, 3, 0, "rc", "1.2.3.0-rc"},
    {"1.2.3rc", 1, 2, 3, 0, "rc", "1.2.3.0-rc"},
    {"1.2.3-", 1, 2, 3, 0, "", "1.2.3.0"},
    {"1.2.3.4-5", 1, 2, 3, 4, "5", "1.2.3.4-5"},
    {"1.2.3.4.5", 1, 2, 3, 0, "", "1.2.3.0"},
    {"1.2.3-beta.1", 1, 2, 3, 0, "", "1.2.3.0"},
    {"1.2.3 x\n", 1, 2, 3, 0, "", "1.2.3.0"},
    {"9223372036854775807.9223372036854775808.0", std::numeric_limits<qint64>::max(), 0, 0, 0, "",
     "9223372036854775807.0.0.0"},
    {"١.٢.٣", 0, 0, 0, 0, "", "0.0.0.0"}, // Unicode digits match but do not convert
};

const struct {
    const char *name;
    const char *other;
    bool equal; // in major and minor
    bool less;
} comparisons[] = {
    {"99.0.0", "99.7.1", true, true}, // the rule for 99 holds for equality only
    {"98.0.0", "98.1.0", false, true},
    {"98.1.2", "98.1.3-rc", true, true},
    {"2.3.5", "2.3.4", true, false},
    {"2.3.4-beta", "2.3.4", true, false},
    {"2.3.4", "2.3.4-beta", true, false},
    {"invalid", "0.0.1", true, true}, // an invalid version compares by its zeros
    {"0.65536.0", "1.0.0", true, false}, // fields are not masked
    {"0.0.65536", "0.1.0", false, false},
    {"4096.0.0", "0.0.0", true, false}, // the top is cut off at 64 bits
    {"2048.0.0", "0.0.0", false, true}, // and the key is signed
};

} // namespace

void tst_OXVersion::parses_data()
{
    addCases(versions);
}

void tst_OXVersion::parses()
{
    const auto &c = currentCase(versions);
    const OXVersion version(QString::fromUtf8(c.name));
    QVERIFY(version.isValid());
    QCOMPARE((QVector<qint64>{version.major, version.minor, version.patch, version.build}),
             (QVector<qint64>{c.major, c.minor, c.patch, c.build}));
    QCOMPARE(version.type, QString::fromLatin1(c.type));
    QCOMPARE(version.toString(), QString::fromLatin1(c.printed));
}

void tst_OXVersion::rejects()
{
    for (const char *text : {"", "1", "1.2", "1.2.", "a.b.c", " 1.2.3", "v1.2.3", "-1.2.3", "1,2,3"}) {
        const OXVersion version(QString::fromLatin1(text));
        QVERIFY2(!version.isValid() && version.toString().isEmpty(), text);
    }
}

void tst_OXVersion::compares_data()
{
    addCases(comparisons);
}

void tst_OXVersion::compares()
{
    const auto &c = currentCase(comparisons);
    const OXVersion left(QString::fromLatin1(c.name));
    const OXVersion right(QString::fromLatin1(c.other));
    QCOMPARE(left.isMajorMinorEqual(right), c.equal);
    QCOMPARE(right.isMajorMinorEqual(left), c.equal);
    QJSEngine engine;
    const QJSValue less = left.isMajorMinorMicroLess(engine.toScriptValue(right));
    QVERIFY(less.isBool());
    QCOMPARE(less.toBool(), c.less);
}

void tst_OXVersion::worksFromScripts()
{
    QJSEngine engine;
    engine.globalObject().setProperty(QStringLiteral("older"),
                                      engine.toScriptValue(OXVersion(QStringLiteral("2.3.4"))));
    engine.globalObject().setProperty(QStringLiteral("newer"),
                                      engine.toScriptValue(OXVersion(QStringLiteral("2.4.0-rc"))));
    const auto result = [&engine](const char *script) {
        return engine.evaluate(QString::fromLatin1(script)).toString();
    };
    QCOMPARE(result("older.isMajorMinorMicroLess(newer)"), QStringLiteral("true"));
    QCOMPARE(result("newer.isMajorMinorMicroLess(older)"), QStringLiteral("false"));
    QCOMPARE(result("older.isMajorMinorEqual(newer)"), QStringLiteral("false"));
    QCOMPARE(result("newer.toString() + newer.isValid()"), QStringLiteral("2.4.0.0-rctrue"));
    for (const char *unsuitable : {"5", "null", "undefined", "({})", "[]"})
        QCOMPARE(result(qPrintable(
                     QStringLiteral("older.isMajorMinorMicroLess(%1)").arg(QLatin1String(unsuitable)))),
                 QStringLiteral("undefined"));
}

void tst_OXVersion::listsItsMethodsInOrder()
{
    QStringList methods;
    for (int i = 0; i < OXVersion::staticMetaObject.methodCount(); ++i)
        methods << QString::fromLatin1(OXVersion::staticMetaObject.method(i).methodSignature());
    QCOMPARE(methods,
             (QStringList{QStringLiteral("isMajorMinorEqual(OXVersion)"),
                          QStringLiteral("isMajorMinorMicroLess(QJSValue)"), QStringLiteral("isValid()"),
                          QStringLiteral("toString()")}));
}

void tst_OXVersion::prints()
{
    QString text;
    QDebug(&text) << OXVersion(QStringLiteral("1.2.3-rc")) << OXVersion();
    QCOMPARE(text, QStringLiteral("OXVersion(\"1.2.3.0-rc\") OXVersion(\"\") "));
}

QTEST_GUILESS_MAIN(tst_OXVersion)
#include "tst_OXVersion.moc"
