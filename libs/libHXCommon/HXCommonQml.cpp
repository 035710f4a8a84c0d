#include "HXCommonQml.h"

#include "ConnectivityChecker.h"
#include "ECGLibrary.h"
#include "FileSync.h"
#include "HXCommonVersion.h"
#include "HXCommonVocabulary.h"
#include "OXUrls.h"
#include "PausingTimer.h"
#include "Product.h"

#include <QQmlEngine>

namespace {

// Registers in one module.
class Module {
public:
    explicit Module(const char *uri) : m_uri(uri) { }

    void addEnumerations(const QMetaObject &type, const char *name) const
    {
        qmlRegisterUncreatableMetaObject(type, m_uri, major, minor, name,
                                         QStringLiteral("It holds enumerations only."));
    }

    template <typename Type> void addCreatable() const
    {
        qmlRegisterType<Type>(m_uri, major, minor, Type::staticMetaObject.className());
    }

    template <typename Type> void addUncreatable() const
    {
        qmlRegisterUncreatableType<Type>(m_uri, major, minor, Type::staticMetaObject.className(),
                                         QStringLiteral("It is made in C++."));
    }

    // The object is asked for when a document first uses it.
    template <typename Type, typename Instance> void addSingle(Instance instance) const
    {
        qmlRegisterSingletonType<Type>(m_uri, major, minor, Type::staticMetaObject.className(),
                                       [instance](QQmlEngine *, QJSEngine *) {
                                           Type *const object = instance();
                                           QQmlEngine::setObjectOwnership(object, QQmlEngine::CppOwnership);
                                           return object;
                                       });
    }

private:
    static constexpr int major = HXCOMMON_VERSION_MAJOR;
    static constexpr int minor = 0;

    const char *m_uri;
};

} // namespace

void registerHXCommonTypes(const char *uri)
{
    const Module module(uri);
    for (const QMetaObject *const type : vocabulary)
        module.addEnumerations(*type, type->className());
    module.addEnumerations(BM_HXCommon::Product::staticMetaObject, "Product");
    module.addEnumerations(RC_GUI::staticMetaObject, "RC_GUI");
    module.addEnumerations(RC_GUI::ExtraSystole::staticMetaObject, "ExtraSystole");
    module.addCreatable<ConnectivityChecker>();
    module.addCreatable<PausingTimer>();
    module.addUncreatable<ECGConfig>();
    module.addUncreatable<ECGLibrary>();
    module.addUncreatable<FileSync>();
    module.addSingle<ECGLibraries>([] { return &ECGLibraries::Instance(); });
    module.addSingle<OXUrls>([] { return OXUrls::instance(); });
}
