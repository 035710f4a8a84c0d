#include "ConsoleTypes.h"

#include <AgeGroups.h>
#include <CyanosisCalculator.h>
#include <ECGLibrary.h>
#include <HXCommonQml.h>
#include <HXCommonVocabulary.h>
#include <Product.h>

#include <QMetaEnum>
#include <QRegularExpression>

// "pupilSize_t" as "Pupil size", "PupilSizeSmall" in that group as "Small"; "LMA" stays.
static QString words(QString identifier, const QString &group = QString())
{
    static const QRegularExpression ending(text("(?<=.)(_t|Types)$"));
    static const QRegularExpression boundary(text("_|(?<=[a-z])(?=[A-Z0-9])|(?<=[A-Z])(?=[A-Z][a-z])"));
    QStringList words = identifier.remove(ending).replace(boundary, text(" ")).split(QLatin1Char(' '));
    for (QString &word : words) {
        if (word.size() == 1 || word != word.toUpper())
            word = word.toLower();
    }
    QString result = words.join(QLatin1Char(' '));
    if (!group.isEmpty() && result.startsWith(group.toLower() + QLatin1Char(' ')))
        result.remove(0, group.size() + 1);
    return result.at(0).toUpper() + result.mid(1);
}

// What the library offers to C++ only: static functions, tables, and the names of the enumerations.
class Library : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVariantList vocabulary READ enumerations CONSTANT)
    Q_PROPERTY(QVariantList manikinTypes READ manikinTypes CONSTANT)

public:
    // Maps {type, typeWords, name, words, states: maps {text, name, value}}.
    static QVariantList enumerations()
    {
        QVariantList list;
        for (const QMetaObject *const type : vocabulary) {
            for (int i = 0; i < type->enumeratorCount(); ++i) {
                const QMetaEnum names = type->enumerator(i);
                const QString group = words(text(names.name()));
                QVariantList states;
                for (int k = 0; k < names.keyCount(); ++k)
                    states << QVariantMap{{text("text"), words(text(names.key(k)), group)},
                                          {text("name"), text(names.key(k))},
                                          {text("value"), names.value(k)}};
                list << QVariantMap{{text("type"), text(type->className())},
                                    {text("typeWords"), words(text(type->className()))},
                                    {text("name"), text(names.name())},
                                    {text("words"), group},
                                    {text("states"), states}};
            }
        }
        return list;
    }

    // Those with a name or a product: maps {text, value}.
    static QVariantList manikinTypes()
    {
        QVariantList list;
        for (int type = 0; type <= 255; ++type) {
            const QString name = text(manikinTypeAsString(type));
            if (name != text(manikinTypeAsString(-1)) || !product(type).isEmpty())
                list << QVariantMap{{text("text"), text("%1 (%2)").arg(name).arg(type)},
                                    {text("value"), type}};
        }
        return list;
    }

    Q_INVOKABLE QList<int> rhythms() const { return ECGLibrary::getDefaultECGLibrary()->configs().keys(); }
    Q_INVOKABLE QString ageGroup(double years) const { return AgeGroups::getAgeGroup(years); }

    Q_INVOKABLE double cyanosisLevel(int threshold, int saturation, bool enabled) const
    {
        return CyanosisCalculator::CalculateCyanosisLevel(threshold, saturation, enabled, 0, -6, 5);
    }

    Q_INVOKABLE static QString manikinName(int type) { return text(manikinTypeAsString(type)); }
    Q_INVOKABLE static QString product(int manikinType)
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
