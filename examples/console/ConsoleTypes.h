#ifndef CONSOLETYPES_H
#define CONSOLETYPES_H

#include "Text.h"

#include <QQmlEngine>
#include <QSize>

constexpr char guardName[] = "olvex-console"; ///< Only one instance runs under this name.

/// Makes the QML modules known: "HXCommon" holds the library's own classes, "Console" the models of this
/// program, each a class in a source file that nobody else needs. AppConfig must be initialised.
void registerConsoleTypes();
void registerServices();
void registerSimulatedManikin();
void registerSystem();

/// The size that stands in "<width>x<height>"; invalid if none does, or one that no window may have.
QSize windowSize(const QString &words);

/// Registers a model; every engine makes its own and deletes it.
template <typename Model> void registerModel(const char *name)
{
    qmlRegisterSingletonType<Model>("Console", 1, 0, name,
                                    [](QQmlEngine *, QJSEngine *) { return new Model; });
}

#endif
