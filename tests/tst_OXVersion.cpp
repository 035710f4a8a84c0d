#include <OXVersion.h>

#include <QJSEngine>
#include <QMetaMethod>
#include <QtTest>

#include <limits>

class tst_OXVersion : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void parses_data();
    void parses();
    void rejects_data();
    void rejects();
    void comparesMajorAndMinor_data();
    void comparesMajorAndMinor();
    void orders_data();
    void orders();
    void worksFromScripts();
    void listsItsMethodsInOrder();
    void prints();
};

void tst_OXVersion::parses_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVector<qint64>>("numbers");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("printed");

    const auto row = [](const char *text, QVector<qint64> numbers, const char *type, const char *printed) {
        QTest::newRow(text) << QString::fromUtf8(text) << numbers << QString::fromUtf8(type)
                            << QString::fromUtf8(printed);
    };
    row("1.2.3", {1, 2, 3, 0}, "", "1.2.3.0");
    row("1.2.3.4", {1, 2, 3, 4}, "", "1.2.3.4");
    row("1.2.3-4", {1, 2, 3, 4}, "", "1.2.3.4");
    row("1.2.3.4-beta", {1, 2, 3, 4}, "beta", "1.2.3.4-beta");
    row("1.2.3-rc", {1, 2, 3, 0}, "rc", "1.2.3.0-rc");
    row("1.2.3rc", {1, 2, 3, 0}, "rc", "1.2.3.0-rc");
    row("1.2.3-", {1, 2, 3, 0}, "", "1.2.3.0");
    row("1.2.3.4-5", {1, 2, 3, 4}, "5", "1.2.3.4-5");
    row("1.2.3.4.5", {1, 2, 3, 0}, "", "1.2.3.0");
    row("1.2.3-beta.1", {1, 2, 3, 0}, "", "1.2.3.0");
    row("1.2.3 x\n", {1, 2, 3, 0}, "", "1.2.3.0");
    row("9223372036854775807.9223372036854775808.0", {std::numeric_limits<qint64>::max(), 0, 0, 0}, "",
        "9223372036854775807.0.0.0");
    row("١.٢.٣", {0, 0, 0, 0}, "", "0.0.0.0"); // Unicode digits match but do not convert
}

void tst_OXVersion::parses()
{
    QFETCH(QString, text);
    const OXVersion version(text);
    QVERIFY(version.isValid());
    QTEST((QVector<qint64>{version.major, version.minor, version.patch, version.build}), "numbers");
    QTEST(version.type, "type");
    QTEST(version.toString(), "printed");
}

void tst_OXVersion::rejects_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"", "1", "1.2", "1.2.", "a.b.c", " 1.2.3", "v1.2.3", "-1.2.3", "1,2,3"})
        QTest::newRow(text) << QString::fromLatin1(text);
}

void tst_OXVersion::rejects()
{
    QFETCH(QString, text);
    const OXVersion version(text);
    QVERIFY(!version.isValid());
    QCOMPARE(version.toString(), QString());
    QVERIFY(version.isMajorMinorEqual(OXVersion())); // all numbers are 0
}

void tst_OXVersion::comparesMajorAndMinor_data()
{
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::addColumn<bool>("equal");
    const auto row = [](const char *left, const char *right, bool equal) {
        QTest::addRow("%s|%s", left, right)
            << QString::fromLatin1(left) << QString::fromLatin1(right) << equal;
    };
    row("99.0.0", "99.7.1", true);
    row("98.0.0", "98.1.0", false);
    row("98.1.2", "98.1.3-rc", true);
    row("1.65536.0", "1.0.0", true); // fields are not masked: the spilled bit is set already
    row("0.65536.0", "1.0.0", true);
    row("4096.0.0", "0.0.0", true); // and the top is cut off at 64 bits
}

void tst_OXVersion::comparesMajorAndMinor()
{
    QFETCH(QString, left);
    QFETCH(QString, right);
    QTEST(OXVersion(left).isMajorMinorEqual(OXVersion(right)), "equal");
    QTEST(OXVersion(right).isMajorMinorEqual(OXVersion(left)), "equal");
}

void tst_OXVersion::orders_data()
{
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::addColumn<bool>("less");
    const auto row = [](const char *left, const char *right, bool less) {
        QTest::addRow("%s<%s", left, right)
            << QString::fromLatin1(left) << QString::fromLatin1(right) << less;
    };
    row("2.3.4", "2.3.5", true);
    row("2.3.4", "2.4.0", true);
    row("2.3.5", "2.3.4", false);
    row("2.3.4-beta", "2.3.4", false);
    row("2.3.4", "2.3.4-beta", false);
    row("99.0.0", "99.0.1", true); // no rule for 99 here
    row("invalid", "0.0.1", true); // an invalid version compares by its zeros
    row("0.0.65536", "0.1.0", false); // patch spills into minor
    row("2048.0.0", "0.0.0", true); // the key is signed
}

void tst_OXVersion::orders()
{
    QFETCH(QString, left);
    QFETCH(QString, right);
    QJSEngine engine;
    const QJSValue less = OXVersion(left).isMajorMinorMicroLess(engine.toScriptValue(OXVersion(right)));
    QVERIFY(less.isBool());
    QTEST(less.toBool(), "less");
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
