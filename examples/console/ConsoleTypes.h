#ifndef CONSOLETYPES_H
#define CONSOLETYPES_H

#include <QQmlEngine>

/// The name under which only one instance runs.
constexpr char guardName[] = "olvex-console";

/// Makes the QML modules known: "HXCommon" holds the library's own classes, "Console" the models of this
/// program. AppConfig must be initialised.
void registerConsoleTypes();

// Models that are more than a few lines. Each is a class in a source file of its own; QML is its only user.
void registerServices();
void registerSimulatedManikin();
void registerSystem();

/// Registers a model; every engine makes its own and deletes it.
template <typename Model> void registerModel(const char *name)
{
    qmlRegisterSingletonType<Model>("Console", 1, 0, name,
                                    [](QQmlEngine *, QJSEngine *) { return new Model; });
}

inline QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

#endif
