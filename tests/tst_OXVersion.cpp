#define major(x) x // as in sys/sysmacros.h
#include <OXVersion.h>

#include <QJSEngine>
#include <QtTest>

namespace {

OXVersion version(const char *text)
{
    return QString::fromUtf8(text);
}

} // namespace

class tst_OXVersion : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void parses()
    {
        static_assert(major(1), "the header leaves macros alone");
        // An invalid version prints nothing; digits of other scripts match but do not convert.
        for (const auto &[text, printed] :
             {std::pair("1.2.3", "1.2.3.0"), std::pair("1.2.3-4", "1.2.3.4"), std::pair("1.2.3-", "1.2.3.0"),
              std::pair("1.2.3-rc", "1.2.3.0-rc"), std::pair("1.2.3rc", "1.2.3.0-rc"),
              std::pair("1.2.3.4-5", "1.2.3.4-5"), std::pair("1.2.3.4.5", "1.2.3.0"),
              std::pair("1.2.3 x\n", "1.2.3.0"), std::pair("9223372036854775808.1.2", "0.1.2.0"),
              std::pair("١.٢.٣", "0.0.0.0"), std::pair("", ""), std::pair("1.2.", ""), std::pair("a.b.c", ""),
              std::pair(" 1.2.3", ""), std::pair("1,2,3", "")}) {
            QCOMPARE(version(text).toString(), QString::fromLatin1(printed));
            QCOMPARE(version(text).isValid(), *printed != '\0');
        }

        QString printed;
        QDebug(&printed) << version("1.2.3-rc") << OXVersion();
        QCOMPARE(printed, QStringLiteral("OXVersion(\"1.2.3.0-rc\") OXVersion(\"\") "));
    }

    // From a script, as the user interface does.
    void compares()
    {
        const struct {
            const char *left, *right, *answers; // equal in major and minor both ways round, left less
        } comparisons[] = {
            {"99.0.0", "99.7.1", "true,true,true"}, // the rule for 99 holds for equality only
            {"98.0.0", "98.1.0", "false,false,true"},
            {"99.0.0", "98.0.0", "false,false,false"},
            {"98.1.2", "98.1.3-rc", "true,true,true"},
            {"2.3.5", "2.3.4", "true,true,false"},
            {"2.3.4-beta", "2.3.4", "true,true,false"},
            {"invalid", "0.0.1", "true,true,true"}, // an invalid version compares by its zeros
            {"0.65536.0", "1.0.0", "true,true,false"}, // fields are not masked
            {"0.0.65536", "0.1.0", "false,false,false"},
            {"4096.0.0", "0.0.0", "true,true,false"}, // the top is cut off at 64 bits
            {"2048.0.0", "0.0.0", "false,false,true"}, // and the key is signed
        };
        QJSEngine engine;
        const auto answer = [&engine](const char *script) {
            return engine.evaluate(QString::fromLatin1(script)).toString();
        };
        for (const auto &c : comparisons) {
            engine.globalObject().setProperty(QStringLiteral("left"), engine.toScriptValue(version(c.left)));
            engine.globalObject().setProperty(QStringLiteral("right"),
                                              engine.toScriptValue(version(c.right)));
            QCOMPARE(answer("[left.isMajorMinorEqual(right), right.isMajorMinorEqual(left),"
                            "left.isMajorMinorMicroLess(right)]"),
                     QString::fromLatin1(c.answers));
        }
        QCOMPARE(
            answer("[5, null, undefined, {}, []].every(x => left.isMajorMinorMicroLess(x) === undefined)"),
            QStringLiteral("true"));
        QCOMPARE(answer("left.toString() + left.isValid()"), QStringLiteral("2048.0.0.0true"));
    }
};

QTEST_GUILESS_MAIN(tst_OXVersion)
#include "tst_OXVersion.moc"
