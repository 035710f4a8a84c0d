#include "ConsoleTypes.h"

#include <AgeGroups.h>
#include <CyanosisCalculator.h>
#include <ECGLibrary.h>
#include <HXCommonQml.h>
#include <HXCommonVocabulary.h>
#include <Product.h>

#include <QMetaEnum>

// What the library offers to C++ only: static functions, tables, and the names of the enumerations.
class Library : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVariantList vocabulary READ enumerations CONSTANT)

public:
    // Maps {type, name, states: maps {text, value}}.
    static QVariantList enumerations()
    {
        QVariantList list;
        for (const QMetaObject *const type : vocabulary) {
            for (int i = 0; i < type->enumeratorCount(); ++i) {
                const QMetaEnum names = type->enumerator(i);
                QVariantList states;
                for (int k = 0; k < names.keyCount(); ++k)
                    states << QVariantMap{{text("text"), text(names.key(k))},
                                          {text("value"), names.value(k)}};
                list << QVariantMap{{text("type"), text(type->className())},
                                    {text("name"), text(names.name())},
                                    {text("states"), states}};
            }
        }
        return list;
    }

    Q_INVOKABLE QList<int> rhythms() const { return ECGLibrary::getDefaultECGLibrary()->configs().keys(); }
    Q_INVOKABLE QString ageGroup(double years) const { return AgeGroups::getAgeGroup(years); }

    Q_INVOKABLE double cyanosisLevel(int threshold, int saturation, bool enabled) const
    {
        return CyanosisCalculator::CalculateCyanosisLevel(threshold, saturation, enabled, 0, -6, 5);
    }

    Q_INVOKABLE QString manikinName(int type) const { return text(manikinTypeAsString(type)); }
    Q_INVOKABLE QString product(int manikinType) const
    {
        namespace Product = BM_HXCommon::Product;
        const int id = Product::ManikinProductTypeMap.value(manikinType, -1);
        return text(QMetaEnum::fromType<Product::manufacturerProductId_t>().valueToKey(id));
    }
};

void registerConsoleTypes()
{
    registerHXCommonTypes("HXCommon");
    // Lower limits in years; an application takes them from its configuration.
    AgeGroups::setAgeGroupLimits(
        {{text("baby"), 0}, {text("infant"), 1}, {text("child"), 3}, {text("adult"), 12}});
    registerModel<Library>("Library");
    registerServices();
    registerSimulatedManikin();
    registerSystem();
    qmlRegisterSingletonType(QUrl(text("qrc:/console/Theme.qml")), "Console", 1, 0, "Theme");
}

#include "ConsoleTypes.moc"
