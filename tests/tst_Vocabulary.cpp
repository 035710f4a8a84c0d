#include <AppConfig.h>
#include <ConnectivityChecker.h>
#include <ECGLibrary.h>
#include <FileSync.h>
#include <HXCommonVocabulary.h>
#include <OXUrls.h>
#include <OXVersion.h>
#include <PausingTimer.h>
#include <Product.h>

#include "Cases.h"

#include <QMetaEnum>

namespace {

using Text = QLatin1String;

// Per enumeration, method and property, in the order of the meta-object: "session_t stop=0 start=3",
// "void changed(int) value", "int rate constant".
QStringList membersOf(const QMetaObject &type)
{
    QStringList members;
    for (int i = type.enumeratorOffset(); i < type.enumeratorCount(); ++i) {
        const QMetaEnum enumeration = type.enumerator(i);
        QString member = Text(enumeration.name());
        for (int key = 0; key < enumeration.keyCount(); ++key)
            member += QStringLiteral(" %1=%2").arg(Text(enumeration.key(key))).arg(enumeration.value(key));
        members << member + Text(enumeration.isScoped() || enumeration.isFlag() ? " (not plain)" : "");
    }
    for (int i = type.methodOffset(); i < type.methodCount(); ++i) {
        const QMetaMethod method = type.method(i);
        members << Text(method.typeName()) + text(" %1 ").arg(Text(method.methodSignature()))
                + Text(method.parameterNames().join(' '));
    }
    for (int i = type.propertyOffset(); i < type.propertyCount(); ++i) {
        const QMetaProperty property = type.property(i);
        members << text(property.typeName()) + text(" %1 ").arg(Text(property.name()))
                + Text(property.isConstant() ? "constant " : "")
                + Text(property.isWritable() ? "writable " : "") + Text(property.notifySignal().name());
    }
    return members;
}

} // namespace

class tst_Vocabulary : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Scripts and devices rely on these names, numbers and orders.
    void isAsAgreed()
    {
        QVector<const QMetaObject *> types(std::begin(vocabulary), std::end(vocabulary));
        types << &BM_HXCommon::Product::staticMetaObject << &AppConfig::staticMetaObject
              << &ConnectivityChecker::staticMetaObject << &ECGConfig::staticMetaObject
              << &ECGLibrary::staticMetaObject << &ECGLibraries::staticMetaObject
              << &FileSync::staticMetaObject << &OXUrls::staticMetaObject << &OXVersion::staticMetaObject
              << &PausingTimer::staticMetaObject;
        QStringList lines;
        for (const QMetaObject *type : qAsConst(types)) {
            const QStringList members = membersOf(*type);
            for (const QString &member : members)
                lines << (Text(type->className()) + QLatin1Char(' ') + member).simplified();
        }
        const auto &products = BM_HXCommon::Product::ManikinProductTypeMap;
        for (int manikin = -1; manikin <= 256; ++manikin) {
            const QString name = QString::fromLatin1(manikinTypeAsString(manikin));
            const int product = products.value(manikin, -1);
            if (product != -1 || name != Text("Unknown Manikin"))
                lines << QStringLiteral("manikin %1: product %2, %3")
                             .arg(QString::number(manikin), QString::number(product), name);
        }
        const QString agreed = text(contents(QFINDTESTDATA("data/vocabulary.txt")).trimmed());
        QCOMPARE(lines,
                 agreed.arg(HXCOMMON_BRANTEL_BLE_ID).arg(HXCOMMON_BRANTEL_USB_ID).split(QLatin1Char('\n')));
    }
};

QTEST_GUILESS_MAIN(tst_Vocabulary)
#include "tst_Vocabulary.moc"
